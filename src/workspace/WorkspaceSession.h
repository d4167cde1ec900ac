#pragma once

#include <QObject>
#include <QSettings>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>

// What the application remembers between launches, in the preferences store: the recent
// folders (most recent first, at most ten), the last folder and the last file, and whether
// documents are shown as source. Each write is
// synced at once, so the session survives a crash or a killed process.
class WorkspaceSession : public QObject
{
    Q_OBJECT

public:
    static inline const QString recentsKey = QStringLiteral("Pagewell.RecentFolders");
    static inline const QString lastFolderKey = QStringLiteral("Pagewell.LastFolder");
    static inline const QString lastFileKey = QStringLiteral("Pagewell.LastFile");
    static inline const QString showSourceKey = QStringLiteral("Pagewell.ShowSource");
    static constexpr int maxRecentFolders = 10;

    explicit WorkspaceSession(std::unique_ptr<QSettings> settings, QObject *parent = nullptr);

    const QStringList &recentFolderPaths() const { return m_recentFolderPaths; }
    QString lastFolder() const;
    QString lastFile() const;

    // `path` is the last folder and the most recent one.
    void rememberFolder(const QString &path);
    void rememberFile(const QString &path);
    // Whether documents show every line as written ("Afficher la source"); false when unset.
    bool showSource() const;
    void rememberShowSource(bool shown);
    // The recent folders and the last file follow a renamed or moved item.
    void replacePaths(const std::function<QString(const QString &)> &moved);
    void clearRecentFolders();

Q_SIGNALS:
    void recentFolderPathsChanged();

private:
    void store(const QString &key, const QVariant &value);
    void setRecentFolderPaths(const QStringList &paths);

    std::unique_ptr<QSettings> m_settings;
    QStringList m_recentFolderPaths;
};
