// Times the editor in its real view and web engine: a document opened to the page holding its
// text (30 KB, 1 MB, 10 MB), one typed key to the store and the header updated, the start to the
// page showing the restored document, and the memory of the application with its web engine
// processes. Documents are made from the corpus' own Markdown. Prints medians.
#include "Coordinator.h"
#include "EditorBridge.h"
#include "EditorHeaderModel.h"
#include "workspace/WorkspaceStore.h"

#include <QDir>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QGuiApplication>
#include <QProcess>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQmlExtensionPlugin>
#include <QQuickItem>
#include <QQuickView>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QtWebEngineQuick>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <functional>
#include <vector>

Q_IMPORT_QML_PLUGIN(PagewellPlugin)
Q_IMPORT_QML_PLUGIN(Pagewell_EditorPlugin)

using namespace Qt::StringLiterals;

namespace {

QElapsedTimer sinceStart;

// Runs the event loop until `done`; the loop sleeps between events, so the main thread's CPU time
// meanwhile is the work the events caused.
void waitFor(const std::function<bool()> &done, int timeoutMs = 60000)
{
    if (done())
        return;
    QEventLoop loop;
    QTimer check;
    QObject::connect(&check, &QTimer::timeout, &loop, [&] {
        if (done())
            loop.quit();
    });
    check.start(1);
    QTimer::singleShot(timeoutMs, &loop, &QEventLoop::quit);
    loop.exec();
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

void report(const QString &what, double value, const char *unit = "ms")
{
    std::printf("%-56s %9.1f %s\n", qPrintable(what), value, unit);
}

// Proportional set size of a process and of the processes it started, in MiB.
double pssMiB(qint64 pid)
{
    double kib = 0;
    QList<qint64> pids {pid};
    for (QDirIterator it(u"/proc"_s); it.hasNext();) {
        it.next();
        QFile stat(it.filePath() + u"/stat"_s);
        if (!stat.open(QIODevice::ReadOnly))
            continue;
        const QList<QByteArray> fields = stat.readAll().split(' ');
        if (fields.size() > 3 && fields.at(3).toLongLong() == pid)
            pids.append(it.fileName().toLongLong());
    }
    for (const qint64 p : pids) {
        QFile rollup(u"/proc/%1/smaps_rollup"_s.arg(p));
        if (!rollup.open(QIODevice::ReadOnly))
            continue;
        for (const QByteArray &line : rollup.readAll().split('\n')) {
            if (line.startsWith("Pss:"))
                kib += line.mid(4).trimmed().split(' ').first().toDouble();
        }
    }
    return kib / 1024;
}

// Notes when the window receives a key press.
class KeyWatch : public QObject
{
public:
    explicit KeyWatch(std::function<void()> seen) : m_seen(std::move(seen)) { }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::KeyPress)
            m_seen();
        return QObject::eventFilter(watched, event);
    }

private:
    std::function<void()> m_seen;
};

} // namespace

int main(int argc, char **argv)
{
    sinceStart.start();
    QTemporaryDir scratch;
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(scratch.filePath(u"config"_s)));
    if (::geteuid() == 0)
        qputenv("QTWEBENGINE_DISABLE_SANDBOX", "1");
    QtWebEngineQuick::initialize();
    QGuiApplication app(argc, argv);
    if (argc < 3) {
        std::fprintf(stderr, "usage: pagewell-editorbench TREE WEB_DIR\n");
        return 2;
    }
    const QString tree = QDir(QString::fromLocal8Bit(argv[1])).absolutePath();
    const QString web = QDir(QString::fromLocal8Bit(argv[2])).absolutePath();

    // Documents of 30 KB, 1 MB and 10 MB from the corpus' Markdown.
    QByteArray corpus;
    for (QDirIterator it(tree, {u"*.md"_s}, QDir::Files, QDirIterator::Subdirectories);
         it.hasNext() && corpus.size() < 10'500'000;) {
        QFile file(it.next());
        if (file.open(QIODevice::ReadOnly))
            corpus += file.readAll();
    }
    const QString docs = scratch.filePath(u"docs"_s);
    QDir().mkpath(docs);
    const std::vector<std::pair<QString, qsizetype>> sizes
        = {{u"30 KB"_s, 30'000}, {u"1 MB"_s, 1'000'000}, {u"10 MB"_s, 10'000'000}};
    for (const auto &[name, size] : sizes) {
        // Cut on a line end, so the text stays valid UTF-8.
        const qsizetype cut = corpus.lastIndexOf('\n', size) + 1;
        for (const char *copy : {"a", "b"}) {
            QFile file(docs + u"/%1-%2.md"_s.arg(size).arg(QLatin1StringView(copy)));
            file.open(QIODevice::WriteOnly);
            file.write(corpus.left(cut));
        }
    }
    WorkspaceStore *store = WorkspaceStore::shared();
    store->openFolder(QUrl::fromLocalFile(docs), QUrl::fromLocalFile(docs + u"/30000-a.md"_s));

    QQuickView view;
    view.engine()->addImportPath(u"qrc:/qt/qml"_s);
    QQmlComponent component(view.engine());
    component.setData(
        "import QtQuick; import Pagewell\n"
        "MarkdownEditorView { property int answers: 0; property var lastResult\n"
        "  function ping() { webView.runJavaScript('1', r => answers++) }\n"
        "  function evaluate(s) { webView.runJavaScript(s, r => { lastResult = r; answers++ }) } }",
        QUrl());
    auto *editor = qobject_cast<QQuickItem *>(component.createWithInitialProperties(
        {{u"pageUrl"_s, QUrl::fromLocalFile(web + u"/editor.html"_s)}}));
    view.setContent(QUrl(), &component, editor);
    view.resize(1000, 800);
    view.show();
    auto *coordinator = editor->property("coordinator").value<Coordinator *>();
    QObject *webView = editor->property("webView").value<QObject *>();
    auto *bridge = editor->property("bridge").value<EditorBridge *>();
    // Scripts run in order: once a later one answers, the start call has run.
    const auto pageCaughtUp = [&] {
        const int before = editor->property("answers").toInt();
        QMetaObject::invokeMethod(editor, "ping");
        waitFor([&] { return editor->property("answers").toInt() > before; });
    };
    waitFor([&] {
        return !webView->property("loading").toBool()
            && webView->property("loadProgress").toInt() == 100;
    });
    pageCaughtUp();
    report(u"start to the page holding the restored 30 KB document"_s,
           double(sinceStart.nsecsElapsed()) / 1e6);
    report(u"memory, PSS of the application and its web engine"_s,
           pssMiB(QCoreApplication::applicationPid()), "MiB");

    for (const auto &[name, size] : sizes) {
        std::vector<double> times;
        for (int round = 0; round < 5; ++round) {
            const QString path = docs + u"/%1-%2.md"_s.arg(size).arg(round % 2 ? u"a"_s : u"b"_s);
            QElapsedTimer timer;
            timer.start();
            store->openFile(QUrl::fromLocalFile(path));
            pageCaughtUp();
            times.push_back(double(timer.nsecsElapsed()) / 1e6);
        }
        report(u"open a %1 document to the page holding it"_s.arg(name), median(times));
    }

    // One typed key, from the key event to the store's new text and the header's new counts.
    EditorHeaderModel header;
    header.setStore(store);
    for (const auto &[name, size] : sizes) {
        store->openFile(QUrl::fromLocalFile(docs + u"/%1-a.md"_s.arg(size)));
        pageCaughtUp();
        // A click in the text gives the page the keyboard, as a person would; keys come from the
        // X server, as a person's do.
        QTest::mouseClick(&view, Qt::LeftButton, {}, QPoint(500, 300));
        QProcess::execute(u"xdotool"_s, {u"mousemove"_s, u"500"_s, u"300"_s, u"click"_s, u"1"_s});
        QMetaObject::invokeMethod(webView, "forceActiveFocus");
        QMetaObject::invokeMethod(editor, "evaluate",
                                  Q_ARG(QVariant, u"window.__pagewellEditor.view.focus()"_s));
        QTest::qWait(300);
        // The page notes when a change of its text has been painted: the frame after the change,
        // on the wall clock, which both processes share.
        QMetaObject::invokeMethod(
            editor, "evaluate",
            Q_ARG(
                QVariant,
                u"new MutationObserver(() => { if (window.__painting) return; window.__painting = "
                u"true; "
                u"requestAnimationFrame(() => setTimeout(() => { window.__paintedAt = "
                u"performance.timeOrigin + performance.now(); window.__painting = false; }, 0)); })"
                u".observe(document.querySelector('.cm-content'), {childList: true, subtree: true, "
                u"characterData: true}); true"_s));
        QTest::qWait(100);
        const auto wallMs = [] {
            return double(std::chrono::duration_cast<std::chrono::microseconds>(
                              std::chrono::system_clock::now().time_since_epoch())
                              .count())
                / 1000.0;
        };
        const auto mainThreadCpuMs = [] {
            timespec t;
            ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
            return double(t.tv_sec) * 1000.0 + double(t.tv_nsec) / 1e6;
        };
        // One xdotool reads the keys from its input: a process started per key would cost the
        // main thread a fork of the whole application each time.
        QProcess keyboard;
        keyboard.start(u"xdotool"_s, {u"-"_s});
        keyboard.waitForStarted();
        QTest::qWait(200);
        std::vector<double> painted;
        std::vector<double> mainThread;
        // Three moments of each key: the X server's key press reaching the window, the page's
        // message reaching the coordinator (the web channel has decoded it), the header counted.
        std::vector<double> endToEnd;
        std::vector<double> afterArrival;
        for (int key = 0; key < 15; ++key) {
            QElapsedTimer clock;
            double pressedWall = 0;
            double cpuAtPress = 0;
            qint64 pressed = -1;
            qint64 arrived = -1;
            qint64 counted = -1;
            KeyWatch watch([&] {
                if (pressed < 0) {
                    pressed = clock.nsecsElapsed();
                    pressedWall = wallMs();
                    cpuAtPress = mainThreadCpuMs();
                }
            });
            view.installEventFilter(&watch);
            const auto onMessage = QObject::connect(bridge, &EditorBridge::messageReceived, [&] {
                if (arrived < 0)
                    arrived = clock.nsecsElapsed();
            });
            const auto onCount = QObject::connect(&header, &EditorHeaderModel::statisticsChanged,
                                                  [&] { counted = clock.nsecsElapsed(); });
            clock.start();
            keyboard.write("key a\n");
            waitFor([&] { return counted >= 0; }, 2000);
            // The main thread's own work for the key (the waiting loop sleeps, it costs nothing).
            const double cpu = mainThreadCpuMs() - cpuAtPress;
            view.removeEventFilter(&watch);
            QObject::disconnect(onMessage);
            QObject::disconnect(onCount);
            if (pressed >= 0 && counted >= 0) {
                endToEnd.push_back(double(counted - pressed) / 1e6);
                afterArrival.push_back(double(counted - arrived) / 1e6);
                mainThread.push_back(cpu);
                const int answers = editor->property("answers").toInt();
                QMetaObject::invokeMethod(editor, "evaluate",
                                          Q_ARG(QVariant, u"window.__paintedAt || 0"_s));
                waitFor([&] { return editor->property("answers").toInt() > answers; }, 2000);
                const double at = editor->property("lastResult").toDouble();
                if (at > pressedWall)
                    painted.push_back(at - pressedWall);
            }
            QTest::qWait(50);
        }
        keyboard.closeWriteChannel();
        keyboard.waitForFinished();
        if (endToEnd.empty()) {
            std::printf("typing in the %s document: no key reached the store\n", qPrintable(name));
            continue;
        }
        report(u"one key in a %1 document, window to store and header"_s.arg(name),
               median(endToEnd));
        report(u"  of which after the message arrived (main thread)"_s, median(afterArrival));
        report(u"  main thread's own work for the key (CPU)"_s, median(mainThread));
        if (!painted.empty())
            report(u"one key in a %1 document, window to the glyph painted"_s.arg(name),
                   median(painted));
        // The same figures as lines a script reads.
        const QByteArray label = name.toLatin1().replace(' ', "");
        std::printf("main thread per key %s: %.1f ms\n", label.constData(), median(mainThread));
        if (!painted.empty())
            std::printf("key to glyph painted %s: %.1f ms\n", label.constData(), median(painted));
    }

    // A link followed in a folder of 40,000 documents: from the page's message (what Ctrl+click
    // or Ctrl+Enter posts) to the target's text painted, for a path and for a wiki name.
    const QString library = scratch.filePath(u"library"_s);
    for (int i = 0; i < 40'000; ++i) {
        const QString path
            = library + u"/part%1/section%2/page-%3.md"_s.arg(i / 4000).arg(i / 200 % 20).arg(i);
        QDir().mkpath(QFileInfo(path).path());
        QFile file(path);
        file.open(QIODevice::WriteOnly);
        file.write("# Page " + QByteArray::number(i) + "\n\n" + corpus.mid(i * 50, 3000));
    }
    const QString from = library + u"/part0/section0/page-0.md"_s;
    store->openFolder(QUrl::fromLocalFile(library), QUrl::fromLocalFile(from));
    pageCaughtUp();
    const auto paintedAfter = [&](const std::function<void()> &act) {
        const auto wallMs = [] {
            return double(std::chrono::duration_cast<std::chrono::microseconds>(
                              std::chrono::system_clock::now().time_since_epoch())
                              .count())
                / 1000.0;
        };
        const double start = wallMs();
        act();
        double at = 0;
        waitFor([&] {
            const int answers = editor->property("answers").toInt();
            QMetaObject::invokeMethod(editor, "evaluate",
                                      Q_ARG(QVariant, u"window.__paintedAt || 0"_s));
            waitFor([&] { return editor->property("answers").toInt() > answers; }, 2000);
            at = editor->property("lastResult").toDouble();
            return at > start;
        });
        return at - start;
    };
    for (const QString &target : {u"../../part9/section19/page-39999.md"_s, u"[[page-39999]]"_s}) {
        std::vector<double> times;
        for (int round = 0; round < 5; ++round) {
            store->openFile(QUrl::fromLocalFile(from));
            pageCaughtUp();
            QTest::qWait(200);
            times.push_back(paintedAfter([&] {
                coordinator->receiveMessage(QVariantMap {
                    {u"type"_s, u"openLink"_s}, {u"target"_s, target}, {u"path"_s, from}});
            }));
        }
        report(u"follow %1 among 40,000 documents, to painted"_s.arg(target), median(times));
    }
    return 0;
}
