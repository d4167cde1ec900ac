// The real editor page in Qt's web engine, inside the real view, talking to the application's
// store through the real web channel: start, saves and drafts of large documents, spelling.
#include "../core/TestFiles.h"
#include "workspace/WorkspaceStore.h"

#include <QGuiApplication>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQmlExtensionPlugin>
#include <QQuickItem>
#include <QQuickView>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QWebEngineContextMenuRequest>
#include <QtWebEngineQuick>

Q_IMPORT_QML_PLUGIN(PagewellPlugin)
Q_IMPORT_QML_PLUGIN(Pagewell_EditorPlugin)

using namespace Qt::StringLiterals;

namespace {

QStringList pageErrors;

void collectPageErrors(QtMsgType type, const QMessageLogContext &, const QString &message)
{
    if (type >= QtWarningMsg && message.contains(u"editor page"_s))
        pageErrors.append(message);
    if (type >= QtCriticalMsg || message.contains(u"editor page"_s))
        std::fprintf(stderr, "%s\n", qPrintable(message));
}

} // namespace

class TestEditorHost : public QObject
{
    Q_OBJECT

    QTemporaryDir m_scratch;
    QQuickView m_view;
    QQuickItem *m_editor = nullptr;
    int m_made = 0;

    QVariant evaluate(const QString &script)
    {
        const int before = m_editor->property("answers").toInt();
        QMetaObject::invokeMethod(m_editor, "evaluate", Q_ARG(QVariant, script));
        if (!QTest::qWaitFor([&] { return m_editor->property("answers").toInt() > before; }, 10000))
            qWarning("no answer from the page for %s", qPrintable(script));
        return m_editor->property("lastResult");
    }

    QString pageText()
    {
        return evaluate(u"window.__pagewellEditor.view.state.doc.toString()"_s).toString();
    }

    // Types at the end, as the page's own input does.
    void type(const QString &text)
    {
        evaluate(u"(() => { const v = window.__pagewellEditor.view; const at = v.state.doc.length; "
                 u"v.dispatch({changes: {from: at, insert: '%1'}, selection: {anchor: at + 1}, "
                 u"userEvent: 'input.type'}); return true; })()"_s.arg(text));
    }

    QString folder(const QStringList &files)
    {
        const QString path = m_scratch.filePath(u"w%1"_s.arg(++m_made));
        makeTree(path, files);
        return path;
    }

    WorkspaceStore *store() { return WorkspaceStore::shared(); }

    // A document of at least `size` bytes at `path`, opened and held whole by the page.
    QByteArray openLarge(const QString &path, qsizetype size)
    {
        QByteArray text = "# Grand\n";
        while (text.size() < size)
            text += "Une ligne de texte pour un grand document.\n";
        writeFile(path, text);
        store()->openFile(QUrl::fromLocalFile(path));
        if (!QTest::qWaitFor(
                [&] {
                    return evaluate(u"window.__pagewellEditor.view.state.doc.length"_s).toInt()
                        == text.size();
                },
                20000))
            qWarning("the page did not take %s", qPrintable(path));
        return text;
    }

private Q_SLOTS:
    void initTestCase()
    {
        qInstallMessageHandler(collectPageErrors);
        const QString web = qEnvironmentVariable("PAGEWELL_WEB_DIR");
        QVERIFY2(!web.isEmpty(), "PAGEWELL_WEB_DIR names the built page's folder");
        // A document is open before the page loads: the start call brings it, in pieces, with a
        // surrogate pair where the first piece ends.
        const QString root = folder({u"first.md"_s});
        QString first = u"# first.md\n"_s + QString(4'084, u'a') + u"😀\n"_s;
        while (first.size() < 150'000)
            first += u"a`$\\😀\n"_s;
        QVERIFY(first.at(4'095).isHighSurrogate());
        writeFile(root + u"/first.md"_s, first.toUtf8());
        store()->openFolder(QUrl::fromLocalFile(root));

        m_view.engine()->addImportPath(u"qrc:/qt/qml"_s);
        QQmlComponent component(m_view.engine());
        component.setData("import QtQuick; import Pagewell\n"
                          "MarkdownEditorView {\n"
                          "  property var lastResult; property int answers: 0\n"
                          "  function evaluate(script) { webView.runJavaScript(script,\n"
                          "    r => { lastResult = r; answers++ }) }\n"
                          "}",
                          QUrl());
        m_editor = qobject_cast<QQuickItem *>(component.createWithInitialProperties(
            {{u"pageUrl"_s, QUrl::fromLocalFile(web + u"/editor.html"_s)}}));
        QVERIFY2(m_editor, qPrintable(component.errorString()));
        m_view.setContent(QUrl(), &component, m_editor);
        m_view.resize(800, 600);
        m_view.show();
        QObject *webView = m_editor->property("webView").value<QObject *>();
        QTRY_VERIFY_WITH_TIMEOUT(webView->property("loadProgress").toInt() == 100
                                     && !webView->property("loading").toBool(),
                                 20000);
        QTRY_COMPARE_WITH_TIMEOUT(pageText(), first, 10000);
        QTRY_COMPARE_WITH_TIMEOUT(store()->currentDocument()->headings.size(), 1, 10000);
        QCOMPARE(store()->currentDocument()->headings.at(0).text, u"first.md"_s);
        QVERIFY(!store()->currentDocument()->isDirty);
    }

    void aSaveFromTheMenuSavesWhatThePageShows()
    {
        // A large document sends its edits, not its text: the menu's save, asked for in the
        // same turn as the key, writes it.
        const QString root = folder({u"big.md"_s});
        openLarge(root + u"/big.md"_s, 2'000'000);
        type(u"Z"_s);
        store()->requestSave();
        QTRY_COMPARE_WITH_TIMEOUT(readFile(root + u"/big.md"_s).right(2), QByteArray("\nZ"), 10000);
        QVERIFY(!store()->currentDocument()->isDirty);
    }

    void typingNotYetSentReachesItsDocumentsDraft()
    {
        // A large document's last key, still on its way when another file opens, goes to its
        // draft.
        const QString root = folder({u"large.md"_s, u"other.md"_s});
        const QByteArray text = openLarge(root + u"/large.md"_s, 300'000);
        type(u"Z"_s);
        store()->openFile(QUrl::fromLocalFile(root + u"/other.md"_s));
        QTRY_COMPARE_WITH_TIMEOUT(pageText(), u"# other.md\n"_s, 10000);
        QTest::qWait(200);
        QVERIFY(!store()->currentDocument()->isDirty);
        store()->drafts().waitForWrites();
        QCOMPARE(store()->drafts().find(root + u"/large.md"_s, QString::fromUtf8(text)),
                 QString::fromUtf8(text + "Z"));
    }

    // Edits of a large document, through the real channel, leave the store holding exactly the
    // page's text: CR LF line ends, a byte-order mark, characters outside the BMP.
    void aLargeDocumentsEditsKeepTheStoreExact()
    {
        const QString root = folder({u"crlf.md"_s});
        QByteArray text = "\xef\xbb\xbf# Grand\r\n";
        while (text.size() < 400'000)
            text += "Une ligne \xf0\x9f\x99\x82 de texte \xc3\xa9t\xc3\xa9.\r\n";
        writeFile(root + u"/crlf.md"_s, text);
        store()->openFile(QUrl::fromLocalFile(root + u"/crlf.md"_s));
        QTRY_VERIFY_WITH_TIMEOUT(
            evaluate(u"window.__pagewellEditor.view.state.doc.length"_s).toInt() > 300'000, 20000);
        evaluate(
            u"(() => { const v = window.__pagewellEditor.view; let seed = 3;\n"
            u"const r = (n) => ((seed = (seed * 1103515245 + 12345) % 2147483648), seed % n);\n"
            u"const pieces = ['x', '\\n', '\\u{1F600}', 'deux\\nlignes', ''];\n"
            u"for (let i = 0; i < 80; i++) { const n = v.state.doc.length; const from = r(n);\n"
            u"  v.dispatch({changes: {from, to: Math.min(n, from + r(3) * r(50)),\n"
            u"    insert: pieces[r(pieces.length)]}, userEvent: 'input.type'}); }\n"
            u"return true; })()"_s);
        const int shown = evaluate(u"(() => { const d = window.__pagewellEditor.view.state.doc; "
                                   u"return 1 + d.length + d.lines - 1; })()"_s)
                              .toInt();
        QTRY_COMPARE_WITH_TIMEOUT(store()->currentDocument()->content.size(), shown, 10000);
        QVERIFY(store()->currentDocument()->isDirty);
        // The page's whole text, asked for, is the text its edits built here.
        const QString built = store()->currentDocument()->content;
        QSignalSpy changed(store(), &WorkspaceStore::documentTextChanged);
        QSignalSpy received(m_editor->property("bridge").value<QObject *>(),
                            SIGNAL(messageReceived(QVariant)));
        evaluate(u"window.Pagewell.sendContent()"_s);
        QTRY_COMPARE_WITH_TIMEOUT(received.count(), 1, 10000);
        QCoreApplication::processEvents();
        QCOMPARE(changed.count(), 0);
        QCOMPARE(store()->currentDocument()->content, built);
        QVERIFY(built.startsWith(u"\ufeff# Grand\r\n"_s));
    }

    // Every word of everyday French and English prose is known; a misspelled word in each is
    // not. Each word is right-clicked in the page, as a person asking for suggestions would.
    void spellingKnowsEverydayProse()
    {
        // Everyday French and English prose, each with one misspelt word.
        QFile prose(QStringLiteral(PAGEWELL_TEST_DATA "/prose.md"));
        QVERIFY(prose.open(QIODevice::ReadOnly));
        const QString root = folder({u"prose.md"_s});
        writeFile(root + u"/prose.md"_s, prose.readAll());
        store()->openFile(QUrl::fromLocalFile(root + u"/prose.md"_s));
        QTRY_VERIFY_WITH_TIMEOUT(pageText().startsWith(u"Le matin"_s), 10000);
        // The page as large as the view, and its text small enough that every word is drawn in
        // it, so that each can be clicked.
        m_editor->setSize(m_view.size());
        QTRY_VERIFY_WITH_TIMEOUT(evaluate(u"window.innerHeight"_s).toInt() > 500, 5000);
        evaluate(
            u"document.body.style.fontSize = '60%'; window.__pagewellEditor.view.requestMeasure(); "
            u"window.__pagewellEditor.view.focus(); true"_s);
        QTest::qWait(1500); // the spelling service reads the text once it is focused

        QObject *webView = m_editor->property("webView").value<QObject *>();
        QMetaObject::Connection menu = QObject::connect(
            webView, SIGNAL(contextMenuRequested(QWebEngineContextMenuRequest *)), this,
            SLOT(recordMenu(QWebEngineContextMenuRequest *)));
        QVERIFY(menu);
        const QVariantList words
            = evaluate(u"(() => { const v = window.__pagewellEditor.view; const text = "
                       u"v.state.doc.toString(); "
                       u"const out = []; for (const m of text.matchAll(/[\\p{L}]+/gu)) { "
                       u"const c = v.coordsAtPos(m.index + 1); if (c) out.push([m[0], c.left, "
                       u"(c.top + c.bottom) / 2]); } "
                       u"return out; })()"_s)
                  .toList();
        QVERIFY2(words.size() > 220, qPrintable(QString::number(words.size())));
        QStringList marked;
        for (const QVariant &entry : words) {
            const QVariantList word = entry.toList();
            m_menuWord.reset();
            QTest::mouseClick(&m_view, Qt::RightButton, {},
                              QPoint(int(word.at(1).toDouble()) + 1, int(word.at(2).toDouble())));
            if (!QTest::qWaitFor([&] { return m_menuWord.has_value(); }, 3000))
                QFAIL(qPrintable(u"no context menu for "_s + word.at(0).toString()));
            if (!m_menuWord->isEmpty())
                marked.append(*m_menuWord);
            QTest::keyClick(&m_view, Qt::Key_Escape);
        }
        disconnect(menu);
        evaluate(u"document.body.style.fontSize = ''; true"_s);
        QCOMPARE(marked, (QStringList {u"maisonn"_s, u"documentt"_s}));
    }

    void cleanupTestCase() { QVERIFY2(pageErrors.isEmpty(), qPrintable(pageErrors.join(u'\n'))); }

public Q_SLOTS:
    void recordMenu(QWebEngineContextMenuRequest *request)
    {
        m_menuWord = request->misspelledWord();
    }

private:
    std::optional<QString> m_menuWord;
};

int main(int argc, char *argv[])
{
    QTemporaryDir config;
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(config.path()));
    qputenv("XDG_STATE_HOME", QFile::encodeName(config.path()));
    // The dictionaries made at build time, beside the page.
    qputenv("QTWEBENGINE_DICTIONARIES_PATH",
            QFile::encodeName(qEnvironmentVariable("PAGEWELL_WEB_DIR")
                              + u"/../qtwebengine_dictionaries"_s));
    QtWebEngineQuick::initialize();
    QGuiApplication app(argc, argv);
    TestEditorHost test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_editorhost.moc"
