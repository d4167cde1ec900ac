#pragma once

#include "UpdateController.h"

#include <QObject>
#include <QStringList>
#include <QUrl>

#include <memory>

class WorkspaceStore;

// Opens what the user named when starting Pagewell, and what the system asks it to open later;
// owns the update controller.
class AppDelegate : public QObject
{
    Q_OBJECT
    // The window shows its answers; there is none while no update feed is set.
    Q_PROPERTY(
        UpdateController *updaterController READ updaterController NOTIFY updaterControllerChanged)

public:
    explicit AppDelegate(WorkspaceStore *store, QObject *parent = nullptr);
    ~AppDelegate() override;

    // The first argument after the program path, unless it is an option, names a folder, or a
    // file to open together with its folder; a leading tilde means the home folder, and a
    // relative path starts in `workingDirectory`. Empty when there is nothing to open.
    static QUrl launchURL(const QStringList &arguments, const QString &workingDirectory);

    // Launch work: the update controller when a feed is set, then the command line.
    void applicationDidFinishLaunching(const QStringList &arguments, const QUrl &updateFeed);
    // Only the first URL is opened.
    void handleOpenURLs(const QList<QUrl> &urls);
    // A folder opens as the workspace; a file opens its folder, then itself. A path that does
    // not exist changes nothing.
    void handleOpenURL(const QUrl &url);

    UpdateController *updaterController() const { return m_updater.get(); }

public Q_SLOTS:
    // "Vérifier les mises à jour...": nothing happens while there is no update controller.
    void checkForUpdates();

Q_SIGNALS:
    // The window is to come to the front: an open request arrived.
    void activationRequested();
    void updaterControllerChanged();

protected:
    // macOS hands files opened from the Finder over as file-open events.
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    WorkspaceStore *m_store;
    std::unique_ptr<UpdateController> m_updater;
    QList<QUrl> m_fileOpenBatch;
};
