#include "TestFiles.h"
#include "model/FileUrl.h"
#include "services/FileSystemService.h"
#include "services/LinkResolver.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>

#include <cerrno>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

// Makes files (and their folders) below `root`; a path ending in "/" makes a folder.
void make(const QString &root, const QStringList &paths)
{
    for (const QString &path : paths) {
        const QString full = root + u'/' + path;
        if (path.endsWith(u'/')) {
            QVERIFY(QDir().mkpath(full));
            continue;
        }
        writeFile(full, "# x\n");
    }
}

QStringList names(const QList<FileItem> &items)
{
    QStringList list;
    for (const FileItem &item : items)
        list.append(item.name());
    return list;
}

} // namespace

class TestFileSystemService : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void skipsHiddenAndIgnoredEntries()
    {
        QTemporaryDir dir;
        make(dir.path(),
             {u".git/config"_s, u"node_modules/x/README.md"_s, u"dist/a.md"_s, u".env"_s,
              u"README.md"_s, u".build/"_s, u".gemini/"_s, u".claude/"_s, u".vscode/"_s,
              u".idea/"_s, u".hidden.md"_s});
        const FileItem root = FileSystemService().scanDirectory(QUrl::fromLocalFile(dir.path()));
        QCOMPARE(names(root.children()), QStringList {u"README.md"_s});

        // The names are matched exactly, files included.
        QTemporaryDir other;
        make(other.path(), {u"dist"_s, u"Dist/a.md"_s, u"Node_Modules/"_s, u"distant.md"_s});
        const FileItem tree = FileSystemService().scanDirectory(QUrl::fromLocalFile(other.path()));
        QCOMPARE(names(tree.children()),
                 (QStringList {u"Dist"_s, u"Node_Modules"_s, u"distant.md"_s}));
    }

    void ordersFoldersFirstThenNaturally()
    {
        QTemporaryDir dir;
        make(dir.path(), {u"b/"_s, u"A"_s, u"file10.md"_s, u"file2.md"_s});
        const FileItem root = FileSystemService().scanDirectory(QUrl::fromLocalFile(dir.path()));
        QCOMPARE(names(root.children()),
                 (QStringList {u"b"_s, u"A"_s, u"file2.md"_s, u"file10.md"_s}));

        // Accents and case do not push a name to the end as byte order would.
        QTemporaryDir mixed;
        make(mixed.path(),
             {u"zèbre.md"_s, u"école.md"_s, u"Eau.md"_s, u"v1.10.md"_s, u"v1.9.md"_s, u"Zoo/"_s,
              u"alpha/"_s});
        const FileItem tree = FileSystemService().scanDirectory(QUrl::fromLocalFile(mixed.path()));
        QCOMPARE(names(tree.children()),
                 (QStringList {u"alpha"_s, u"Zoo"_s, u"Eau.md"_s, u"école.md"_s, u"v1.9.md"_s,
                               u"v1.10.md"_s, u"zèbre.md"_s}));
    }

    void keepsEveryFolderAndBuildsNodes()
    {
        QTemporaryDir dir;
        make(dir.path(), {u"empty/"_s, u"pictures/a.png"_s, u"docs/guide/x.md"_s});
        const FileItem root = FileSystemService().scanDirectory(FileUrl::fromPath(dir.path()));
        QCOMPARE(root.id(), dir.path());
        QCOMPARE(names(root.children()), (QStringList {u"docs"_s, u"empty"_s, u"pictures"_s}));
        // An empty folder is kept, with an empty list of children.
        const FileItem &empty = root.children().at(1);
        QVERIFY(empty.isDirectory() && empty.hasChildren() && empty.children().isEmpty());
        const FileItem &doc = root.children().at(0).children().at(0).children().at(0);
        QCOMPARE(doc.id(), dir.path() + u"/docs/guide/x.md"_s);
        // A plain file scans to a file node without children.
        const FileItem file = FileSystemService().scanDirectory(doc.url());
        QVERIFY(!file.isDirectory() && !file.hasChildren());
        QCOMPARE(file.name(), u"x.md"_s);
    }

    void openedRootIsNeverFiltered()
    {
        QTemporaryDir dir;
        make(dir.path(), {u"dist/a.md"_s, u".git/b.md"_s});
        for (const QString &name : {u"dist"_s, u".git"_s}) {
            const FileItem root
                = FileSystemService().scanDirectory(QUrl::fromLocalFile(dir.filePath(name)));
            QCOMPARE(root.children().size(), 1);
        }
    }

    void linksAreNeverFollowed()
    {
        QTemporaryDir dir;
        make(dir.path(), {u"real/inner.md"_s, u"target.md"_s});
        QVERIFY(QFile::link(dir.path(), dir.filePath(u"real/loop"_s)));
        QVERIFY(QFile::link(dir.filePath(u"real"_s), dir.filePath(u"folderlink"_s)));
        QVERIFY(QFile::link(dir.filePath(u"target.md"_s), dir.filePath(u"filelink.md"_s)));
        QVERIFY(QFile::link(dir.filePath(u"nowhere"_s), dir.filePath(u"dangling.md"_s)));

        const FileItem root = FileSystemService().scanDirectory(QUrl::fromLocalFile(dir.path()));
        QCOMPARE(names(root.children()),
                 (QStringList {u"real"_s, u"dangling.md"_s, u"filelink.md"_s, u"folderlink"_s,
                               u"target.md"_s}));
        const FileItem &folderLink = root.children().at(3);
        QVERIFY(!folderLink.isDirectory());
        QVERIFY(!folderLink.hasChildren());
        const FileItem &loop = root.children().at(0).children().at(1);
        QCOMPARE(loop.name(), u"loop"_s);
        QVERIFY(!loop.isDirectory());
    }

    void createsDocumentsFromTypedNames()
    {
        QTemporaryDir dir;
        const FileSystemService service;
        const QUrl folder = FileUrl::fromPath(dir.path());
        const auto create = [&](const QString &name) -> QString {
            const FileResult<QUrl> result = service.createNewFile(folder, name);
            if (!result.ok())
                return QString();
            QFile file(FileUrl::path(result.value));
            file.open(QIODevice::ReadOnly);
            return FileUrl::lastPathComponent(result.value) + u" = "_s
                + QString::fromUtf8(file.readAll());
        };
        QCOMPARE(create(u"  Guide \n"_s), u"Guide.md = # Guide\n\n"_s);
        QCOMPARE(create(u"Guide.markdown"_s), u"Guide.markdown = # Guide.markdown\n\n"_s);
        QCOMPARE(create(u"Notes.MD"_s), u"Notes.MD.md = # Notes.MD\n\n"_s);
        QCOMPARE(create(u"Notes.txt"_s), u"Notes.txt.md = # Notes.txt\n\n"_s);
        QCOMPARE(create(u"a.md.md"_s), u"a.md.md = # a\n\n"_s);
        QCOMPARE(create(u"my.mdfile.md"_s), u"my.mdfile.md = # myfile\n\n"_s);
        QCOMPARE(create(u"Été"_s), u"Été.md = # Été\n\n"_s);
    }

    void deletesPermanently()
    {
        QTemporaryDir dir;
        make(dir.path(), {u"tree/a/b/c.md"_s, u"tree/d.md"_s, u"keep/e.md"_s});
        QVERIFY(QFile::link(dir.filePath(u"keep"_s), dir.filePath(u"tree/link"_s)));
        // A folder goes with everything in it; a link inside goes, not what it points to.
        QVERIFY(!FileSystemService().deleteItem(FileUrl::fromPath(dir.filePath(u"tree"_s))));
        QVERIFY(!QFileInfo::exists(dir.filePath(u"tree"_s)));
        QVERIFY(QFileInfo::exists(dir.filePath(u"keep/e.md"_s)));
    }

    void namesThatAreNotUtf8StayOut()
    {
        // "bad\xff.md" would decode to the same text as "bad\uFFFD.md" and stand for it.
        QTemporaryDir dir;
        const QByteArray root = QFile::encodeName(dir.path());
        const auto at = [&root](const char *name) { return QByteArray(root + '/' + name); };
        const auto rawFile = [&at](const char *name, const QByteArray &bytes) {
            const int fd = ::open(at(name).constData(), O_WRONLY | O_CREAT, 0644);
            QVERIFY(fd >= 0);
            QCOMPARE(::write(fd, bytes.constData(), size_t(bytes.size())), bytes.size());
            ::close(fd);
        };
        rawFile("bad\xff.md", "not utf-8 name\n");
        rawFile("bad\xef\xbf\xbd.md", "replacement character name\n");
        QCOMPARE(::mkdir(at("folder\xfe").constData(), 0755), 0);
        rawFile("folder\xfe/inner.md", "inside\n");

        const FileSystemService service;
        const FileItem tree = service.scanDirectory(QUrl::fromLocalFile(dir.path()));
        QCOMPARE(names(tree.children()), QStringList {u"bad\uFFFD.md"_s});
        QCOMPARE(service.collectDocumentPaths(tree), QStringList {dir.filePath(u"bad\uFFFD.md"_s)});

        // The one entry shown is the file of that name, and deleting it touches no other.
        QVERIFY(!service.deleteItem(tree.children().at(0).url()));
        QCOMPARE(::access(at("bad\xef\xbf\xbd.md").constData(), F_OK), -1);
        QCOMPARE(::access(at("bad\xff.md").constData(), F_OK), 0);
        QCOMPARE(::access(at("folder\xfe/inner.md").constData(), F_OK), 0);
    }

    void deletesDeepFoldersWithFewOpenFiles()
    {
        // 2,000 levels: deeper than a path may be long, and far more folders than the usual
        // limit of open files allows at once.
        QTemporaryDir dir;
        const QByteArray top = QFile::encodeName(dir.filePath(u"deep"_s));
        QCOMPARE(::mkdir(top.constData(), 0755), 0);
        int fd = ::open(top.constData(), O_RDONLY | O_DIRECTORY);
        for (int level = 0; level < 2000; ++level) {
            QCOMPARE(::mkdirat(fd, "level", 0755), 0);
            const int file = ::openat(fd, "note.md", O_WRONLY | O_CREAT, 0644);
            QVERIFY(file >= 0);
            ::close(file);
            const int below = ::openat(fd, "level", O_RDONLY | O_DIRECTORY);
            ::close(fd);
            fd = below;
            QVERIFY(fd >= 0);
        }
        ::close(fd);

        rlimit saved;
        QCOMPARE(::getrlimit(RLIMIT_NOFILE, &saved), 0);
        rlimit few = saved;
        few.rlim_cur = 64;
        QCOMPARE(::setrlimit(RLIMIT_NOFILE, &few), 0);
        const std::optional<FileError> error
            = FileSystemService().deleteItem(FileUrl::fromPath(QFile::decodeName(top)));
        QCOMPARE(::setrlimit(RLIMIT_NOFILE, &saved), 0);
        QVERIFY2(!error, error ? qPrintable(error->localizedDescription()) : "");
        QVERIFY(!QFileInfo::exists(QFile::decodeName(top)));
    }

    // Links and pictures between documents, from the table the page's tests read too: paths in
    // every written form, wiki names, addresses for the desktop, and what leads nowhere. The
    // name index, which stands in for walking the tree, finds the same.
    void linksLeadToDocuments()
    {
        QFile table(QStringLiteral(PAGEWELL_SHARED_TEST_DATA "/links.json"));
        QVERIFY(table.open(QIODevice::ReadOnly));
        const QJsonObject cases = QJsonDocument::fromJson(table.readAll()).object();
        QTemporaryDir dir;
        const QString r = dir.path();
        QStringList files;
        for (const QJsonValue &file : cases.value(u"folder"_s).toArray())
            files.append(file.toString());
        make(r, files);
        const FileItem root = FileSystemService().scanDirectory(QUrl::fromLocalFile(r));
        const LinkResolver::NameIndex names(root);
        const auto inFolder = [&](const QJsonValue &relative) {
            return relative.isNull() ? u"-"_s : r + u'/' + relative.toString();
        };

        const QJsonArray links = cases.value(u"links"_s).toArray();
        QVERIFY(links.size() > 20);
        for (const QJsonValue &value : links) {
            const QJsonObject link = value.toObject();
            const QString target = link.value(u"target"_s).toString();
            const QString from = r + u'/' + link.value(u"from"_s).toString();
            const bool address = link.value(u"address"_s).toBool();
            QVERIFY2(LinkResolver::isWebAddress(target) == address, qPrintable(target));
            const std::optional<LinkResolver::Target> found
                = LinkResolver::resolve(target, from, root);
            QVERIFY2(found == LinkResolver::resolve(target, from, root, &names),
                     qPrintable(target));
            const QJsonValue leadsTo = link.value(u"leadsTo"_s);
            const QString expected = address || leadsTo.isNull()
                ? u"-"_s
                : inFolder(leadsTo) + u'#' + link.value(u"fragment"_s).toString();
            QCOMPARE(found ? found->path + u'#' + found->fragment : u"-"_s, expected);
        }

        const QJsonArray pictures = cases.value(u"pictures"_s).toArray();
        QVERIFY(pictures.size() > 5);
        for (const QJsonValue &value : pictures) {
            const QJsonObject picture = value.toObject();
            const QString line = picture.value(u"line"_s).toString();
            const QStringList sources = LinkResolver::writtenIn(line).pictures;
            QVERIFY2(sources.size() == 1, qPrintable(line));
            const QString from = r + u'/' + picture.value(u"from"_s).toString();
            const std::optional<QString> found
                = LinkResolver::resolvePicture(sources.first(), from, root);
            QVERIFY2(found == LinkResolver::resolvePicture(sources.first(), from, root, &names),
                     qPrintable(line));
            QCOMPARE(found.value_or(u"-"_s), inFolder(picture.value(u"shows"_s)));
        }

        // What a text points at, each once, as written and in the order written; a picture is no
        // link, and nothing in code is one.
        const LinkResolver::Written written = LinkResolver::writtenIn(
            u"Voir [a](../index.md#x), [[Index|i]], [w](https://a.org) ![p](img.png) ici.\r\n"
            u"  ![schéma](<img/flux v2.svg> \"t\")\n![[capture.png|c]]\n<img src='logo.webp'>\n"
            u"`[a](../index.md#x)` `[c](code.md)`\n[r]: <défini.md> \"titre\""_s);
        QCOMPARE(written.links,
                 (QStringList {u"../index.md#x"_s, u"[[Index|i]]"_s, u"https://a.org"_s,
                               u"<défini.md>"_s}));
        QCOMPARE(written.pictures,
                 (QStringList {u"img/flux v2.svg"_s, u"[[capture.png]]"_s, u"logo.webp"_s}));
    }
};

QTEST_GUILESS_MAIN(TestFileSystemService)
#include "tst_filesystemservice.moc"
