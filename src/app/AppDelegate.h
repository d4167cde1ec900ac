#pragma once

#include <QObject>
#include <QStringList>
#include <QUrl>

class WorkspaceStore;

// Opens what the user named when starting Pagewell, and what the system asks it to open later.
class AppDelegate : public QObject
{
    Q_OBJECT

public:
    explicit AppDelegate(WorkspaceStore *store) : m_store(store) { }

    // The first argument after the program path, unless it is an option, names a folder, or a
    // file to open together with its folder. A leading tilde means the home folder.
    void handleLaunchArguments(const QStringList &arguments);
    // Only the first URL is opened.
    void handleOpenURLs(const QList<QUrl> &urls);
    void handleOpenURL(const QUrl &url);

public Q_SLOTS:
    // "Vérifier les mises à jour...": nothing happens while there is no update controller.
    void checkForUpdates();

private:
    WorkspaceStore *m_store;
};
