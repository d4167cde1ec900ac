#include "AppDelegate.h"

#include "model/FileUrl.h"
#include "workspace/WorkspaceStore.h"

#include <QDir>
#include <QFileInfo>

void AppDelegate::handleLaunchArguments(const QStringList &arguments)
{
    if (arguments.size() < 2 || arguments.at(1).startsWith(u'-'))
        return;
    QString path = arguments.at(1);
    if (path == u"~" || path.startsWith(u"~/"))
        path.replace(0, 1, QDir::homePath());
    handleOpenURL(QUrl::fromLocalFile(QDir::current().absoluteFilePath(path)));
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
    // No update controller yet: the item does nothing.
}
