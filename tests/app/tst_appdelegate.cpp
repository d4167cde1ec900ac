// Launch, open requests, the one-instance hand-over and software updates.
#include "../core/TestFiles.h"
#include "AppDelegate.h"
#include "InstanceChannel.h"
#include "UpdateController.h"
#include "model/FileUrl.h"
#include "workspace/WorkspaceStore.h"

#include <QGuiApplication>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QtConcurrent>

using namespace Qt::StringLiterals;

namespace {

QByteArray appcast(const QByteArray &items)
{
    return "<?xml version=\"1.0\"?>\n<rss version=\"2.0\" "
           "xmlns:sparkle=\"http://www.andymatuschak.org/xml-namespaces/sparkle\"><channel>"
           "<title>Pagewell</title>"
        + items + "</channel></rss>";
}

} // namespace

class TestAppDelegate : public QObject
{
    Q_OBJECT

    QTemporaryDir m_scratch;
    int m_made = 0;

    std::unique_ptr<WorkspaceStore> makeStore(const QString &settings)
    {
        return std::make_unique<WorkspaceStore>(
            std::make_unique<QSettings>(settings, QSettings::IniFormat));
    }

private Q_SLOTS:
    void commandLineRule()
    {
        const QString cwd = u"/w/here"_s;
        QCOMPARE(AppDelegate::launchURL({u"pagewell"_s}, cwd), QUrl());
        QCOMPARE(AppDelegate::launchURL({u"pagewell"_s, u"/w/docs"_s}, cwd),
                 QUrl::fromLocalFile(u"/w/docs"_s));
        QCOMPARE(AppDelegate::launchURL({u"pagewell"_s, u"docs/a.md"_s, u"ignored"_s}, cwd),
                 QUrl::fromLocalFile(u"/w/here/docs/a.md"_s));
        QCOMPARE(AppDelegate::launchURL({u"pagewell"_s, u"~/notes"_s}, cwd),
                 QUrl::fromLocalFile(QDir::homePath() + u"/notes"_s));
        // An option first: nothing, even with a path after it.
        QCOMPARE(AppDelegate::launchURL({u"pagewell"_s, u"-style"_s, u"/w/docs"_s}, cwd), QUrl());
    }

    void openRequests()
    {
        const QString settings = m_scratch.filePath(u"open.ini"_s);
        auto store = makeStore(settings);
        AppDelegate delegate(store.get());
        const QString root = m_scratch.filePath(u"docs"_s);
        makeTree(root, {u"README.md"_s, u"guide/start.md"_s, u"other.md"_s});

        // A file: its folder first (the readme opens), then the file itself.
        QStringList opened;
        connect(store.get(), &WorkspaceStore::selectedFileURLChanged, this,
                [&] { opened.append(FileUrl::lastPathComponent(store->selectedFileURL())); });
        delegate.applicationDidFinishLaunching({u"pagewell"_s, root + u"/other.md"_s}, QUrl());
        QCOMPARE(opened, (QStringList {u"README.md"_s, u"other.md"_s}));
        QCOMPARE(FileUrl::path(store->rootURL()), root);
        QCOMPARE(QSettings(settings, QSettings::IniFormat).value(WorkspaceSession::lastFileKey),
                 QVariant(root + u"/other.md"_s));
        QVERIFY(!delegate.updaterController()); // no feed, no controller

        // Only the first of several URLs; a folder opens as the workspace.
        delegate.handleOpenURLs(
            {QUrl::fromLocalFile(root + u"/guide"_s), QUrl::fromLocalFile(root + u"/other.md"_s)});
        QCOMPARE(FileUrl::path(store->rootURL()), root + u"/guide"_s);
        QCOMPARE(FileUrl::lastPathComponent(store->selectedFileURL()), u"start.md"_s);

        // A vanished path changes nothing at all.
        QSignalSpy rootChanges(store.get(), &WorkspaceStore::rootURLChanged);
        QSignalSpy documentChanges(store.get(), &WorkspaceStore::currentDocumentChanged);
        delegate.handleOpenURLs({QUrl::fromLocalFile(root + u"/gone.md"_s)});
        delegate.handleOpenURLs({});
        QCOMPARE(rootChanges.count() + documentChanges.count(), 0);
    }

    void secondInstanceHandsOver()
    {
        const QString name = m_scratch.filePath(u"instance.socket"_s);
        // A socket left by a crash: a file nobody listens on.
        writeFile(name, "stale");
        InstanceChannel second(name);
        QVERIFY(!second.handOver(QUrl::fromLocalFile(u"/w/a.md"_s), 500));

        InstanceChannel first(name);
        QVERIFY(first.listen());
        QSignalSpy requests(&first, &InstanceChannel::openRequested);
        // The later instance blocks on its answer; the first answers from its event loop.
        const QUrl odd = QUrl::fromLocalFile(u"/w/l'équipe #1 ?.md"_s);
        QFuture<bool> handed
            = QtConcurrent::run([name, odd] { return InstanceChannel(name).handOver(odd); });
        QTRY_VERIFY(handed.isFinished());
        QVERIFY(handed.result());
        QCOMPARE(requests.count(), 1);
        QCOMPARE(requests.at(0).at(0).toUrl(), odd);
    }

    void versionsCompare()
    {
        QCOMPARE(UpdateController::compareVersions(u"1.10"_s, u"1.9"_s), 1);
        QCOMPARE(UpdateController::compareVersions(u"1.2"_s, u"1.2.0"_s), 0);
        QCOMPARE(UpdateController::compareVersions(u"2.0b1"_s, u"2.0"_s), -1);
        QCOMPARE(UpdateController::compareVersions(u"2.0-rc.1"_s, u"2.0-beta.3"_s), 1);
    }

    // Checked against a feed file, as against a web address: the newest item with both a version
    // and an enclosure, in either spelling; told when asked, silent in the background when there
    // is nothing new; a failed check says why.
    void checksAgainstAFeed()
    {
        const QString feed = m_scratch.filePath(u"appcast.xml"_s);
        writeFile(
            feed,
            appcast("<item><enclosure url=\"https://d.example/0.1.9.deb\" "
                    "sparkle:version=\"0.1.9\"/></item><item>"
                    "<sparkle:version>0.2.0</sparkle:version><sparkle:shortVersionString>0.2"
                    "</sparkle:shortVersionString><enclosure url=\"https://d.example/0.2.deb\"/>"
                    "</item><item><sparkle:version>9.0</sparkle:version></item>"));
        const auto answer = [](UpdateController &controller, bool asked) {
            QSignalSpy answers(&controller, &UpdateController::answered);
            asked ? controller.checkForUpdates() : controller.start();
            return answers.wait(asked ? 10000 : 1500) ? answers.at(0) : QList<QVariant>();
        };
        UpdateController older(QUrl::fromLocalFile(feed), u"0.1.0"_s);
        const QList<QVariant> news = answer(older, true);
        QCOMPARE(news.value(0).toString(), u"Pagewell 0.2 est disponible"_s);
        QCOMPARE(news.value(2).toUrl(), QUrl(u"https://d.example/0.2.deb"_s));
        UpdateController latest(QUrl::fromLocalFile(feed), u"0.2.0"_s);
        QCOMPARE(answer(latest, true).value(1).toString(),
                 u"Vous utilisez la dernière version de Pagewell (0.2.0)."_s);
        QVERIFY(answer(latest, false).isEmpty());
        UpdateController failing(QUrl::fromLocalFile(feed + u".absent"_s), u"0.1.0"_s);
        QVERIFY(answer(failing, true)
                    .value(1)
                    .toString()
                    .startsWith(u"La vérification des mises à jour a échoué : "_s));
    }
};

QTEST_MAIN(TestAppDelegate)
#include "tst_appdelegate.moc"
