#include "FileSystemService.h"

#include "NameCollator.h"
#include "TextFile.h"
#include "WorkerPool.h"
#include "model/FileUrl.h"

#include <QFile>
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

    QList<FileItem> load(const QString &path, const QByteArray &nativePath) const
    {
        std::vector<Entry> entries = list(nativePath);
        // ICU collators are not to be shared between threads: one per thread.
        static thread_local const NameCollator collator;
        std::stable_sort(entries.begin(), entries.end(), [](const Entry &a, const Entry &b) {
            if (a.isDirectory != b.isDirectory)
                return a.isDirectory;
            return collator.lessThan(a.name, b.name);
        });

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

template<typename Visit> void forEachDocument(const FileItem &item, const Visit &visit)
{
    if (item.isDirectory()) {
        for (const FileItem &child : item.children())
            forEachDocument(child, visit);
    } else if (item.isMarkdown() || item.isSvgOrDiagram()) {
        visit(item);
    }
}

// Removes `name` inside the folder `parentFd`, recursing into real folders (never through a
// link). Keeps going past failures and reports the first one.
int removeTree(int parentFd, const char *name)
{
    struct stat st;
    if (::fstatat(parentFd, name, &st, AT_SYMLINK_NOFOLLOW) != 0)
        return errno;
    if (!S_ISDIR(st.st_mode))
        return ::unlinkat(parentFd, name, 0) == 0 ? 0 : errno;

    int firstError = 0;
    const int fd = ::openat(parentFd, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (fd < 0)
        return errno;
    if (DIR *dir = ::fdopendir(fd)) {
        std::vector<QByteArray> names;
        while (const dirent *e = ::readdir(dir)) {
            if (std::strcmp(e->d_name, ".") != 0 && std::strcmp(e->d_name, "..") != 0)
                names.emplace_back(e->d_name);
        }
        for (const QByteArray &child : names) {
            const int error = removeTree(::dirfd(dir), child.constData());
            if (error && !firstError)
                firstError = error;
        }
        ::closedir(dir);
    } else {
        firstError = errno;
        ::close(fd);
    }
    if (::unlinkat(parentFd, name, AT_REMOVEDIR) != 0 && !firstError)
        firstError = errno;
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

FileResult<QUrl> FileSystemService::createNewFile(const QUrl &folder, const QString &name) const
{
    QString fileName = name.trimmed();
    if (!fileName.endsWith(u".md") && !fileName.endsWith(u".markdown"))
        fileName += u".md"_s;
    const QString path = FileUrl::joinPath(FileUrl::path(folder), fileName);
    const QString title = QString(fileName).remove(u".md"_s, Qt::CaseSensitive);
    if (std::optional<FileError> error
        = TextFile::writeUtf8Atomically(path, u"# "_s + title + u"\n\n"_s))
        return {{}, std::move(error)};
    return {QUrl::fromLocalFile(path), std::nullopt};
}

std::optional<FileError> FileSystemService::deleteItem(const QUrl &url) const
{
    const QString path = FileUrl::path(url);
    const int error = removeTree(AT_FDCWD, QFile::encodeName(path).constData());
    if (error)
        return FileError::fromErrno(error, path);
    return std::nullopt;
}
