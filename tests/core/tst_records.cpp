#include "model/EditorDocument.h"
#include "model/FileItem.h"

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

    void documentTypes()
    {
        const auto item
            = [](const QString &name) { return FileItem::scannedFile(u"/w/"_s + name, name); };
        QVERIFY(item(u"README.MD"_s).isMarkdown());
        QVERIFY(item(u"notes.Markdown"_s).isMarkdown());
        QVERIFY(item(u"a.mdown"_s).isMarkdown());
        QVERIFY(!item(u"notes.md.bak"_s).isMarkdown());

        QVERIFY(item(u"logo.SVG"_s).isSvgOrDiagram());
        QVERIFY(item(u"flow.excalidraw"_s).isSvgOrDiagram());
        QVERIFY(item(u"flow.excalidraw.png"_s).isSvgOrDiagram());
        QVERIFY(item(u"flow.excalidraw.md"_s).isSvgOrDiagram());
        QVERIFY(!item(u"logo.Excalidraw"_s).isSvgOrDiagram());
        QVERIFY(!item(u"logo.png"_s).isSvgOrDiagram());
    }
};

QTEST_GUILESS_MAIN(TestRecords)
#include "tst_records.moc"
