#include "WorkspaceSession.h"

#include <QVariant>

namespace {

// A list of strings as the preferences file holds it. An INI file cannot tell a one-entry list
// from a plain string, so a string counts as a list of one.
QStringList stringList(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::QStringList:
        return value.toStringList();
    case QMetaType::QString:
        return {value.toString()};
    case QMetaType::QVariantList: {
        QStringList list;
        for (const QVariant &entry : value.toList()) {
            if (entry.typeId() != QMetaType::QString)
                return {};
            list.append(entry.toString());
        }
        return list;
    }
    default:
        return {};
    }
}

} // namespace

WorkspaceSession::WorkspaceSession(std::unique_ptr<QSettings> settings, QObject *parent)
    : QObject(parent),
      m_settings(std::move(settings)),
      m_recentFolderPaths(stringList(m_settings->value(recentsKey)))
{ }

QString WorkspaceSession::lastFolder() const
{
    return m_settings->value(lastFolderKey).toString();
}

QString WorkspaceSession::lastFile() const
{
    return m_settings->value(lastFileKey).toString();
}

void WorkspaceSession::rememberFolder(const QString &path)
{
    store(lastFolderKey, path);
    QStringList recents = m_recentFolderPaths;
    recents.removeAll(path);
    recents.prepend(path);
    if (recents.size() > maxRecentFolders)
        recents.resize(maxRecentFolders);
    setRecentFolderPaths(recents);
    store(recentsKey, recents);
}

void WorkspaceSession::rememberFile(const QString &path)
{
    store(lastFileKey, path);
}

bool WorkspaceSession::showSource() const
{
    return m_settings->value(showSourceKey, false).toBool();
}

void WorkspaceSession::rememberShowSource(bool shown)
{
    store(showSourceKey, shown);
}

void WorkspaceSession::clearRecentFolders()
{
    setRecentFolderPaths({});
    m_settings->remove(recentsKey);
    m_settings->sync();
}

void WorkspaceSession::store(const QString &key, const QVariant &value)
{
    m_settings->setValue(key, value);
    m_settings->sync();
}

void WorkspaceSession::setRecentFolderPaths(const QStringList &paths)
{
    m_recentFolderPaths = paths;
    Q_EMIT recentFolderPathsChanged();
}

void WorkspaceSession::replacePaths(const std::function<QString(const QString &)> &moved)
{
    QStringList recents = recentFolderPaths();
    for (QString &path : recents)
        path = moved(path);
    if (recents != recentFolderPaths()) {
        setRecentFolderPaths(recents);
        store(recentsKey, recents);
    }
    const QString file = lastFile();
    if (!file.isEmpty() && moved(file) != file)
        rememberFile(moved(file));
}
