#pragma once

#include <QObject>
#include <QSet>
#include <QString>
#include <QThread>

#include <memory>

// Watches the open folder and every folder below it that the tree shows (the same hidden and
// ignored names are left out), with inotify, on a thread of its own: set-up, events and the
// watches of folders made later never touch the caller's thread. Events are gathered for about
// 100 ms and handed over together, on the thread that made the watcher.
//
// Where the system's limit of watches is reached, the folders nearest the root are watched
// (breadth first) and `isLimited()` says that the rest is not.
class FolderWatcher : public QObject
{
    Q_OBJECT

public:
    struct Changes
    {
        // Folders whose list of entries changed (an entry made, removed or renamed).
        QSet<QString> folders;
        // Files whose entry or content changed.
        QSet<QString> files;
        // Events were lost (the queue overflowed, the root moved): anything may have changed.
        bool everything = false;

        bool isEmpty() const { return folders.isEmpty() && files.isEmpty() && !everything; }
        void merge(const Changes &other);
    };

    // `watchLimit` caps the number of watches below the system's own limit (0: none).
    explicit FolderWatcher(const QSet<QString> &ignoredNames, int watchLimit = 0,
                           QObject *parent = nullptr);
    ~FolderWatcher() override;

    // Watches `root` and the folders below it, forgetting the previous root; empty: nothing.
    void setRoot(const QString &root);
    // One more folder, not its subfolders: where an open document outside the tree lives.
    void setExtraFolder(const QString &folder);

    // Whether the last set-up stopped at the limit of watches.
    bool isLimited() const { return m_limited; }
    int watchCount() const { return m_watchCount; }

    static constexpr int coalescingMs = 100;

Q_SIGNALS:
    void changed(const FolderWatcher::Changes &changes);
    // The watches of a root are all set up.
    void ready(int watchCount, bool limited);

private:
    class Worker;
    QThread m_thread;
    Worker *m_worker;
    bool m_limited = false;
    int m_watchCount = 0;
};

Q_DECLARE_METATYPE(FolderWatcher::Changes)
