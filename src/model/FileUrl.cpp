#include "FileUrl.h"

#include <QFileInfo>

namespace FileUrl {

QUrl fromPath(const QString &path)
{
    return fromPath(path, QFileInfo(path).isDir());
}

QUrl fromPath(const QString &path, bool isDirectory)
{
    if (isDirectory && !path.endsWith(u'/'))
        return QUrl::fromLocalFile(path + u'/');
    return QUrl::fromLocalFile(path);
}

QString path(const QUrl &url)
{
    QString p = url.toLocalFile();
    while (p.size() > 1 && p.endsWith(u'/'))
        p.chop(1);
    return p;
}

bool isDirectoryUrl(const QUrl &url)
{
    return url.path().endsWith(u'/');
}

QString lastPathComponent(const QUrl &url)
{
    const QString p = path(url);
    if (p == u"/")
        return p;
    return p.mid(p.lastIndexOf(u'/') + 1);
}

QUrl deletingLastPathComponent(const QUrl &url)
{
    const QString p = path(url);
    const qsizetype slash = p.lastIndexOf(u'/');
    if (slash <= 0)
        return QUrl::fromLocalFile(QStringLiteral("/"));
    return QUrl::fromLocalFile(p.left(slash + 1));
}

QUrl appendingPathComponent(const QUrl &folder, const QString &name)
{
    return QUrl::fromLocalFile(joinPath(path(folder), name));
}

QString joinPath(const QString &parent, QStringView name)
{
    if (parent.endsWith(u'/'))
        return parent + name;
    return parent + u'/' + name;
}

} // namespace FileUrl
