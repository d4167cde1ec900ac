#pragma once

#include "model/FileItem.h"
#include "services/FileSystemService.h"
#include "services/FolderWatcher.h"
#include "services/LatestRun.h"

#include <QObject>
#include <QUrl>

#include <memory>
#include <optional>

// The open folder and its tree, kept in step with the disk: once watching, the folders whose
// entries other programs change are read again away from the main thread, only those, and the
// new tree is published unless a whole scan replaced the one they were read from.
class FolderTree : public QObject
{
    Q_OBJECT

public:
    explicit FolderTree(QObject *parent = nullptr);

    const QUrl &rootURL() const { return m_rootURL; }
    const std::optional<FileItem> &rootItem() const { return m_rootItem; }
    const FileSystemService &fileSystem() const { return m_fileSystem; }
    const FolderWatcher *watcher() const { return m_watcher.get(); }

    // Another folder is open; its tree is read by reload().
    void setRoot(const QUrl &url);
    // The whole tree read again, here and now.
    void reload();
    // Reads the tree again where `changes` say, off the main thread.
    void refresh(const FolderWatcher::Changes &changes);

    // Follows the open folder on disk from now on (`watchLimit` caps the folders watched, 0 the
    // system's limit), and the folder of `documentPath` even when it lies outside.
    void startWatching(int watchLimit, const QString &documentPath);
    void watchDocumentFolder(const QString &documentPath);
    // Where not every folder can be watched, the tree is read again (the window came back).
    void refreshIfLimited();

Q_SIGNALS:
    void rootURLChanged();
    void rootItemChanged();
    // A rescan published a tree that differs from the one before.
    void rescanned();
    // What the watcher saw, for the document and the search as well as the tree.
    void diskChanged(const FolderWatcher::Changes &changes);

private:
    void setRootItem(const std::optional<FileItem> &item);
    void startRescan();

    const FileSystemService m_fileSystem;
    QUrl m_rootURL;
    std::optional<FileItem> m_rootItem;
    std::unique_ptr<FolderWatcher> m_watcher;
    FolderWatcher::Changes m_pending;
    LatestRun<FileItem> m_rescan {this};
};
