#pragma once

#include <QString>
#include <QUrl>

// File URLs follow one convention throughout Pagewell: a URL made from the path of an existing
// folder ends with a slash (a "directory URL"), while the path of any URL is given without one.
namespace FileUrl {

// The URL of `path`; a trailing slash is added when an existing folder is there.
QUrl fromPath(const QString &path);
// The URL of `path` when its kind is already known (no disk access).
QUrl fromPath(const QString &path, bool isDirectory);
// The absolute path of a file URL, without a trailing slash ("/" stays "/").
QString path(const QUrl &url);
// True when the URL's path ends with a slash, as the URL of an existing folder does.
bool isDirectoryUrl(const QUrl &url);
QString lastPathComponent(const QUrl &url);
// The parent folder's URL, as a directory URL.
QUrl deletingLastPathComponent(const QUrl &url);
QUrl appendingPathComponent(const QUrl &folder, const QString &name);
// `parent` + "/" + `name`, without doubling the slash of the root folder.
QString joinPath(const QString &parent, QStringView name);

} // namespace FileUrl
