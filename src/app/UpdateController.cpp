#include "UpdateController.h"

#include <QNetworkReply>
#include <QRegularExpression>
#include <QXmlStreamReader>

using namespace Qt::StringLiterals;

namespace {

constexpr auto sparkleNamespace = "http://www.andymatuschak.org/xml-namespaces/sparkle";

// "2.0b1" -> numbers {2, 0} and suffix "b1"; "2.0-rc.1" -> {2, 0} and "rc.1".
struct Version
{
    QList<qlonglong> numbers;
    QString suffix;
};

Version parse(const QString &text)
{
    static const QRegularExpression leading(u"^[vV]?((?:\\d+)(?:\\.\\d+)*)(.*)$"_s);
    const QRegularExpressionMatch match = leading.match(text.trimmed());
    Version version;
    if (!match.hasMatch()) {
        version.suffix = text.trimmed();
        return version;
    }
    for (const QString &part : match.captured(1).split(u'.'))
        version.numbers.append(part.toLongLong());
    version.suffix = match.captured(2);
    while (version.suffix.startsWith(u'-') || version.suffix.startsWith(u'.'))
        version.suffix.remove(0, 1);
    return version;
}

} // namespace

UpdateController::UpdateController(const QUrl &feedURL, const QString &currentVersion,
                                   QObject *parent)
    : QObject(parent), m_feedURL(feedURL), m_currentVersion(currentVersion)
{
    m_timer.setInterval(std::chrono::hours(24));
    connect(&m_timer, &QTimer::timeout, this, [this] { check(false); });
}

QUrl UpdateController::configuredFeedURL()
{
    const QString fromEnvironment = qEnvironmentVariable("PAGEWELL_UPDATE_FEED");
    if (!fromEnvironment.isEmpty())
        return QUrl(fromEnvironment);
#ifdef PAGEWELL_UPDATE_FEED
    return QUrl(QStringLiteral(PAGEWELL_UPDATE_FEED));
#else
    return {};
#endif
}

int UpdateController::compareVersions(const QString &a, const QString &b)
{
    const Version x = parse(a);
    const Version y = parse(b);
    for (qsizetype i = 0; i < std::max(x.numbers.size(), y.numbers.size()); ++i) {
        const qlonglong p = x.numbers.value(i, 0);
        const qlonglong q = y.numbers.value(i, 0);
        if (p != q)
            return p < q ? -1 : 1;
    }
    // Same numbers: a release is newer than any pre-release of it.
    if (x.suffix.isEmpty() != y.suffix.isEmpty())
        return x.suffix.isEmpty() ? 1 : -1;
    const int order = QString::compare(x.suffix, y.suffix, Qt::CaseInsensitive);
    return order < 0 ? -1 : (order > 0 ? 1 : 0);
}

std::optional<UpdateController::Release> UpdateController::newestRelease(const QByteArray &appcast,
                                                                         QString *error)
{
    QXmlStreamReader xml(appcast);
    std::optional<Release> newest;
    std::optional<Release> item;
    const QString sparkle = QString::fromLatin1(sparkleNamespace);
    while (!xml.atEnd()) {
        xml.readNext();
        if (xml.isStartElement()) {
            const QStringView name = xml.name();
            const bool isSparkle = xml.namespaceUri() == sparkle;
            if (name == u"item" && !isSparkle) {
                item = Release();
            } else if (item && name == u"enclosure") {
                const QXmlStreamAttributes attributes = xml.attributes();
                item->downloadURL = QUrl(attributes.value(u"url"_s).toString());
                if (attributes.hasAttribute(sparkle, u"version"_s))
                    item->version = attributes.value(sparkle, u"version"_s).toString();
                if (attributes.hasAttribute(sparkle, u"shortVersionString"_s))
                    item->displayVersion
                        = attributes.value(sparkle, u"shortVersionString"_s).toString();
            } else if (item && isSparkle && name == u"version") {
                item->version = xml.readElementText().trimmed();
            } else if (item && isSparkle && name == u"shortVersionString") {
                item->displayVersion = xml.readElementText().trimmed();
            } else if (item && isSparkle && name == u"releaseNotesLink") {
                item->releaseNotesURL = QUrl(xml.readElementText().trimmed());
            } else if (item && !isSparkle && name == u"link") {
                const QUrl link(xml.readElementText().trimmed());
                if (item->releaseNotesURL.isEmpty())
                    item->releaseNotesURL = link;
            }
        } else if (xml.isEndElement() && xml.name() == u"item" && item) {
            // An item without a version or anything to download is not a release.
            if (!item->version.isEmpty() && item->downloadURL.isValid()
                && !item->downloadURL.isEmpty()) {
                if (item->displayVersion.isEmpty())
                    item->displayVersion = item->version;
                if (!newest || compareVersions(item->version, newest->version) > 0)
                    newest = item;
            }
            item.reset();
        }
    }
    if (xml.hasError()) {
        if (error)
            *error = u"le flux n'est pas un appcast lisible (%1)"_s.arg(xml.errorString());
        return std::nullopt;
    }
    if (!newest && error)
        *error = u"le flux ne contient aucune version"_s;
    return newest;
}

void UpdateController::start()
{
    check(false);
    m_timer.start();
}

void UpdateController::checkForUpdates()
{
    check(true);
}

void UpdateController::check(bool userAsked)
{
    if (m_checking && !userAsked)
        return;
    m_checking = true;
    QNetworkRequest request(m_feedURL);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                         QNetworkRequest::NoLessSafeRedirectPolicy);
    request.setTransferTimeout(30000);
    QNetworkReply *reply = m_network.get(request);
    connect(reply, &QNetworkReply::finished, this, [this, reply, userAsked] {
        reply->deleteLater();
        m_checking = false;
        const QString title = u"Mises à jour de Pagewell"_s;
        if (reply->error() != QNetworkReply::NoError) {
            if (userAsked)
                Q_EMIT answered(
                    title,
                    u"La vérification des mises à jour a échoué : %1."_s.arg(reply->errorString()),
                    {});
            return;
        }
        QString error;
        const std::optional<Release> newest = newestRelease(reply->readAll(), &error);
        if (!newest) {
            if (userAsked)
                Q_EMIT answered(
                    title, u"La vérification des mises à jour a échoué : %1."_s.arg(error), {});
            return;
        }
        if (compareVersions(newest->version, m_currentVersion) > 0) {
            // Found in the background too: a new version is worth telling.
            Q_EMIT answered(
                u"Pagewell %1 est disponible"_s.arg(newest->displayVersion),
                u"Vous utilisez la version %1.%2"_s.arg(
                    m_currentVersion,
                    newest->releaseNotesURL.isEmpty()
                        ? QString()
                        : u" Notes de version : %1"_s.arg(newest->releaseNotesURL.toString())),
                newest->downloadURL);
        } else if (userAsked) {
            Q_EMIT answered(
                title,
                u"Vous utilisez la dernière version de Pagewell (%1)."_s.arg(m_currentVersion), {});
        }
    });
}
