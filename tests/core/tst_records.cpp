#include "model/EditorDocument.h"
#include "model/FileItem.h"
#include "model/FileSearchResults.h"
#include "model/FileUrl.h"
#include "model/HeadingItem.h"
#include "model/SidebarMode.h"

#include <QFile>
#include <QJsonDocument>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

class TestRecords : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void wordCount_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("words");
        QTest::newRow("spaces and newlines") << u"  hello \n\n world\t"_s << 2;
        QTest::newRow("empty") << QString() << 0;
        QTest::newRow("only separators") << u"   \n"_s << 0;
        QTest::newRow("punctuation joins") << u"a,b c.d"_s << 2;
        QTest::newRow("unicode separators")
            << u"un\u2028deux\u00A0trois\u2029quatre\u3000cinq"_s << 5;
        QTest::newRow("crlf and emoji") << u"\U0001F600 ok\r\nfin"_s << 3;
    }

    void wordCount()
    {
        QFETCH(QString, text);
        QFETCH(int, words);
        EditorDocument document;
        document.content = text;
        QCOMPARE(document.wordCount(), words);
    }

    void formattedFileSizeReadsTheDiskNotTheText()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(u"a.md"_s);
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(QByteArray(1500, 'x'));
        file.close();

        EditorDocument document;
        document.fileURL = QUrl::fromLocalFile(path);
        document.content = u"short"_s;
        const QString size = document.formattedFileSize();
        QVERIFY2(size.contains(u"1.5") || size.contains(u"1,5"), qPrintable(size));
        QVERIFY(size.contains(u"kB") || size.contains(u"ko"));

        QFile::remove(path);
        QCOMPARE(document.formattedFileSize(), u"-"_s);
    }

    void documentTypes()
    {
        const auto item
            = [](const QString &name) { return FileItem::scannedFile(u"/w/"_s + name, name); };
        QVERIFY(item(u"README.MD"_s).isMarkdown());
        QVERIFY(item(u"notes.Markdown"_s).isMarkdown());
        QVERIFY(item(u"a.mdown"_s).isMarkdown());
        QVERIFY(!item(u"notes.mdx"_s).isMarkdown());
        QVERIFY(!item(u"notes.md.bak"_s).isMarkdown());
        QVERIFY(!item(u"a.md.txt"_s).isMarkdown());
        QVERIFY(!item(u"Makefile"_s).isMarkdown());

        QVERIFY(item(u"logo.SVG"_s).isSvgOrDiagram());
        QVERIFY(item(u"flow.excalidraw"_s).isSvgOrDiagram());
        QVERIFY(item(u"flow.excalidraw.png"_s).isSvgOrDiagram());
        QVERIFY(item(u"flow.excalidraw.md"_s).isSvgOrDiagram());
        QVERIFY(!item(u"logo.Excalidraw"_s).isSvgOrDiagram());
        QVERIFY(!item(u"FLOW.EXCALIDRAW"_s).isSvgOrDiagram());
        QVERIFY(!item(u"logo.png"_s).isSvgOrDiagram());

        // A folder named like a document still answers true; callers test isDirectory first.
        QVERIFY(FileItem::scannedFolder(u"/w/x.md"_s, u"x.md"_s, {}).isMarkdown());
    }

    void markdownFileCountCountsEveryLevel()
    {
        const FileItem deep = FileItem::scannedFolder(
            u"/w/a"_s, u"a"_s,
            {FileItem::scannedFolder(
                u"/w/a/b"_s, u"b"_s,
                {FileItem::scannedFolder(
                    u"/w/a/b/c"_s, u"c"_s,
                    {FileItem::scannedFile(u"/w/a/b/c/1.md"_s, u"1.md"_s),
                     FileItem::scannedFile(u"/w/a/b/c/2.MARKDOWN"_s, u"2.MARKDOWN"_s),
                     FileItem::scannedFile(u"/w/a/b/c/x.svg"_s, u"x.svg"_s)})})});
        QCOMPARE(deep.markdownFileCount(), 2);
        const FileItem svgOnly = FileItem::scannedFolder(
            u"/w/s"_s, u"s"_s, {FileItem::scannedFile(u"/w/s/x.svg"_s, u"x.svg"_s)});
        QCOMPARE(svgOnly.markdownFileCount(), 0);
        QCOMPARE(
            FileItem(u"/w/e"_s, QUrl::fromLocalFile(u"/w/e/"_s), u"e"_s, true).markdownFileCount(),
            0);
        QCOMPARE(FileItem::scannedFile(u"/w/a.md"_s, u"a.md"_s).markdownFileCount(), 1);
    }

    void fileItemIdentityEqualityAndHash()
    {
        const FileItem file = FileItem::scannedFile(u"/w/a b#1.md"_s, u"a b#1.md"_s);
        QCOMPARE(file.url(), QUrl::fromLocalFile(u"/w/a b#1.md"_s));
        QCOMPARE(FileUrl::path(file.url()), file.id());
        QVERIFY(!file.hasChildren());

        // A scanned folder's URL is a directory URL; its id has no trailing slash.
        const FileItem folder = FileItem::scannedFolder(u"/w/docs"_s, u"docs"_s, {file});
        QVERIFY(FileUrl::isDirectoryUrl(folder.url()));
        QCOMPARE(folder.id(), u"/w/docs"_s);

        // Explicit and derived URLs of the same node are equal and hash alike.
        const FileItem explicitFile(u"/w/a b#1.md"_s, QUrl::fromLocalFile(u"/w/a b#1.md"_s),
                                    u"a b#1.md"_s, false);
        QCOMPARE(explicitFile, file);
        QCOMPARE(qHash(explicitFile), qHash(file));

        // Same path, other children: different nodes. Absent and empty children differ too.
        const FileItem emptyFolder = FileItem::scannedFolder(u"/w/docs"_s, u"docs"_s, {});
        QVERIFY(emptyFolder != folder);
        QVERIFY(qHash(emptyFolder) != qHash(folder));
        FileItem absent = emptyFolder;
        absent.setChildren(std::nullopt);
        QVERIFY(absent != emptyFolder);
        QVERIFY(qHash(absent) != qHash(emptyFolder));

        // Deep inequality is found below the first level.
        const FileItem other = FileItem::scannedFolder(
            u"/w/docs"_s, u"docs"_s, {FileItem::scannedFile(u"/w/a b#1.md"_s, u"A b#1.md"_s)});
        QVERIFY(other != folder);
        QCOMPARE(FileItem(folder), folder);
    }

    void headingJson()
    {
        const auto decode = [](const char *json) {
            return HeadingItem::fromJson(QJsonDocument::fromJson(json).object());
        };
        const std::optional<HeadingItem> heading
            = decode(R"({"id":"h-1","level":2,"text":"Intro","extra":[1]})");
        QVERIFY(heading);
        QCOMPARE(*heading, (HeadingItem {u"h-1"_s, 2, u"Intro"_s}));
        QVERIFY(!decode(R"({"id":"h-1","level":"2","text":"Intro"})"));
        QVERIFY(!decode(R"({"id":"h-1","text":"Intro"})"));
        QVERIFY(!decode(R"({"id":1,"level":2,"text":"Intro"})"));
        QVERIFY(!decode(R"({"id":"h","level":2.5,"text":"Intro"})"));
        QVERIFY(!decode(R"({"id":"h","level":2,"text":null})"));

        const HeadingItem roundTrip = *HeadingItem::fromJson(heading->toJson());
        QCOMPARE(roundTrip, *heading);
        QCOMPARE(heading->toJson().keys(), (QStringList {u"id"_s, u"level"_s, u"text"_s}));

        QVariantMap fromPage {{u"id"_s, u"x"_s}, {u"level"_s, 3.0}, {u"text"_s, u"T"_s}};
        QCOMPARE(HeadingItem::fromVariantMap(fromPage)->level, 3);
        fromPage.remove(u"level"_s);
        QVERIFY(!HeadingItem::fromVariantMap(fromPage));
    }

    void sidebarMode()
    {
        QCOMPARE(SidebarMode::allCases(), (QList {SidebarMode::Explorer, SidebarMode::Search}));
        QCOMPARE(SidebarMode::rawValue(SidebarMode::Search), u"search"_s);
        QCOMPARE(SidebarMode::fromRawValue(u"explorer"), SidebarMode::Explorer);
        QVERIFY(!SidebarMode::fromRawValue(u"Search"));
        QVERIFY(!SidebarMode::fromRawValue(u""));
    }

    void searchRecordsCompareMemberwise()
    {
        SearchResult hit {QUuid::createUuid(),
                          QUrl::fromLocalFile(u"/w/a.md"_s),
                          u"a.md"_s,
                          u"a.md"_s,
                          3,
                          u"line"_s,
                          u"q"_s};
        SearchResult copy = hit;
        QCOMPARE(copy, hit);
        QCOMPARE(qHash(copy), qHash(hit));
        copy.id = QUuid::createUuid();
        QVERIFY(copy != hit);

        FileSearchResults file {hit.fileURL, hit.fileName, hit.relativePath, {hit}};
        QCOMPARE(file.id(), u"/w/a.md"_s);
        FileSearchResults other = file;
        other.matches.append(copy);
        QVERIFY(other != file);
        QVERIFY(qHash(other) != qHash(file));
    }

    void editorDocumentEquality()
    {
        EditorDocument a;
        a.fileURL = QUrl::fromLocalFile(u"/w/a.md"_s);
        a.lastModified = QDateTime::currentDateTime();
        EditorDocument b = a;
        QCOMPARE(a, b);
        QCOMPARE(a.id(), u"/w/a.md"_s);
        b.lastModified = a.lastModified.addMSecs(1);
        QVERIFY(a != b);
        b = a;
        b.headings.append({u"h"_s, 1, u"T"_s});
        QVERIFY(a != b);
    }

    void fileUrls()
    {
        QTemporaryDir dir;
        QVERIFY(FileUrl::isDirectoryUrl(FileUrl::fromPath(dir.path())));
        QVERIFY(!FileUrl::isDirectoryUrl(FileUrl::fromPath(dir.filePath(u"missing"_s))));
        QCOMPARE(FileUrl::path(QUrl::fromLocalFile(u"/w/docs/"_s)), u"/w/docs"_s);
        QCOMPARE(FileUrl::path(QUrl::fromLocalFile(u"/"_s)), u"/"_s);
        QCOMPARE(FileUrl::deletingLastPathComponent(QUrl::fromLocalFile(u"/w/docs/a.md"_s)),
                 QUrl::fromLocalFile(u"/w/docs/"_s));
        QCOMPARE(FileUrl::lastPathComponent(QUrl::fromLocalFile(u"/w/docs/"_s)), u"docs"_s);
        QCOMPARE(FileUrl::joinPath(u"/"_s, u"a"), u"/a"_s);
    }
};

QTEST_GUILESS_MAIN(TestRecords)
#include "tst_records.moc"
