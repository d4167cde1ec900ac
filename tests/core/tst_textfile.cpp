#include "TestFiles.h"
#include "services/FileError.h"
#include "services/TextFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRandomGenerator>
#include <QScopeGuard>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

// Two texts of different sizes (about 0.6 and 1 MB), so a save takes long enough to be killed
// half way.
QByteArray saveLoopText(int which)
{
    const QByteArray line = which == 0 ? QByteArray("premier texte, ligne \xC3\xA9"
                                                    "crite\r\n")
                                       : QByteArray("second text, a longer line of it\n");
    return line.repeated(which == 0 ? 20000 : 30000);
}

} // namespace

class TestTextFile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void roundTripKeepsEveryByte_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("bom, crlf, no final newline")
            << QByteArray("\xEF\xBB\xBF# Titre\r\n\r\nCaf\xC3\xA9 cr\xC3\xA8me\r\nfin");
        QTest::newRow("mixed endings") << QByteArray("a\r\nb\nc\rd\r\n\n");
        QTest::newRow("tabs and trailing spaces") << QByteArray("\tcode  \n  - item\t \n");
        QTest::newRow("unicode separators") << QByteArray("un\xE2\x80\xA8"
                                                          "deux\xC2\x85trois\xE2\x80\xA9");
        QTest::newRow("nul and emoji") << QByteArray("a\0b \xF0\x9F\x98\x80\n", 10);
        QTest::newRow("only a bom") << QByteArray("\xEF\xBB\xBF");
        QTest::newRow("empty") << QByteArray();
    }

    void roundTripKeepsEveryByte()
    {
        QFETCH(QByteArray, bytes);
        QTemporaryDir dir;
        const QString path = dir.filePath(u"doc.md"_s);
        writeFile(path, bytes);

        const FileResult<QString> read = TextFile::readUtf8(path);
        QVERIFY(read.ok());
        QVERIFY(!TextFile::writeUtf8Atomically(path, read.value));
        QCOMPARE(readFile(path), bytes);
        // The byte-order mark is part of the text, so an editor sees and keeps it.
        QCOMPARE(read.value.startsWith(QChar(0xFEFF)), bytes.startsWith("\xEF\xBB\xBF"));
    }

    void invalidUtf8IsRefused_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("latin-1") << QByteArray("Caf\xE9 cr\xE8me\n");
        QTest::newRow("truncated at end") << QByteArray("abc\xC3");
        QTest::newRow("encoded surrogate") << QByteArray("a\xED\xA0\x80z");
        QTest::newRow("overlong slash") << QByteArray("a\xC0\xAFz");
    }

    void invalidUtf8IsRefused()
    {
        QFETCH(QByteArray, bytes);
        QTemporaryDir dir;
        const QString path = dir.filePath(u"latin.md"_s);
        writeFile(path, bytes);
        const FileResult<QString> read = TextFile::readUtf8(path);
        QVERIFY(!read.ok());
        QCOMPARE(read.error->kind(), FileError::Kind::InvalidUtf8);
        QVERIFY(read.error->localizedDescription().contains(u"UTF-8"));
        QVERIFY(read.error->localizedDescription().contains(u"latin.md"));
        QVERIFY(!TextFile::decodeUtf8(bytes));
    }

    void readFailuresAreDescribedInFrench()
    {
        QTemporaryDir dir;
        const FileResult<QString> missing = TextFile::readUtf8(dir.filePath(u"absent.md"_s));
        QCOMPARE(missing.error->code(), ENOENT);
        QCOMPARE(missing.error->localizedDescription(),
                 u"Le fichier ou le dossier \u00AB\u00A0absent.md\u00A0\u00BB n'existe pas."_s);

        const FileResult<QString> folder = TextFile::readUtf8(dir.path());
        QCOMPARE(folder.error->code(), EISDIR);
        QVERIFY(folder.error->localizedDescription().endsWith(u"est un dossier."));

        // A named pipe is refused at once rather than waited on.
        const QString pipe = dir.filePath(u"pipe.md"_s);
        QCOMPARE(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
        const FileResult<QString> fifo = TextFile::readUtf8(pipe);
        QCOMPARE(fifo.error->kind(), FileError::Kind::NotRegularFile);
        QVERIFY(fifo.error->localizedDescription().endsWith(u"n'est pas un fichier ordinaire."));
    }

    void failedWritesKeepTheOldFileAndSayWhy_data()
    {
        QTest::addColumn<int>("size");
        // Small writes are the ones a buffered writer only sends at its final flush.
        QTest::newRow("12 KB") << 12 * 1024;
        QTest::newRow("64 KB") << 64 * 1024;
        QTest::newRow("just over the limit") << 4097;
    }

    void failedWritesKeepTheOldFileAndSayWhy()
    {
        QFETCH(int, size);
        QTemporaryDir dir;
        const QString path = dir.filePath(u"doc.md"_s);
        const QByteArray old("# Ancien\r\ncontenu\r\n");
        writeFile(path, old);

        std::optional<FileError> error;
        std::optional<FileError> fits;
        {
            const FileSizeLimit limit(4096);
            error = TextFile::writeUtf8Atomically(path, QString(size, u'x'));
            fits = TextFile::writeUtf8Atomically(dir.filePath(u"small.md"_s), QString(4096, u'y'));
        }
        QVERIFY(error);
        QCOMPARE(error->code(), EFBIG);
        QCOMPARE(error->localizedDescription(),
                 u"\u00AB\u00A0doc.md\u00A0\u00BB dépasse la taille de fichier autorisée."_s);
        QCOMPARE(readFile(path), old);
        QVERIFY(!fits);
        QCOMPARE(readFile(dir.filePath(u"small.md"_s)), QByteArray(4096, 'y'));
        // No temporary file is left behind, hidden or not.
        QCOMPARE(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden, QDir::Name),
                 (QStringList {u"doc.md"_s, u"small.md"_s}));
    }

    void fullAndReadOnlyVolumesKeepTheOldFile()
    {
        if (::geteuid() != 0)
            QSKIP("mounting a small volume needs root");
        QTemporaryDir dir;
        const QString mountPoint = dir.filePath(u"volume"_s);
        QVERIFY(QDir().mkdir(mountPoint));
        const QByteArray native = QFile::encodeName(mountPoint);
        if (::mount("pagewell-test", native.constData(), "tmpfs", 0, "size=64k") != 0)
            QSKIP("this machine does not allow mounting a tmpfs");
        const auto unmount = qScopeGuard([&] { ::umount2(native.constData(), MNT_DETACH); });

        // 8 KB left on the volume, then a 12 KB save.
        const QString path = mountPoint + u"/doc.md"_s;
        const QByteArray old(1000, 'o');
        writeFile(path, old);
        struct statvfs fs;
        QCOMPARE(::statvfs(native.constData(), &fs), 0);
        writeFile(mountPoint + u"/.filler"_s,
                  QByteArray(qsizetype(fs.f_bavail * fs.f_frsize) - 8192, 'f'));
        std::optional<FileError> error = TextFile::writeUtf8Atomically(path, QString(12000, u'n'));
        QVERIFY(error);
        QCOMPARE(error->code(), ENOSPC);
        QVERIFY(error->localizedDescription().startsWith(u"L'espace disque est insuffisant"));
        QCOMPARE(readFile(path), old);
        QCOMPARE(QDir(mountPoint).entryList(QDir::Files | QDir::Hidden, QDir::Name),
                 (QStringList {u".filler"_s, u"doc.md"_s}));
        // What fits is written.
        QVERIFY(!TextFile::writeUtf8Atomically(path, QString(3000, u'n')));
        QCOMPARE(readFile(path), QByteArray(3000, 'n'));

        QCOMPARE(::mount("", native.constData(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr), 0);
        error = TextFile::writeUtf8Atomically(path, u"x"_s);
        QVERIFY(error);
        QCOMPARE(error->code(), EROFS);
        QVERIFY(
            error->localizedDescription().endsWith(u"se trouve sur un volume en lecture seule."));
        QCOMPARE(readFile(path), QByteArray(3000, 'n'));
    }

    void readOnlyFileIsNotReplaced()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(u"doc.md"_s);
        writeFile(path, "old");
        QVERIFY(QFile::setPermissions(
            path, QFileDevice::ReadOwner | QFileDevice::ReadGroup | QFileDevice::ReadOther));
        // The folder allows replacing the file; its own permissions do not allow writing it.
        QVERIFY(QFile::setPermissions(dir.path(), QFileDevice::Permissions(0x7777)));
        // Root may write anything: the save runs in a child process as nobody then.
        int channel[2];
        QCOMPARE(::pipe(channel), 0);
        const pid_t child = ::fork();
        if (child == 0) {
            if (::geteuid() == 0 && (::setgid(65534) != 0 || ::setuid(65534) != 0))
                ::_exit(3);
            const std::optional<FileError> error = TextFile::writeUtf8Atomically(path, u"new"_s);
            const QByteArray text = error ? error->localizedDescription().toUtf8() : QByteArray();
            const bool sent
                = ::write(channel[1], text.constData(), size_t(text.size())) == text.size();
            ::_exit(error && sent ? 1 : 0);
        }
        ::close(channel[1]);
        QByteArray said;
        char buffer[512];
        for (ssize_t n; (n = ::read(channel[0], buffer, sizeof buffer)) > 0;)
            said.append(buffer, n);
        ::close(channel[0]);
        int status = 0;
        QCOMPARE(::waitpid(child, &status, 0), child);
        QCOMPARE(WEXITSTATUS(status), 1);
        QCOMPARE(QString::fromUtf8(said),
                 u"Le fichier \u00AB\u00A0doc.md\u00A0\u00BB est en lecture seule."_s);
        QCOMPARE(readFile(path), QByteArray("old"));
    }

    void killedSavesLeaveOneWholeText_data()
    {
        QTest::addColumn<QString>("temporary");
        QTest::newRow("unnamed") << u"unnamed"_s;
        // What file systems without unnamed files get.
        QTest::newRow("hidden") << u"hidden"_s;
    }

    void killedSavesLeaveOneWholeText()
    {
        QFETCH(QString, temporary);
        // A child saves two texts in turn and is killed at random moments: the file must always
        // hold one of them whole, and nothing the user sees may appear beside it.
        QTemporaryDir dir;
        const QString path = dir.filePath(u"doc.md"_s);
        const QByteArray first = saveLoopText(0);
        const QByteArray second = saveLoopText(1);
        writeFile(path, first);
        QRandomGenerator random(7);
        int holdsFirst = 0;
        int holdsSecond = 0;
        int hiddenLeftovers = 0;
        constexpr int kills = 200;
        for (int round = 0; round < kills; ++round) {
            QProcess child;
            child.start(QCoreApplication::applicationFilePath(),
                        {u"--save-loop"_s, temporary, path});
            QVERIFY(child.waitForReadyRead(10000));
            QThread::usleep(random.bounded(20000));
            child.kill();
            QVERIFY(child.waitForFinished());
            const QByteArray onDisk = readFile(path);
            QVERIFY2(onDisk == first || onDisk == second,
                     qPrintable(u"round %1: %2 bytes"_s.arg(round).arg(onDisk.size())));
            (onDisk == first ? holdsFirst : holdsSecond)++;
            QCOMPARE(QDir(dir.path()).entryList(QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot),
                     QStringList {u"doc.md"_s});
            const QStringList hidden
                = QDir(dir.path())
                      .entryList(QDir::Files | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name);
            hiddenLeftovers += int(hidden.size()) - 1;
            for (const QString &name : hidden) {
                if (name != u"doc.md"_s)
                    QVERIFY(QFile::remove(dir.filePath(name)));
            }
        }
        qInfo("%s: %d kills, the first text %d times, the second %d times, %d hidden leftovers",
              qPrintable(temporary), kills, holdsFirst, holdsSecond, hiddenLeftovers);
        // The kills landed while saves were going on, not only before the first one.
        QVERIFY(holdsFirst > 0 && holdsSecond > 0);
    }

    void saveKeepsPermissionsAndLinks()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(u"doc.md"_s);
        writeFile(path, "old");
        const QFileDevice::Permissions permissions
            = QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ReadGroup;
        QVERIFY(QFile::setPermissions(path, permissions));
        const QFileDevice::Permissions before = QFile::permissions(path);
        QVERIFY(!TextFile::writeUtf8Atomically(path, u"new"_s));
        QCOMPARE(QFile::permissions(path), before);
        QVERIFY(!(before & QFileDevice::ReadOther));

        // Saving through a link writes the linked file and keeps the link.
        const QString link = dir.filePath(u"link.md"_s);
        QVERIFY(QFile::link(path, link));
        QVERIFY(!TextFile::writeUtf8Atomically(link, u"through link"_s));
        QVERIFY(QFileInfo(link).isSymLink());
        QCOMPARE(readFile(path), QByteArray("through link"));
    }
};

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const QStringList args = app.arguments();
    // A child that saves in a loop until it is killed.
    if (args.size() == 4 && args.at(1) == u"--save-loop"_s) {
        const TextFile::Temporary temporary = args.at(2) == u"hidden"_s
            ? TextFile::Temporary::Hidden
            : TextFile::Temporary::UnnamedWherePossible;
        const QString texts[]
            = {QString::fromUtf8(saveLoopText(0)), QString::fromUtf8(saveLoopText(1))};
        for (int i = 1;; ++i) {
            if (TextFile::writeUtf8Atomically(args.at(3), texts[i % 2], temporary))
                return 1;
            if (i == 1) {
                std::fputs("saving\n", stdout);
                std::fflush(stdout);
            }
        }
    }
    TestTextFile test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_textfile.moc"
