#include "AppDelegate.h"
#include "Coordinator.h"
#include "InstanceChannel.h"
#include "workspace/WorkspaceStore.h"

#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QQmlApplicationEngine>
#include <QQmlExtensionPlugin>
#include <QQuickStyle>
#include <QQuickWindow>
#include <QTranslator>
#include <QtWebEngineQuick>

#include <csignal>
#include <unistd.h>

Q_IMPORT_QML_PLUGIN(PagewellPlugin)
Q_IMPORT_QML_PLUGIN(Pagewell_EditorPlugin)

using namespace Qt::StringLiterals;

namespace {

// Whether the machine has a graphics device that renders (/dev/dri/renderD128 and the like).
bool hasRenderNode()
{
    return !QDir(u"/dev/dri"_s).entryList({u"renderD*"_s}, QDir::System).isEmpty();
}

} // namespace

int main(int argc, char *argv[])
{
    // Under a file-size limit a save must fail with an error the user is told about, not end the
    // process with SIGXFSZ.
    std::signal(SIGXFSZ, SIG_IGN);
    // Chromium refuses to run its sandbox as root.
    if (::geteuid() == 0 && qEnvironmentVariableIsEmpty("QTWEBENGINE_DISABLE_SANDBOX"))
        qputenv("QTWEBENGINE_DISABLE_SANDBOX", "1");
    // Without a graphics processor, OpenGL is Mesa's software rasterizer: some 50 MiB of code and
    // buffers in the process, to draw what Qt Quick's own software renderer draws with none.
    if (qEnvironmentVariableIsEmpty("QT_QUICK_BACKEND")
        && qEnvironmentVariableIsEmpty("QSG_RHI_BACKEND") && !hasRenderNode()) {
        qputenv("QT_QUICK_BACKEND", "software");
        qputenv("QT_XCB_GL_INTEGRATION", "none");
    }
    // A screen reader reads the editor's text only when the web engine shows its content to the
    // accessibility bus. Nothing is computed while no assistive technology listens, so it is on
    // by default (setting the variable to 0 turns it off).
    if (qEnvironmentVariableIsEmpty("QTWEBENGINE_ENABLE_LINUX_ACCESSIBILITY"))
        qputenv("QTWEBENGINE_ENABLE_LINUX_ACCESSIBILITY", "1");
    // The web engine compresses the large strings it keeps, such as a script's source, a few
    // seconds after their use. With zlib, a 10 MB document's start call kept a core busy for
    // most of a second after the document showed; snappy does it in a tenth of the time.
    if (qEnvironmentVariableIsEmpty("QTWEBENGINE_CHROMIUM_FLAGS"))
        qputenv("QTWEBENGINE_CHROMIUM_FLAGS", "--enable-features=UseSnappyForParkableStrings");
    QtWebEngineQuick::initialize();
    QGuiApplication app(argc, argv);
    // The spelling dictionaries ship beside the editor page; the web profile reads them when it
    // is made.
    if (qEnvironmentVariableIsEmpty("QTWEBENGINE_DICTIONARIES_PATH"))
        qputenv(
            "QTWEBENGINE_DICTIONARIES_PATH",
            QFile::encodeName(Coordinator::resourceDirectory() + u"/qtwebengine_dictionaries"_s));
    QGuiApplication::setOrganizationName(u"Pagewell"_s);
    QGuiApplication::setApplicationName(u"Pagewell"_s);
    QGuiApplication::setApplicationVersion(QStringLiteral(PAGEWELL_VERSION));
    // The desktop entry: Wayland finds the icon and the name through it.
    QGuiApplication::setDesktopFileName(u"org.pagewell.Pagewell"_s);

    // Qt's own dialogs speak French like the rest of the interface.
    QTranslator qtTranslator;
    if (qtTranslator.load(QLocale(QLocale::French), u"qt"_s, u"_"_s,
                          QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QGuiApplication::installTranslator(&qtTranslator);

    if (qEnvironmentVariableIsEmpty("QT_QUICK_CONTROLS_STYLE"))
        QQuickStyle::setStyle(u"Fusion"_s);

    // One Pagewell per session: a second start hands its request to the first and ends.
    InstanceChannel instances;
    const QStringList arguments = QGuiApplication::arguments();
    if (instances.handOver(AppDelegate::launchURL(arguments, QDir::currentPath())))
        return 0;
    instances.listen();

    // The store restores the last session as it is made, before anything named on the command
    // line replaces it.
    WorkspaceStore *store = WorkspaceStore::shared();
    AppDelegate delegate(store);
    // From here on the window follows the disk; drafts a month old, or of files gone, go.
    store->startWatching();
    store->drafts().removeStale();
    QObject::connect(&app, &QGuiApplication::applicationStateChanged, store,
                     [store](Qt::ApplicationState state) {
                         if (state == Qt::ApplicationActive)
                             store->applicationActivated();
                     });
    // The last second of typing reaches its draft before the process ends.
    QObject::connect(&app, &QCoreApplication::aboutToQuit, store, &WorkspaceStore::flushDraft);

    QQmlApplicationEngine engine;
    engine.addImportPath(u"qrc:/qt/qml"_s);
    // The window asks the delegate for update checks and shows its controller's answers.
    engine.setInitialProperties({{u"delegate"_s, QVariant::fromValue<QObject *>(&delegate)}});
    engine.load(QUrl(u"qrc:/qt/qml/Pagewell/PagewellApp.qml"_s));
    if (engine.rootObjects().isEmpty())
        return 1;
    auto *window = qobject_cast<QQuickWindow *>(engine.rootObjects().constFirst());
    const auto bringToFront = [window] {
        window->show();
        window->raise();
        window->requestActivate();
    };
    QObject::connect(&delegate, &AppDelegate::activationRequested, window, bringToFront);
    QObject::connect(&instances, &InstanceChannel::openRequested, &delegate,
                     [&delegate, bringToFront](const QUrl &url) {
                         if (!url.isEmpty())
                             delegate.handleOpenURL(url);
                         bringToFront();
                     });

    delegate.applicationDidFinishLaunching(arguments, UpdateController::configuredFeedURL());
    bringToFront();
    return QGuiApplication::exec();
}
