#pragma once

#include <QNetworkAccessManager>
#include <QObject>
#include <QString>
#include <QTimer>
#include <QUrl>

#include <optional>

// Software updates: reads the appcast at the feed URL (RSS items with sparkle:version, the
// enclosure and a release-notes link) in the background at start and every 24 hours, and when the
// user asks. Only made when a feed URL is set, at build time or in PAGEWELL_UPDATE_FEED.
class UpdateController : public QObject
{
    Q_OBJECT

public:
    struct Release
    {
        QString version; // sparkle:version, compared segment by segment
        QString displayVersion; // sparkle:shortVersionString, else the version
        QUrl downloadURL; // the enclosure
        QUrl releaseNotesURL; // sparkle:releaseNotesLink, else the item's link
    };

    UpdateController(const QUrl &feedURL, const QString &currentVersion, QObject *parent = nullptr);

    // The feed set in the environment, else the one the build was made with; empty for none.
    static QUrl configuredFeedURL();
    // The newest release of an appcast; nothing when the feed cannot be read or lists none.
    static std::optional<Release> newestRelease(const QByteArray &appcast,
                                                QString *error = nullptr);
    // Below 0, 0 or above 0 as `a` is older than, the same as or newer than `b`. Numbers compare
    // as numbers ("1.10" > "1.9"), a missing segment counts as 0, and a pre-release suffix
    // ("2.0b1", "2.0-rc.1") comes before the release it leads to.
    static int compareVersions(const QString &a, const QString &b);

    QUrl feedURL() const { return m_feedURL; }
    // Starts the background checks: one now, then every 24 hours.
    void start();
    // "Vérifier les mises à jour...": a check whose outcome is always told.
    void checkForUpdates();

Q_SIGNALS:
    // The outcome for the user, in French. `downloadURL` is set when there is something to get.
    void answered(const QString &title, const QString &message, const QUrl &downloadURL);

private:
    void check(bool userAsked);

    QUrl m_feedURL;
    QString m_currentVersion;
    QNetworkAccessManager m_network;
    QTimer m_timer;
    bool m_checking = false;
};
