#include "TextFile.h"

#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QStringDecoder>

#include <cerrno>
#include <climits>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace TextFile {

std::optional<QString> decodeUtf8(QByteArrayView bytes)
{
    // Stateless, so a sequence cut off at the end of the file counts as an error.
    QStringDecoder decoder(QStringDecoder::Utf8,
                           QStringDecoder::Flag::ConvertInitialBom
                               | QStringDecoder::Flag::Stateless);
    QString text = decoder.decode(bytes);
    if (decoder.hasError())
        return std::nullopt;
    return text;
}

FileResult<QString> readUtf8(const QString &path, FileIdentity *identity)
{
    const QFileInfo info(path);
    if (info.isDir())
        return {{}, FileError::fromErrno(EISDIR, path)};
    // Opening a named pipe would wait for a writer forever.
    if (info.exists() && !info.isFile())
        return {{}, FileError::notRegularFile(path)};
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {{}, FileError::fromDevice(file, path)};
    if (identity) {
        struct stat st;
        *identity = ::fstat(file.handle(), &st) == 0 ? FileIdentity::fromStat(st) : FileIdentity();
    }
    const QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError)
        return {{}, FileError::fromDevice(file, path)};
    std::optional<QString> text = decodeUtf8(bytes);
    if (!text)
        return {{}, FileError::invalidUtf8(path)};
    return {std::move(*text), std::nullopt};
}

namespace {

class FileDescriptor
{
public:
    explicit FileDescriptor(int fd = -1) : m_fd(fd) { }
    FileDescriptor(const FileDescriptor &) = delete;
    FileDescriptor &operator=(const FileDescriptor &) = delete;
    ~FileDescriptor()
    {
        if (m_fd >= 0)
            ::close(m_fd);
    }
    int get() const { return m_fd; }
    // Closes now: on some file systems the last error of a write only shows here.
    int close()
    {
        const int result = ::close(m_fd);
        m_fd = -1;
        return result == 0 || errno == EINTR ? 0 : errno;
    }

private:
    int m_fd;
};

// Every byte, or the error that stopped the write (a full disk, a quota, a size limit).
int writeAll(int fd, const char *data, std::size_t size)
{
    while (size > 0) {
        const ssize_t written = ::write(fd, data, size);
        if (written < 0) {
            if (errno == EINTR)
                continue;
            return errno;
        }
        if (written == 0)
            return EIO;
        data += written;
        size -= std::size_t(written);
    }
    return 0;
}

// The file a path names once symbolic links are followed, so that saving through a link writes
// the linked file and keeps the link. A link to a missing file names that file.
int resolveLinks(QByteArray &path)
{
    for (int hops = 0; hops < 40; ++hops) {
        struct stat st;
        if (::lstat(path.constData(), &st) != 0 || !S_ISLNK(st.st_mode))
            return 0;
        char target[PATH_MAX];
        const ssize_t length = ::readlink(path.constData(), target, sizeof target);
        if (length < 0)
            return errno;
        if (std::size_t(length) == sizeof target)
            return ENAMETOOLONG;
        QByteArray next(target, length);
        if (!next.startsWith('/'))
            next.prepend(path.left(path.lastIndexOf('/') + 1));
        path = std::move(next);
    }
    return ELOOP;
}

// A hidden name for the new text beside the target: the tree and the search never show
// dot names. It carries the target's name when that fits, so a person who finds one left by a
// crash knows what it was.
QByteArray temporaryName(const QByteArray &targetName)
{
    const QByteArray suffix = ".pagewell-"
        + QByteArray::number(QRandomGenerator::global()->generate64() & 0xFFFFFFFFFFFFull, 36);
    if (targetName.size() + suffix.size() + 1 <= NAME_MAX)
        return '.' + targetName + suffix;
    return suffix;
}

struct Target
{
    int folderFd;
    QByteArray name;
    const struct stat *existing; // the file being replaced, if any
    FileIdentity *written;
};

// Whether `entry` is a hidden temporary that a save of `targetName` made: ".NAME.pagewell-" and
// the random part, digits and lower-case letters.
bool isTemporaryOf(const char *entry, const QByteArray &targetName)
{
    const QByteArrayView name(entry);
    const QByteArrayView marker(".pagewell-");
    if (name.size() <= 1 + targetName.size() + marker.size() || name[0] != '.'
        || !name.sliced(1).startsWith(targetName)
        || !name.sliced(1 + targetName.size()).startsWith(marker))
        return false;
    for (const char c : name.sliced(1 + targetName.size() + marker.size())) {
        if (!((c >= '0' && c <= '9') || (c >= 'a' && c <= 'z')))
            return false;
    }
    return true;
}

// A save killed between naming its temporary and the rename leaves that hidden file beside the
// document; the next save of the document takes it away, so none stays in the user's folder.
void removeLeftoverTemporaries(int folderFd, const QByteArray &targetName)
{
    const int copy = ::openat(folderFd, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (copy < 0)
        return;
    DIR *dir = ::fdopendir(copy);
    if (!dir) {
        ::close(copy);
        return;
    }
    std::vector<QByteArray> leftovers;
    while (const dirent *e = ::readdir(dir)) {
        if (isTemporaryOf(e->d_name, targetName))
            leftovers.emplace_back(e->d_name);
    }
    ::closedir(dir);
    for (const QByteArray &leftover : leftovers)
        ::unlinkat(folderFd, leftover.constData(), 0);
}

constexpr int unnamedUnsupported = -1;

// Writes `bytes` to a new file in the target's folder, flushes it to the disk and renames it over
// the target. The new file has no name while it is written where the file system allows that
// (O_TMPFILE), so a crash leaves nothing behind; it is named, hidden, just before the rename.
int replace(const Target &target, QByteArrayView bytes, bool unnamed)
{
    QByteArray temporary;
    int fd;
    if (unnamed) {
        fd = ::openat(target.folderFd, ".", O_TMPFILE | O_WRONLY | O_CLOEXEC, 0666);
        if (fd < 0)
            return errno == EOPNOTSUPP || errno == EISDIR || errno == EINVAL ? unnamedUnsupported
                                                                             : errno;
    } else {
        // O_EXCL: a temporary left by an earlier crash is never written over.
        do {
            temporary = temporaryName(target.name);
            fd = ::openat(target.folderFd, temporary.constData(),
                          O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0666);
        } while (fd < 0 && errno == EEXIST);
        if (fd < 0)
            return errno;
    }
    FileDescriptor file(fd);
    const auto discard = [&](int error) {
        if (!temporary.isEmpty())
            ::unlinkat(target.folderFd, temporary.constData(), 0);
        return error;
    };

    if (int error = writeAll(fd, bytes.constData(), std::size_t(bytes.size())))
        return discard(error);
    if (target.existing) {
        // The replaced file keeps its permissions, and its owner when we may set it.
        if (::fchmod(fd, target.existing->st_mode & 07777) != 0)
            return discard(errno);
        struct stat mine;
        if (::fstat(fd, &mine) == 0
            && (mine.st_uid != target.existing->st_uid || mine.st_gid != target.existing->st_gid)) {
            // Only root may give a file away; anyone else's save makes the file their own, as
            // with any editor that saves by replacing.
            const int owned = ::fchown(fd, target.existing->st_uid, target.existing->st_gid);
            Q_UNUSED(owned)
        }
    }
    // The text is on the disk before its name is: a power cut leaves the old or the new text.
    if (::fsync(fd) != 0)
        return discard(errno);
    if (target.written) {
        struct stat st;
        *target.written = ::fstat(fd, &st) == 0 ? FileIdentity::fromStat(st) : FileIdentity();
    }

    if (unnamed) {
        const QByteArray self = "/proc/self/fd/" + QByteArray::number(fd);
        int linked;
        do {
            temporary = temporaryName(target.name);
            linked = ::linkat(AT_FDCWD, self.constData(), target.folderFd, temporary.constData(),
                              AT_SYMLINK_FOLLOW);
        } while (linked != 0 && errno == EEXIST);
        if (linked != 0) {
            temporary.clear();
            return unnamedUnsupported; // no /proc: write again under a name
        }
    }
    if (int error = file.close())
        return discard(error);
    if (::renameat(target.folderFd, temporary.constData(), target.folderFd, target.name.constData())
        != 0)
        return discard(errno);
    // The rename itself reaches the disk with the folder. It is done either way: a folder that
    // cannot be flushed is no reason to call the save failed.
    ::fsync(target.folderFd);
    return 0;
}

} // namespace

std::optional<FileError> writeUtf8Atomically(const QString &path, const QString &text,
                                             Temporary temporary, FileIdentity *written)
{
    return writeAtomically(path, text.toUtf8(), temporary, written);
}

GuardedWrite writeUtf8IfUnchanged(const QString &path, const QString &text,
                                  const FileIdentity &expected, FileIdentity *written)
{
    if (FileIdentity::of(path) != expected)
        return {true, std::nullopt};
    return {false, writeUtf8Atomically(path, text, Temporary::UnnamedWherePossible, written)};
}

std::optional<FileError> writeAtomically(const QString &path, QByteArrayView bytes,
                                         Temporary temporary, FileIdentity *written)
{
    QByteArray nativePath = QFile::encodeName(path);
    if (int error = resolveLinks(nativePath))
        return FileError::fromErrno(error, path);
    const qsizetype slash = nativePath.lastIndexOf('/');
    const QByteArray folder
        = slash < 0 ? QByteArray(".") : (slash == 0 ? QByteArray("/") : nativePath.left(slash));
    const QByteArray name = nativePath.mid(slash + 1);
    if (name.isEmpty())
        return FileError::fromErrno(EISDIR, path);

    const FileDescriptor folderFd(::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (folderFd.get() < 0)
        return FileError::fromErrno(errno, path);
    struct stat existing;
    const bool exists = ::fstatat(folderFd.get(), name.constData(), &existing, 0) == 0;
    if (exists) {
        if (S_ISDIR(existing.st_mode))
            return FileError::fromErrno(EISDIR, path);
        if (!S_ISREG(existing.st_mode))
            return FileError::notRegularFile(path);
        // Replacing the file would work in a writable folder, but a file the user made
        // read-only is not to be written.
        if (::faccessat(folderFd.get(), name.constData(), W_OK, AT_EACCESS) != 0)
            return errno == EACCES ? FileError::readOnlyFile(path)
                                   : FileError::fromErrno(errno, path);
    }

    const Target target {folderFd.get(), name, exists ? &existing : nullptr, written};
    int error = temporary == Temporary::UnnamedWherePossible ? replace(target, bytes, true)
                                                             : unnamedUnsupported;
    if (error == unnamedUnsupported)
        error = replace(target, bytes, false);
    if (error)
        return FileError::fromErrno(error, path);
    removeLeftoverTemporaries(folderFd.get(), name);
    return std::nullopt;
}

} // namespace TextFile
