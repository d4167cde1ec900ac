// The editor page's real bundle in Qt's own web engine (Chromium 102, older than the Chromium the
// browser tests use): it must load, run the host's calls and keep a CRLF document's bytes, without
// a single console error. Catches runtime features newer than the engine.
#include <QGuiApplication>
#include <QSignalSpy>
#include <QTest>
#include <QWebEngineLoadingInfo>
#include <QWebEnginePage>
#include <QWebEngineProfile>
#include <QWebEngineSettings>

using namespace Qt::StringLiterals;

class RecordingPage : public QWebEnginePage
{
public:
    using QWebEnginePage::QWebEnginePage;
    QStringList errors;

protected:
    void javaScriptConsoleMessage(JavaScriptConsoleMessageLevel level, const QString &message,
                                  int line, const QString &source) override
    {
        if (level == ErrorMessageLevel)
            errors.append(u"%1:%2: %3"_s.arg(source).arg(line).arg(message));
    }
};

class TestEditorPageInWebEngine : public QObject
{
    Q_OBJECT

    QVariant evaluate(QWebEnginePage &page, const QString &script)
    {
        QVariant result;
        bool done = false;
        page.runJavaScript(script, [&](const QVariant &value) {
            result = value;
            done = true;
        });
        if (!QTest::qWaitFor([&] { return done; }, 10000))
            qWarning("script did not answer: %s", qPrintable(script));
        return result;
    }

private Q_SLOTS:
    void runsInQtsChromium()
    {
        const QString dir = qEnvironmentVariable("PAGEWELL_WEB_DIR");
        QVERIFY2(!dir.isEmpty(), "PAGEWELL_WEB_DIR names the built page's folder");

        RecordingPage page(new QWebEngineProfile(this));
        page.settings()->setAttribute(QWebEngineSettings::LocalContentCanAccessFileUrls, true);
        QSignalSpy loaded(&page, &QWebEnginePage::loadFinished);
        page.load(QUrl::fromLocalFile(dir + u"/editor.html"_s));
        QVERIFY(loaded.wait(30000));
        QVERIFY(loaded.first().first().toBool());

        QCOMPARE(evaluate(page, u"typeof window.Pagewell"_s).toString(), u"object"_s);
        // Without a web channel the page posts to this hook.
        evaluate(
            page,
            u"window.__pagewellTest = { posted: [], post(m) { this.posted.push(m); } }; true"_s);
        evaluate(page,
                 u"window.Pagewell.init('', true);"
                 "window.Pagewell.setContent('\\uFEFF# Titre\\r\\n\\r\\nCafé `code`\\r\\nfin', "
                 "'/w/a.md');"
                 "window.Pagewell.setTheme('light');"
                 "window.Pagewell.insertText('! ');"
                 "window.Pagewell.scrollToHeading('titre'); true"_s);
        // The text given to init is not shown when a document follows in the same script; the
        // typed text goes before the outline it changed ("# Titre" is no heading now).
        QCOMPARE(
            evaluate(page, u"window.__pagewellTest.posted.map(m => m.type).join()"_s).toString(),
            u"headingsUpdated,contentChanged,headingsUpdated"_s);
        const QString posted
            = evaluate(page, u"window.__pagewellTest.posted[1].markdown"_s).toString();
        QVERIFY(posted.endsWith(u"! # Titre\r\n\r\nCafé `code`\r\nfin"_s));
        QVERIFY(
            evaluate(page, u"window.__pagewellTest.posted[1].markdown.charCodeAt(0) === 0xFEFF"_s)
                .toBool());
        // Code in a fence is highlighted once its language has loaded.
        evaluate(page,
                 u"window.Pagewell.setContent('```cpp\\nint x = 0;\\n```\\n', '/w/b.md'); true"_s);
        QTRY_VERIFY_WITH_TIMEOUT(
            evaluate(page, u"document.querySelectorAll('.cm-line span[class]').length"_s).toInt()
                > 3,
            10000);
        QVERIFY2(page.errors.isEmpty(), qPrintable(page.errors.join(u'\n')));
    }
};

int main(int argc, char *argv[])
{
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    QGuiApplication app(argc, argv);
    TestEditorPageInWebEngine test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_editorpage_webengine.moc"
