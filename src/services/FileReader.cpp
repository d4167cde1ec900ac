#include "FileReader.h"

#include <QFile>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

FileReader::~FileReader()
{
    if (m_folderFd >= 0)
        ::close(m_folderFd);
}

std::optional<std::string_view> FileReader::read(const QString &path)
{
    const qsizetype slash = path.lastIndexOf(u'/');
    const QStringView folder = QStringView(path).left(slash + 1);
    if (folder != m_folder) {
        if (m_folderFd >= 0)
            ::close(m_folderFd);
        m_folder = folder.toString();
        m_folderFd
            = ::open(QFile::encodeName(m_folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    }
    const QByteArray name = QFile::encodeName(path.mid(slash + 1));
    const int fd = m_folderFd >= 0
        ? ::openat(m_folderFd, name.constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)
        : ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (fd < 0)
        return std::nullopt;
    struct stat st;
    if (::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
        ::close(fd);
        return std::nullopt;
    }
    m_identity = FileIdentity::fromStat(st);
    std::size_t size = 0;
    reserve(std::size_t(st.st_size) + 1);
    for (;;) {
        const ssize_t n = ::read(fd, m_buffer.get() + size, m_capacity - size);
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0) {
            ::close(fd);
            return std::nullopt;
        }
        if (n == 0)
            break;
        size += std::size_t(n);
        if (size == m_capacity)
            reserve(m_capacity * 2); // the file grew while being read
    }
    ::close(fd);
    return std::string_view(m_buffer.get(), size);
}

void FileReader::reserve(std::size_t capacity)
{
    if (capacity <= m_capacity)
        return;
    capacity = std::max(capacity, std::size_t(256 * 1024));
    // Not value-initialised: a read overwrites what it uses.
    auto bigger = std::unique_ptr<char[]>(new char[capacity]);
    if (m_buffer)
        std::memcpy(bigger.get(), m_buffer.get(), m_capacity);
    m_buffer = std::move(bigger);
    m_capacity = capacity;
}
