#include "FileSystemService.h"

#include "NameCollator.h"
#include "TextFile.h"
#include "Utf8Text.h"
#include "WorkerPool.h"
#include "model/FileKind.h"
#include "model/FileUrl.h"

#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QSemaphore>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

struct Entry
{
    QString name;
    QByteArray nativeName;
    bool isDirectory;
};

// Folders are scanned on the calling thread and, whenever one is idle, on the scan pool's
// threads too: the call stays synchronous, but a large tree is read by every core. A subfolder
// goes to another thread only if one is free at that moment, so no scan ever waits for a queue.
Q_GLOBAL_STATIC(WorkerPool, scanPool)

class TreeScanner
{
public:
    explicit TreeScanner(const QList<QByteArray> &ignored) : m_ignored(ignored) { }

    // The folder's kept entries in display order: folders first, then names.
    std::vector<Entry> sortedEntries(const QByteArray &nativePath) const
    {
        std::vector<Entry> entries = list(nativePath);
        // ICU collators are not to be shared between threads: one per thread.
        static thread_local const NameCollator collator;
        std::stable_sort(entries.begin(), entries.end(), [](const Entry &a, const Entry &b) {
            if (a.isDirectory != b.isDirectory)
                return a.isDirectory;
            return collator.lessThan(a.name, b.name);
        });
        return entries;
    }

    QList<FileItem> load(const QString &path, const QByteArray &nativePath) const
    {
        const std::vector<Entry> entries = sortedEntries(nativePath);

        const size_t count = entries.size();
        std::vector<QString> paths(count);
        std::vector<QList<FileItem>> subtrees(count);
        QSemaphore finished;
        int elsewhere = 0;
        for (size_t i = 0; i < count; ++i) {
            paths[i] = FileUrl::joinPath(path, entries[i].name);
            if (!entries[i].isDirectory)
                continue;
            QByteArray childNative = nativePath;
            if (!childNative.endsWith('/'))
                childNative += '/';
            childNative += entries[i].nativeName;
            const auto scanChild = [this, &subtrees, &paths, &finished, i, childNative] {
                subtrees[i] = load(paths[i], childNative);
                finished.release();
            };
            if (scanPool->tryStart(scanChild))
                ++elsewhere;
            else
                subtrees[i] = load(paths[i], childNative);
        }
        finished.acquire(elsewhere);

        QList<FileItem> items;
        items.reserve(qsizetype(count));
        for (size_t i = 0; i < count; ++i) {
            if (entries[i].isDirectory)
                items.append(
                    FileItem::scannedFolder(paths[i], entries[i].name, std::move(subtrees[i])));
            else
                items.append(FileItem::scannedFile(paths[i], entries[i].name));
        }
        return items;
    }

private:
    bool isIgnored(const char *name, size_t length) const
    {
        for (const QByteArray &ignored : m_ignored) {
            if (size_t(ignored.size()) == length
                && std::memcmp(ignored.constData(), name, length) == 0)
                return true;
        }
        return false;
    }

    // The folder's direct entries. The type comes from d_type, which describes a symbolic link as
    // a link, never as its target, so links are never followed.
    std::vector<Entry> list(const QByteArray &nativePath) const
    {
        std::vector<Entry> entries;
        DIR *dir = ::opendir(nativePath.constData());
        if (!dir)
            return entries; // unreadable or vanished: an empty folder
        while (const dirent *e = ::readdir(dir)) {
            const char *name = e->d_name;
            // Hidden entries (and "." and "..") are never listed.
            if (name[0] == '.')
                continue;
            const size_t length = std::strlen(name);
            if (isIgnored(name, length))
                continue;
            // A name that is not UTF-8 has no exact text: decoded, it could equal another
            // entry's name and stand for that file. Such entries (and all below them) stay out.
            if (!Utf8Text::isValid(name, name + length))
                continue;
            bool isDirectory = e->d_type == DT_DIR;
            if (e->d_type == DT_UNKNOWN) {
                struct stat st;
                isDirectory = ::fstatat(::dirfd(dir), name, &st, AT_SYMLINK_NOFOLLOW) == 0
                    && S_ISDIR(st.st_mode);
            }
            QByteArray nativeName(name, qsizetype(length));
            entries.push_back({QFile::decodeName(nativeName), std::move(nativeName), isDirectory});
        }
        ::closedir(dir);
        return entries;
    }

    const QList<QByteArray> &m_ignored;
};

// Visits the files of a tree that `accepts` takes by name.
template<typename Accepts, typename Visit>
void forEachFile(const FileItem &item, const Accepts &accepts, const Visit &visit)
{
    if (item.isDirectory()) {
        for (const FileItem &child : item.children())
            forEachFile(child, accepts, visit);
    } else if (accepts(item.name())) {
        visit(item);
    }
}

template<typename Visit> void forEachDocument(const FileItem &item, const Visit &visit)
{
    forEachFile(
        item, [](QStringView name) { return FileKind::isSearched(name); }, visit);
}

// The names in an open folder, read through a second descriptor so `fd` stays usable.
int readNames(int fd, std::vector<QByteArray> &names)
{
    const int copy = ::openat(fd, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (copy < 0)
        return errno;
    DIR *dir = ::fdopendir(copy);
    if (!dir) {
        const int error = errno;
        ::close(copy);
        return error;
    }
    while (const dirent *e = ::readdir(dir)) {
        if (std::strcmp(e->d_name, ".") != 0 && std::strcmp(e->d_name, "..") != 0)
            names.emplace_back(e->d_name);
    }
    ::closedir(dir);
    return 0;
}

// Removes the file or folder at `path`, a folder with everything in it, never following a link.
// Keeps going past failures and reports the first one. Only the folder being emptied is held
// open, whatever the depth: going back up is done through "..", checked against the folder
// that was left, so a tree thousands of levels deep needs three descriptors, not thousands.
int removeTree(const char *path)
{
    struct stat st;
    if (::lstat(path, &st) != 0)
        return errno;
    if (!S_ISDIR(st.st_mode))
        return ::unlink(path) == 0 ? 0 : errno;

    struct Level
    {
        dev_t device;
        ino_t inode;
        QByteArray name; // in the level above
        std::vector<QByteArray> names;
        std::size_t next = 0;
    };
    int fd = ::open(path, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (fd < 0)
        return errno;
    int firstError = 0;
    const auto failed = [&firstError](int error) {
        if (error && !firstError)
            firstError = error;
    };
    std::vector<Level> levels;
    levels.push_back({st.st_dev, st.st_ino, {}, {}});
    failed(readNames(fd, levels.back().names));

    while (!levels.empty()) {
        Level &level = levels.back();
        if (level.next < level.names.size()) {
            const QByteArray name = std::move(level.names[level.next++]);
            struct stat entry;
            if (::fstatat(fd, name.constData(), &entry, AT_SYMLINK_NOFOLLOW) != 0) {
                failed(errno);
            } else if (!S_ISDIR(entry.st_mode)) {
                failed(::unlinkat(fd, name.constData(), 0) == 0 ? 0 : errno);
            } else {
                const int child = ::openat(fd, name.constData(),
                                           O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
                if (child < 0) {
                    failed(errno);
                    continue;
                }
                Level below {entry.st_dev, entry.st_ino, name, {}};
                failed(readNames(child, below.names));
                ::close(fd);
                fd = child;
                levels.push_back(std::move(below));
            }
            continue;
        }
        // This folder is as empty as it gets: remove it from the level above.
        if (levels.size() == 1) {
            ::close(fd);
            failed(::rmdir(path) == 0 ? 0 : errno);
            break;
        }
        const int parent = ::openat(fd, "..", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        const int openError = errno;
        ::close(fd);
        fd = parent;
        const Level &above = levels[levels.size() - 2];
        struct stat there;
        if (parent < 0 || ::fstat(parent, &there) != 0 || there.st_dev != above.device
            || there.st_ino != above.inode) {
            // The tree was moved while being removed: stop rather than delete elsewhere.
            failed(parent < 0 ? openError : ENOENT);
            if (parent >= 0)
                ::close(parent);
            break;
        }
        failed(::unlinkat(fd, level.name.constData(), AT_REMOVEDIR) == 0 ? 0 : errno);
        levels.pop_back();
    }
    return firstError;
}

} // namespace

FileSystemService::FileSystemService() : FileSystemService(defaultIgnoredNames()) { }

FileSystemService::FileSystemService(const QSet<QString> &ignoredFolderNames)
    : m_ignoredNames(ignoredFolderNames)
{
    for (const QString &name : ignoredFolderNames)
        m_ignoredNamesUtf8.append(QFile::encodeName(name));
}

QSet<QString> FileSystemService::defaultIgnoredNames()
{
    return {u".git"_s,    u".build"_s,       u".gemini"_s, u".claude"_s,
            u".vscode"_s, u"node_modules"_s, u"dist"_s,    u".idea"_s};
}

FileItem FileSystemService::scanDirectory(const QUrl &url) const
{
    const QString path = FileUrl::path(url);
    const QString name = FileUrl::lastPathComponent(url);
    // The folder the user opened is taken as it is, through a link if need be, and never
    // filtered by the hidden or ignored rules.
    struct stat st;
    const bool isDirectory
        = ::stat(QFile::encodeName(path).constData(), &st) == 0 && S_ISDIR(st.st_mode);
    if (!isDirectory)
        return FileItem(path, url, name, false);
    return FileItem(path, url, name, true, loadContents(path));
}

QList<FileItem> FileSystemService::loadContents(const QString &folderPath) const
{
    TreeScanner scanner(m_ignoredNamesUtf8);
    return scanner.load(folderPath, QFile::encodeName(folderPath));
}

namespace {

// The tree with the folders of `changed` listed again; every other node is the old one, shared.
// `spine` holds the folders above a changed one, whose children must be looked through.
FileItem patchTree(const TreeScanner &scanner, const FileItem &node, const QSet<QString> &changed,
                   const QSet<QString> &spine)
{
    if (!node.isDirectory())
        return node;
    const bool relist = changed.contains(node.id());
    if (!relist && !spine.contains(node.id()))
        return node;
    QList<FileItem> children;
    if (relist) {
        QHash<QString, const FileItem *> before;
        for (const FileItem &child : node.children())
            before.insert(child.name(), &child);
        const QByteArray nativePath = QFile::encodeName(node.id());
        for (const Entry &entry : scanner.sortedEntries(nativePath)) {
            const QString path = FileUrl::joinPath(node.id(), entry.name);
            if (!entry.isDirectory) {
                children.append(FileItem::scannedFile(path, entry.name));
                continue;
            }
            const FileItem *old = before.value(entry.name);
            if (old && old->isDirectory()) {
                children.append(patchTree(scanner, *old, changed, spine));
            } else {
                QByteArray childNative = nativePath;
                if (!childNative.endsWith('/'))
                    childNative += '/';
                childNative += entry.nativeName;
                children.append(
                    FileItem::scannedFolder(path, entry.name, scanner.load(path, childNative)));
            }
        }
    } else {
        children = node.children();
        for (FileItem &child : children) {
            if (child.isDirectory() && (changed.contains(child.id()) || spine.contains(child.id())))
                child = patchTree(scanner, child, changed, spine);
        }
    }
    FileItem patched = node;
    patched.setChildren(std::move(children));
    return patched;
}

} // namespace

FileItem FileSystemService::rescanFolders(const FileItem &root, const QSet<QString> &folders) const
{
    QSet<QString> changed;
    QSet<QString> spine;
    const QString prefix = root.id() + u'/';
    for (const QString &folder : folders) {
        if (folder != root.id() && !folder.startsWith(prefix))
            continue;
        changed.insert(folder);
        for (qsizetype slash = folder.lastIndexOf(u'/'); slash >= prefix.size() - 1;
             slash = folder.lastIndexOf(u'/', slash - 1)) {
            const QString above = folder.left(slash);
            if (spine.contains(above))
                break;
            spine.insert(above);
            if (slash == 0)
                break;
        }
    }
    if (changed.isEmpty())
        return root;
    const TreeScanner scanner(m_ignoredNamesUtf8);
    return patchTree(scanner, root, changed, spine);
}

QList<QUrl> FileSystemService::collectDocumentURLs(const FileItem &item) const
{
    QList<QUrl> urls;
    forEachDocument(item, [&urls](const FileItem &document) { urls.append(document.url()); });
    return urls;
}

QStringList FileSystemService::collectDocumentPaths(const FileItem &item) const
{
    QStringList paths;
    forEachDocument(item, [&paths](const FileItem &document) { paths.append(document.id()); });
    return paths;
}

QStringList FileSystemService::collectMarkdownPaths(const FileItem &item)
{
    QStringList paths;
    forEachFile(
        item, [](QStringView name) { return FileKind::isMarkdown(name); },
        [&paths](const FileItem &document) { paths.append(document.id()); });
    return paths;
}

QString FileSystemService::newFileName(const QString &name)
{
    // The naming of a new file, not the test of which names are documents: only ".md" and
    // ".markdown" typed as such are kept, anything else gets ".md".
    QString fileName = name.trimmed();
    if (!fileName.endsWith(u".md") && !fileName.endsWith(u".markdown"))
        fileName += u".md"_s;
    return fileName;
}

FileResult<QUrl> FileSystemService::createNewFile(const QUrl &folder, const QString &name) const
{
    const QString fileName = newFileName(name);
    const QString path = FileUrl::joinPath(FileUrl::path(folder), fileName);
    if (QFileInfo::exists(path) || QFileInfo(path).isSymLink())
        return {{}, FileError::fromErrno(EEXIST, path)};
    const QString title = QString(fileName).remove(u".md"_s, Qt::CaseSensitive);
    if (std::optional<FileError> error
        = TextFile::writeUtf8Atomically(path, u"# "_s + title + u"\n\n"_s))
        return {{}, std::move(error)};
    return {QUrl::fromLocalFile(path), std::nullopt};
}

std::optional<FileError> FileSystemService::deleteItem(const QUrl &url) const
{
    const QString path = FileUrl::path(url);
    const int error = removeTree(QFile::encodeName(path).constData());
    if (error)
        return FileError::fromErrno(error, path);
    return std::nullopt;
}
