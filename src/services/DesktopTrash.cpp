#include "DesktopTrash.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QUrl>

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace DesktopTrash {

namespace {

std::optional<dev_t> deviceOf(const QString &path)
{
    struct stat st;
    if (::lstat(QFile::encodeName(path).constData(), &st) != 0)
        return std::nullopt;
    return st.st_dev;
}

QString homeTrash()
{
    QString data = qEnvironmentVariable("XDG_DATA_HOME");
    if (data.isEmpty() || !QDir::isAbsolutePath(data))
        data = QDir::homePath() + u"/.local/share"_s;
    return data + u"/Trash"_s;
}

// The top of the file system holding `path`: the last folder up on the same device.
QString topOf(const QString &path, dev_t device)
{
    QString top = QFileInfo(path).absolutePath();
    while (top != u"/"_s) {
        const QString up = QFileInfo(top).path();
        if (deviceOf(up) != device)
            break;
        top = up;
    }
    return top;
}

bool makePrivateFolder(const QString &path)
{
    if (::mkdir(QFile::encodeName(path).constData(), 0700) == 0 || errno == EEXIST) {
        struct stat st;
        return ::lstat(QFile::encodeName(path).constData(), &st) == 0 && S_ISDIR(st.st_mode);
    }
    return false;
}

bool prepare(const QString &trash)
{
    if (trash.section(u'/', 0, -2).isEmpty() || !QDir().mkpath(trash.section(u'/', 0, -2)))
        return false;
    return makePrivateFolder(trash) && makePrivateFolder(trash + u"/files"_s)
        && makePrivateFolder(trash + u"/info"_s);
}

// The trash that takes items of `path`'s file system, ready; empty when none can.
std::pair<QString, QString> trashFor(const QString &path)
{
    const std::optional<dev_t> device = deviceOf(path);
    if (!device)
        return {};
    const QString home = homeTrash();
    if (deviceOf(home.section(u'/', 0, -2)) == device || deviceOf(QDir::homePath()) == device) {
        // The home trash or none: an item of the home's file system never leaves it.
        return prepare(home) ? std::pair(home, QString()) : std::pair<QString, QString>();
    }
    const QString top = topOf(path, *device);
    const QString uid = QString::number(::getuid());
    // A trash the administrator made for everyone: sticky, not a link.
    struct stat st;
    const QString shared = (top == u"/"_s ? QString() : top) + u"/.Trash"_s;
    if (::lstat(QFile::encodeName(shared).constData(), &st) == 0 && S_ISDIR(st.st_mode)
        && (st.st_mode & S_ISVTX) && prepare(shared + u'/' + uid))
        return {shared + u'/' + uid, top};
    const QString own = (top == u"/"_s ? QString() : top) + u"/.Trash-"_s + uid;
    return prepare(own) ? std::pair(own, top) : std::pair<QString, QString>();
}

} // namespace

std::optional<Entry> put(const QString &path)
{
    const QString original = QFileInfo(path).absoluteFilePath();
    const auto [trash, top] = trashFor(original);
    if (trash.isEmpty())
        return std::nullopt;
    // The record holds the path from the top of its file system there, absolute at home.
    const QString recorded
        = top.isEmpty() || top == u"/"_s ? original : original.mid(top.size() + 1);
    const QByteArray record = "[Trash Info]\nPath=" + QUrl::toPercentEncoding(recorded, "/")
        + "\nDeletionDate="
        + QDateTime::currentDateTime().toString(u"yyyy-MM-ddTHH:mm:ss"_s).toUtf8() + '\n';
    const QString name = original.section(u'/', -1);
    for (int n = 1; n < 10000; ++n) {
        const QString unique = n == 1 ? name : u"%1.%2"_s.arg(name).arg(n);
        const QString info = trash + u"/info/"_s + unique + u".trashinfo"_s;
        const int fd = ::open(QFile::encodeName(info).constData(),
                              O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
        if (fd < 0) {
            if (errno == EEXIST)
                continue;
            return std::nullopt;
        }
        const bool written
            = ::write(fd, record.constData(), size_t(record.size())) == record.size();
        ::close(fd);
        const QString file = trash + u"/files/"_s + unique;
        if (written && !QFileInfo::exists(file)
            && ::rename(QFile::encodeName(original).constData(),
                        QFile::encodeName(file).constData())
                == 0)
            return Entry {original, file, info};
        QFile::remove(info);
        if (!written || QFileInfo::exists(file))
            continue;
        return std::nullopt;
    }
    return std::nullopt;
}

bool restore(const Entry &entry)
{
    if (QFileInfo::exists(entry.original) || QFileInfo(entry.original).isSymLink())
        return false;
    if (::rename(QFile::encodeName(entry.file).constData(),
                 QFile::encodeName(entry.original).constData())
        != 0)
        return false;
    QFile::remove(entry.info);
    return true;
}

} // namespace DesktopTrash
