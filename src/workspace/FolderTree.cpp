#include "FolderTree.h"

#include "model/FileUrl.h"

#include <QFileInfo>

#include <utility>

FolderTree::FolderTree(QObject *parent) : QObject(parent) { }

void FolderTree::setRoot(const QUrl &url)
{
    m_rootURL = url;
    Q_EMIT rootURLChanged();
    m_pending = {};
    if (m_watcher)
        m_watcher->setRoot(FileUrl::path(url));
}

void FolderTree::reload()
{
    if (m_rootURL.isEmpty())
        return;
    // A whole scan reads every change reported until now: a rescan under way is stale.
    m_rescan.supersede();
    m_pending = {};
    setRootItem(m_fileSystem.scanDirectory(m_rootURL));
}

void FolderTree::refresh(const FolderWatcher::Changes &changes)
{
    if (!m_rootItem)
        return;
    m_pending.merge({changes.folders, {}, changes.everything});
    if (!m_rescan.isRunning())
        startRescan();
}

// One rescan at a time; changes reported meanwhile are read by the next one.
void FolderTree::startRescan()
{
    if (!m_rootItem || m_pending.isEmpty())
        return;
    m_rescan.start(
        [service = m_fileSystem, root = *m_rootItem, rootURL = m_rootURL,
         changes = std::exchange(m_pending, {})](const std::atomic_bool &) {
            return changes.everything ? service.scanDirectory(rootURL)
                                      : service.rescanFolders(root, changes.folders);
        },
        [this](const FileItem &tree) {
            if (m_rootItem && tree != *m_rootItem) {
                setRootItem(tree);
                Q_EMIT rescanned();
            }
            startRescan();
        });
}

void FolderTree::startWatching(int watchLimit, const QString &documentPath)
{
    m_watcher = std::make_unique<FolderWatcher>(m_fileSystem.ignoredFolderNames(), watchLimit);
    connect(m_watcher.get(), &FolderWatcher::changed, this,
            [this](const FolderWatcher::Changes &changes) {
                if (changes.everything || !changes.folders.isEmpty())
                    refresh(changes);
                Q_EMIT diskChanged(changes);
            });
    watchDocumentFolder(documentPath);
    if (!m_rootURL.isEmpty())
        m_watcher->setRoot(FileUrl::path(m_rootURL));
}

void FolderTree::watchDocumentFolder(const QString &documentPath)
{
    if (m_watcher && !documentPath.isEmpty())
        m_watcher->setExtraFolder(QFileInfo(documentPath).path());
}

void FolderTree::refreshIfLimited()
{
    if (m_watcher && m_watcher->isLimited())
        refresh({{}, {}, true});
}

void FolderTree::setRootItem(const std::optional<FileItem> &item)
{
    m_rootItem = item;
    Q_EMIT rootItemChanged();
}
