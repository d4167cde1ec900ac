#include "model/EditorDocument.h"
#include "model/FileItem.h"
#include "model/FileUrl.h"

#include <QFile>
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

    void fileItemIdentity()
    {
        const FileItem file = FileItem::scannedFile(u"/w/a b#1.md"_s, u"a b#1.md"_s);
        QCOMPARE(file.url(), QUrl::fromLocalFile(u"/w/a b#1.md"_s));
        QCOMPARE(FileUrl::path(file.url()), file.id());
        // A scanned folder's URL is a directory URL; its id has no trailing slash.
        const FileItem folder = FileItem::scannedFolder(u"/w/docs"_s, u"docs"_s, {file});
        QVERIFY(FileUrl::isDirectoryUrl(folder.url()));
        QCOMPARE(folder.id(), u"/w/docs"_s);
        // The tree model tells changed folders by equality: it looks below the first level.
        const FileItem other = FileItem::scannedFolder(
            u"/w/docs"_s, u"docs"_s, {FileItem::scannedFile(u"/w/a b#1.md"_s, u"A b#1.md"_s)});
        QVERIFY(other != folder);
        QVERIFY(FileItem::scannedFolder(u"/w/docs"_s, u"docs"_s, {}) != folder);
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
