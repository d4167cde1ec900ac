#include "FolderWatcher.h"

#include "Utf8Text.h"

#include <QFile>
#include <QHash>
#include <QSocketNotifier>
#include <QTimer>

#include <cerrno>
#include <cstring>
#include <deque>
#include <dirent.h>
#include <fcntl.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

void FolderWatcher::Changes::merge(const Changes &other)
{
    folders.unite(other.folders);
    files.unite(other.files);
    everything = everything || other.everything;
}

// Lives on the watcher's thread: the inotify descriptor, the watches and the batch being
// gathered.
class FolderWatcher::Worker : public QObject
{
public:
    Worker(const QSet<QString> &ignoredNames, int watchLimit, FolderWatcher *owner)
        : m_owner(owner), m_watchLimit(watchLimit)
    {
        for (const QString &name : ignoredNames)
            m_ignored.append(QFile::encodeName(name));
    }

    ~Worker() override
    {
        if (m_fd >= 0)
            ::close(m_fd);
    }

    void start()
    {
        m_fd = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
        if (m_fd < 0) {
            qWarning("Pagewell: no inotify (%s); the folder is not watched", std::strerror(errno));
            return;
        }
        m_notifier = new QSocketNotifier(m_fd, QSocketNotifier::Read, this);
        connect(m_notifier, &QSocketNotifier::activated, this, [this] { readEvents(); });
        m_flush = new QTimer(this);
        m_flush->setSingleShot(true);
        m_flush->setInterval(FolderWatcher::coalescingMs);
        connect(m_flush, &QTimer::timeout, this, [this] { flush(); });
    }

    void setRoot(const QString &root)
    {
        forgetAll();
        m_root = QFile::encodeName(root);
        m_limited = false;
        m_pending = {};
        if (m_fd >= 0 && !m_root.isEmpty()) {
            addTree(m_root, true);
            if (!m_extra.isEmpty() && !m_wds.contains(m_extra))
                addWatch(m_extra, false);
        }
        const int count = int(m_paths.size());
        const bool limited = m_limited;
        QMetaObject::invokeMethod(m_owner, [owner = m_owner, count, limited] {
            owner->m_watchCount = count;
            owner->m_limited = limited;
            Q_EMIT owner->ready(count, limited);
        });
    }

    void setExtraFolder(const QString &folder)
    {
        const QByteArray path = QFile::encodeName(folder);
        if (path == m_extra)
            return;
        const auto previous = m_wds.constFind(m_extra);
        if (previous != m_wds.cend() && !m_paths.value(previous.value()).recursive)
            removeWatch(m_extra);
        m_extra = path;
        if (m_fd >= 0 && !m_extra.isEmpty() && !m_wds.contains(m_extra))
            addWatch(m_extra, false);
    }

private:
    static constexpr uint32_t folderMask = IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO
        | IN_MODIFY | IN_CLOSE_WRITE | IN_ATTRIB | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR
        | IN_EXCL_UNLINK;

    // A name the tree would show: not hidden, not ignored, UTF-8.
    bool isShown(const char *name, size_t length) const
    {
        if (length == 0 || name[0] == '.')
            return false;
        for (const QByteArray &ignored : m_ignored) {
            if (size_t(ignored.size()) == length
                && std::memcmp(ignored.constData(), name, length) == 0)
                return false;
        }
        return Utf8Text::isValid(name, name + length);
    }

    bool addWatch(const QByteArray &path, bool recursive)
    {
        if (m_watchLimit > 0 && int(m_paths.size()) >= m_watchLimit) {
            m_limited = true;
            return false;
        }
        // The root may be a link; folders inside the tree never are followed.
        const uint32_t mask = folderMask | (path == m_root ? 0 : IN_DONT_FOLLOW);
        const int wd = ::inotify_add_watch(m_fd, path.constData(), mask);
        if (wd < 0) {
            if (errno == ENOSPC)
                m_limited = true;
            return false;
        }
        const auto known = m_paths.constFind(wd);
        if (known != m_paths.cend() && known->path != path)
            m_wds.remove(known->path); // the same folder under a new name
        m_paths.insert(wd, {path, recursive});
        m_wds.insert(path, wd);
        return true;
    }

    void removeWatch(const QByteArray &path)
    {
        const auto found = m_wds.find(path);
        if (found == m_wds.end())
            return;
        ::inotify_rm_watch(m_fd, found.value());
        m_paths.remove(found.value());
        m_wds.erase(found);
    }

    // `path` and the shown folders below it, nearest first, so that at the limit the folders a
    // person sees first are the ones watched. A folder is watched before it is listed: an entry
    // made meanwhile shows as an event.
    void addTree(const QByteArray &top, bool isRoot)
    {
        std::deque<QByteArray> queue {top};
        bool first = isRoot;
        while (!queue.empty() && !m_limited) {
            const QByteArray path = std::move(queue.front());
            queue.pop_front();
            if (!addWatch(path, true) && first)
                return;
            first = false;
            DIR *dir = ::opendir(path.constData());
            if (!dir)
                continue;
            while (const dirent *e = ::readdir(dir)) {
                const size_t length = std::strlen(e->d_name);
                if (!isShown(e->d_name, length))
                    continue;
                bool isDirectory = e->d_type == DT_DIR;
                if (e->d_type == DT_UNKNOWN) {
                    struct stat st;
                    isDirectory = ::fstatat(::dirfd(dir), e->d_name, &st, AT_SYMLINK_NOFOLLOW) == 0
                        && S_ISDIR(st.st_mode);
                }
                if (isDirectory)
                    queue.push_back(path + '/' + QByteArrayView(e->d_name, qsizetype(length)));
            }
            ::closedir(dir);
        }
    }

    void removeTree(const QByteArray &top)
    {
        const QByteArray prefix = top + '/';
        QList<QByteArray> gone;
        for (auto it = m_wds.cbegin(); it != m_wds.cend(); ++it) {
            if ((it.key() == top || it.key().startsWith(prefix)) && it.key() != m_extra)
                gone.append(it.key());
        }
        for (const QByteArray &path : gone)
            removeWatch(path);
    }

    void forgetAll()
    {
        for (auto it = m_paths.cbegin(); it != m_paths.cend(); ++it)
            ::inotify_rm_watch(m_fd, it.key());
        m_paths.clear();
        m_wds.clear();
    }

    void readEvents()
    {
        alignas(inotify_event) char buffer[64 * 1024];
        for (;;) {
            const ssize_t length = ::read(m_fd, buffer, sizeof buffer);
            if (length <= 0)
                break;
            for (const char *p = buffer; p < buffer + length;) {
                const auto *event = reinterpret_cast<const inotify_event *>(p);
                handle(*event);
                p += sizeof(inotify_event) + event->len;
            }
        }
        if (!m_pending.isEmpty() && !m_flush->isActive())
            m_flush->start();
    }

    void handle(const inotify_event &event)
    {
        if (event.mask & IN_Q_OVERFLOW) {
            m_pending.everything = true;
            return;
        }
        const auto watched = m_paths.constFind(event.wd);
        if (watched == m_paths.cend())
            return;
        const QByteArray folder = watched->path;
        const bool recursive = watched->recursive;
        if (event.mask & IN_IGNORED) {
            m_wds.remove(folder);
            m_paths.remove(event.wd);
            return;
        }
        if (event.mask & (IN_DELETE_SELF | IN_MOVE_SELF)) {
            if (folder == m_root)
                m_pending.everything = true;
            return;
        }
        const size_t nameLength = event.len ? std::strlen(event.name) : 0;
        if (nameLength == 0)
            return;
        const QByteArray path = folder + '/' + QByteArrayView(event.name, qsizetype(nameLength));
        const QString decoded = QFile::decodeName(path);
        // A hidden entry changes no list the tree shows, but it may be the open document.
        m_pending.files.insert(decoded);
        if (!isShown(event.name, nameLength) || !(recursive || folder == m_root))
            return;
        const bool isDirectory = event.mask & IN_ISDIR;
        if (event.mask & (IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO))
            m_pending.folders.insert(QFile::decodeName(folder));
        if (isDirectory && (event.mask & (IN_DELETE | IN_MOVED_FROM)))
            removeTree(path);
        if (isDirectory && (event.mask & (IN_CREATE | IN_MOVED_TO)) && !m_limited)
            addTree(path, false);
    }

    void flush()
    {
        Changes changes = std::move(m_pending);
        m_pending = {};
        // Lost events may hide new folders: watch what is there now.
        if (changes.everything && !m_root.isEmpty() && !m_limited)
            addTree(m_root, true);
        QMetaObject::invokeMethod(m_owner, [owner = m_owner, changes = std::move(changes)] {
            Q_EMIT owner->changed(changes);
        });
    }

    struct Watch
    {
        QByteArray path;
        bool recursive;
    };

    FolderWatcher *const m_owner;
    const int m_watchLimit;
    QList<QByteArray> m_ignored;
    int m_fd = -1;
    QSocketNotifier *m_notifier = nullptr;
    QTimer *m_flush = nullptr;
    QByteArray m_root;
    QByteArray m_extra;
    QHash<int, Watch> m_paths;
    QHash<QByteArray, int> m_wds;
    Changes m_pending;
    bool m_limited = false;
};

FolderWatcher::FolderWatcher(const QSet<QString> &ignoredNames, int watchLimit, QObject *parent)
    : QObject(parent), m_worker(new Worker(ignoredNames, watchLimit, this))
{
    m_thread.setObjectName(QStringLiteral("FolderWatcher"));
    m_worker->moveToThread(&m_thread);
    connect(&m_thread, &QThread::finished, m_worker, &QObject::deleteLater);
    m_thread.start();
    QMetaObject::invokeMethod(m_worker, [worker = m_worker] { worker->start(); });
}

FolderWatcher::~FolderWatcher()
{
    m_thread.quit();
    m_thread.wait();
}

void FolderWatcher::setRoot(const QString &root)
{
    QMetaObject::invokeMethod(m_worker, [worker = m_worker, root] { worker->setRoot(root); });
}

void FolderWatcher::setExtraFolder(const QString &folder)
{
    QMetaObject::invokeMethod(m_worker,
                              [worker = m_worker, folder] { worker->setExtraFolder(folder); });
}
