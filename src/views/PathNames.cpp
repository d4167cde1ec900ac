#include "PathNames.h"

#include "model/FileUrl.h"

#include <QUrl>

QString PathNames::lastComponent(const QString &path) const
{
    return FileUrl::lastPathComponent(QUrl::fromLocalFile(path));
}

QString PathNames::fromUrl(const QUrl &url) const
{
    return url.isEmpty() ? QString() : FileUrl::path(url);
}

QUrl PathNames::toUrl(const QString &path) const
{
    return QUrl::fromLocalFile(path);
}
