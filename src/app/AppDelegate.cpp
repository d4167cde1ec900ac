#include "AppDelegate.h"

#include "model/FileUrl.h"
#include "workspace/WorkspaceStore.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QFileOpenEvent>
#include <QMouseEvent>
#include <QTimer>
#include <QWindow>

#include <utility>

AppDelegate::AppDelegate(WorkspaceStore *store, QObject *parent) : QObject(parent), m_store(store)
{
    if (QCoreApplication::instance())
        QCoreApplication::instance()->installEventFilter(this);
}

AppDelegate::~AppDelegate() = default;

QUrl AppDelegate::launchURL(const QStringList &arguments, const QString &workingDirectory)
{
    if (arguments.size() < 2 || arguments.at(1).startsWith(u'-') || arguments.at(1).isEmpty())
        return {};
    QString path = arguments.at(1);
    if (path == u"~" || path.startsWith(u"~/"))
        path.replace(0, 1, QDir::homePath());
    return QUrl::fromLocalFile(QDir(workingDirectory).absoluteFilePath(path));
}

void AppDelegate::applicationDidFinishLaunching(const QStringList &arguments,
                                                const QUrl &updateFeed)
{
    if (!updateFeed.isEmpty()) {
        m_updater = std::make_unique<UpdateController>(updateFeed,
                                                       QCoreApplication::applicationVersion());
        Q_EMIT updaterControllerChanged();
        m_updater->start();
    }
    const QUrl url = launchURL(arguments, QDir::currentPath());
    if (!url.isEmpty())
        handleOpenURL(url);
}

void AppDelegate::handleOpenURLs(const QList<QUrl> &urls)
{
    if (!urls.isEmpty())
        handleOpenURL(urls.first());
}

void AppDelegate::handleOpenURL(const QUrl &url)
{
    const QFileInfo info(FileUrl::path(url));
    if (!info.exists())
        return;
    if (info.isDir()) {
        m_store->openFolder(url);
        return;
    }
    m_store->openFolder(FileUrl::deletingLastPathComponent(url));
    m_store->openFile(url);
}

void AppDelegate::checkForUpdates()
{
    if (m_updater)
        m_updater->checkForUpdates();
}

bool AppDelegate::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::FileOpen) {
        // Several files opened at once arrive as one event each, in a row: they are gathered
        // and handled together, so the first counts, not the last.
        if (m_fileOpenBatch.isEmpty())
            QTimer::singleShot(0, this, [this] {
                handleOpenURLs(std::exchange(m_fileOpenBatch, {}));
                Q_EMIT activationRequested();
            });
        m_fileOpenBatch.append(static_cast<QFileOpenEvent *>(event)->url());
        return true;
    }
    // The mouse's back and forward buttons, anywhere in a window, the web view's text included.
    if (event->type() == QEvent::MouseButtonPress && qobject_cast<QWindow *>(watched)) {
        const Qt::MouseButton button = static_cast<QMouseEvent *>(event)->button();
        if (button == Qt::BackButton || button == Qt::ForwardButton) {
            if (button == Qt::BackButton)
                m_store->goBack();
            else
                m_store->goForward();
            return true;
        }
    }
    return QObject::eventFilter(watched, event);
}
