#include "TestFiles.h"
#include "services/FileError.h"
#include "services/TextFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include <cerrno>
#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>

using namespace Qt::StringLiterals;

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

    void errorCodesReadWell()
    {
        const QString path = u"/w/a.md"_s;
        QVERIFY(
            FileError::fromErrno(EACCES, path).localizedDescription().contains(u"autorisation"));
        QVERIFY(
            FileError::fromErrno(EROFS, path).localizedDescription().contains(u"lecture seule"));
        QVERIFY(
            FileError::fromErrno(ENOSPC, path).localizedDescription().contains(u"espace disque"));
        QVERIFY(
            FileError::fromErrno(ENOTDIR, path).localizedDescription().contains(u"pas un dossier"));
        // An unusual error still names the item and carries the system's own text.
        const QString other = FileError::fromErrno(EXDEV, path).localizedDescription();
        QVERIFY(other.contains(u"a.md"));
        QVERIFY(other.contains(qt_error_string(EXDEV)));
    }

    void saveIntoVanishedFolderFailsCleanly()
    {
        QTemporaryDir dir;
        const QString folder = dir.filePath(u"gone"_s);
        QVERIFY(QDir().mkdir(folder));
        QVERIFY(QDir(folder).removeRecursively());
        const std::optional<FileError> error
            = TextFile::writeUtf8Atomically(folder + u"/a.md"_s, u"text"_s);
        QVERIFY(error);
        QCOMPARE(error->code(), ENOENT);
        QVERIFY(!QFileInfo::exists(folder));
    }

    void interruptedWriteLeavesOldFileWhole()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(u"doc.md"_s);
        const QByteArray old("# Ancien\r\ncontenu\r\n");
        writeFile(path, old);

        // A file-size limit makes the write fail half way, as a full disk would.
        std::signal(SIGXFSZ, SIG_IGN);
        rlimit saved;
        QCOMPARE(getrlimit(RLIMIT_FSIZE, &saved), 0);
        rlimit small = saved;
        small.rlim_cur = 4096;
        QCOMPARE(setrlimit(RLIMIT_FSIZE, &small), 0);
        const std::optional<FileError> error
            = TextFile::writeUtf8Atomically(path, QString(64 * 1024, u'x'));
        QCOMPARE(setrlimit(RLIMIT_FSIZE, &saved), 0);

        QVERIFY(error);
        QCOMPARE(readFile(path), old);
        // No temporary file is left behind.
        QCOMPARE(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden), QStringList {u"doc.md"_s});
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

QTEST_GUILESS_MAIN(TestTextFile)
#include "tst_textfile.moc"
