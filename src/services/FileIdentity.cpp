#include "FileIdentity.h"

#include <QFile>

#include <sys/stat.h>

FileIdentity FileIdentity::of(const QString &path)
{
    struct stat st;
    if (::stat(QFile::encodeName(path).constData(), &st) != 0)
        return {};
    return fromStat(st);
}

FileIdentity FileIdentity::fromStat(const struct stat &st)
{
    return {quint64(st.st_dev), quint64(st.st_ino), qint64(st.st_size),
            qint64(st.st_mtim.tv_sec) * 1'000'000'000 + st.st_mtim.tv_nsec};
}
