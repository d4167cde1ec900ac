#include "TestWorkspace.h"
#include "model/FileUrl.h"
#include "services/DraftStore.h"
#include "services/FolderWatcher.h"

#include <QDir>
#include <QSignalSpy>
#include <QTest>

#include <sys/stat.h>

using namespace Qt::StringLiterals;

// The window following the disk: recovery drafts, saves that never write over another program's
// text, and the tree and the open document taking what other programs change.
class TestDisk : public QObject
{
    Q_OBJECT

    // A store that has opened `folder` and, in it, `file`.
    std::unique_ptr<WorkspaceStore> openOn(TestWorkspace &workspace, const QString &folder,
                                           const QString &file)
    {
        auto store = workspace.makeStore();
        store->openFolder(QUrl::fromLocalFile(folder));
        store->openFile(QUrl::fromLocalFile(folder + u'/' + file));
        return store;
    }

    static QString text(const WorkspaceStore &store) { return store.currentDocument()->content; }

    // The tree equals what a scan made now finds, the way the tree view would show it.
    static bool treeMatchesDisk(const WorkspaceStore &store)
    {
        return store.rootItem()
            && *store.rootItem() == FileSystemService().scanDirectory(store.rootURL());
    }

private Q_SLOTS:
    void draftsAreOfferedOnlyAgainstTheFileTheyWereMadeOn()
    {
        TestWorkspace workspace;
        const QString folder = workspace.folder({u"a.md"_s});
        DraftStore drafts(workspace.draftsFolder());
        const QString doc = folder + u"/a.md"_s;

        drafts.save(doc, u"base"_s, u"base and edits"_s);
        // Offered while still waiting to be written, and from the disk by another launch.
        QCOMPARE(drafts.find(doc, u"base"_s), u"base and edits"_s);
        drafts.waitForWrites();
        QVERIFY(QFileInfo::exists(drafts.draftPath(doc)));
        QVERIFY(drafts.draftPath(doc).startsWith(workspace.draftsFolder()));
        DraftStore relaunched(workspace.draftsFolder());
        QCOMPARE(relaunched.find(doc, u"base"_s), u"base and edits"_s);
        QCOMPARE(relaunched.find(doc, u"another text"_s), std::nullopt);
        QCOMPARE(relaunched.find(folder + u"/b.md"_s, u"base"_s), std::nullopt);

        // A draft that says what the file says offers nothing.
        drafts.save(doc, u"same"_s, u"same"_s);
        QCOMPARE(drafts.find(doc, u"same"_s), std::nullopt);

        drafts.remove(doc);
        QCOMPARE(drafts.find(doc, u"base"_s), std::nullopt);
        drafts.waitForWrites();
        QVERIFY(!QFileInfo::exists(drafts.draftPath(doc)));
    }

    void editsDroppedBySwitchingComeBack()
    {
        TestWorkspace workspace;
        const QString folder = workspace.folder({u"a.md"_s, u"b.md"_s});
        const QByteArray onDisk = readFile(folder + u"/a.md"_s);
        auto store = openOn(workspace, folder, u"a.md"_s);
        store->updateDocumentContent(u"# a.md\nedits\n"_s);

        // Another file replaces the document: the edits are written as a draft at once.
        store->openFile(QUrl::fromLocalFile(folder + u"/b.md"_s));
        store->openFile(QUrl::fromLocalFile(folder + u"/a.md"_s));
        QCOMPARE(store->notice(), DocumentNotice::DraftFound);
        QCOMPARE(store->noticeMessage(),
                 u"Des modifications non enregistrées de « a.md » ont été retrouvées."_s);
        QCOMPARE(text(*store), u"# a.md\n"_s);
        QSignalSpy replaced(store.get(), &WorkspaceStore::documentTextReplaced);
        store->restoreDraft();
        QCOMPARE(replaced.count(), 1);
        QCOMPARE(text(*store), u"# a.md\nedits\n"_s);
        QVERIFY(store->currentDocument()->isDirty);
        QCOMPARE(store->notice(), DocumentNotice::NoNotice);
        QCOMPARE(readFile(folder + u"/a.md"_s), onDisk); // nothing written until a save

        // A save removes the draft; "Ignorer" too. (Killed after typing: the end-to-end run.)
        const QString draft = store->drafts().draftPath(folder + u"/a.md"_s);
        store->saveCurrentDocument();
        store->drafts().waitForWrites();
        QVERIFY(!QFileInfo::exists(draft));
        store->updateDocumentContent(u"again"_s);
        store->openFile(QUrl::fromLocalFile(folder + u"/b.md"_s));
        store->openFile(QUrl::fromLocalFile(folder + u"/a.md"_s));
        QCOMPARE(store->notice(), DocumentNotice::DraftFound);
        store->discardDraft();
        store->drafts().waitForWrites();
        QVERIFY(!QFileInfo::exists(draft));

        // A draft made on an older version of the file is not offered for the new one.
        store->updateDocumentContent(u"stale edits"_s);
        store->openFile(QUrl::fromLocalFile(folder + u"/b.md"_s));
        writeFile(folder + u"/a.md"_s, "# rewritten elsewhere\n");
        store->openFile(QUrl::fromLocalFile(folder + u"/a.md"_s));
        QCOMPARE(store->notice(), DocumentNotice::NoNotice);
    }

    void aSaveNeverWritesOverAnotherProgramsText()
    {
        TestWorkspace workspace;
        const QString folder = workspace.folder({u"a.md"_s});
        const QString path = folder + u"/a.md"_s;
        auto store = openOn(workspace, folder, u"a.md"_s);

        // Modified here and changed elsewhere: the save writes nothing and waits for the person's
        // choice (the end-to-end run keeps the edits). "Recharger" takes the file's text; the
        // dropped edits stay as a draft.
        store->updateDocumentContent(u"mine again\n"_s);
        writeFile(path, "theirs again\n");
        store->saveCurrentDocument();
        QCOMPARE(readFile(path), QByteArray("theirs again\n"));
        QCOMPARE(store->notice(), DocumentNotice::ChangedOnDisk);
        store->reloadDocumentFromDisk();
        QCOMPARE(text(*store), u"theirs again\n"_s);
        QVERIFY(!store->currentDocument()->isDirty);
        store->drafts().waitForWrites();
        QVERIFY(readFile(store->drafts().draftPath(path)).endsWith("mine again\n"));

        // A clean document takes the new text instead of writing the old one back.
        writeFile(path, "newer\n");
        store->saveCurrentDocument();
        QCOMPARE(readFile(path), QByteArray("newer\n"));
        QCOMPARE(text(*store), u"newer\n"_s);

        // The same bytes written again are no change: the save goes through.
        store->updateDocumentContent(u"edited\n"_s);
        writeFile(path, "newer\n");
        store->saveCurrentDocument();
        QCOMPARE(readFile(path), QByteArray("edited\n"));
        QCOMPARE(store->notice(), DocumentNotice::NoNotice);
    }

    void aSaveRemovesTheTemporariesACrashLeft()
    {
        TestWorkspace workspace;
        const QString folder
            = workspace.folder({u"a.md"_s, u".a.md.pagewell-k3x9q"_s, u".b.md.pagewell-k3x9q"_s,
                                u".a.md.pagewell-notes"_s, u".a.md.pagewell-X1"_s});
        auto store = openOn(workspace, folder, u"a.md"_s);
        store->updateDocumentContent(u"edited\n"_s);
        store->saveCurrentDocument();
        QVERIFY(!QFileInfo::exists(folder + u"/.a.md.pagewell-k3x9q"_s));
        QVERIFY(!QFileInfo::exists(folder + u"/.a.md.pagewell-notes"_s));
        // Another document's, and names a save never makes, stay.
        QVERIFY(QFileInfo::exists(folder + u"/.b.md.pagewell-k3x9q"_s));
        QVERIFY(QFileInfo::exists(folder + u"/.a.md.pagewell-X1"_s));
    }

    void theTreeFollowsTheDisk()
    {
        TestWorkspace workspace;
        const QString folder = workspace.folder(
            {u"README.md"_s, u"guide/a.md"_s, u"guide/deep/b.md"_s, u"node_modules/x.md"_s});
        auto store = workspace.makeStore();
        store->openFolder(QUrl::fromLocalFile(folder));
        store->startWatching();
        QSignalSpy ready(store->watcher(), &FolderWatcher::ready);
        QVERIFY(ready.wait());

        writeFile(folder + u"/new.md"_s, "# new\n");
        QTRY_VERIFY_WITH_TIMEOUT(treeMatchesDisk(*store), 1000);
        // A folder made with files already in it, and one inside it at once.
        makeTree(folder + u"/made"_s, {u"one.md"_s, u"inner/two.md"_s});
        QTRY_VERIFY_WITH_TIMEOUT(treeMatchesDisk(*store), 1000);
        writeFile(folder + u"/made/inner/three.md"_s, "# three\n");
        QTRY_VERIFY_WITH_TIMEOUT(treeMatchesDisk(*store), 1000);
        QVERIFY(QDir().rename(folder + u"/guide"_s, folder + u"/manual"_s));
        QTRY_VERIFY_WITH_TIMEOUT(treeMatchesDisk(*store), 1000);
        // The renamed folder is watched under its new name.
        writeFile(folder + u"/manual/deep/c.md"_s, "# c\n");
        QTRY_VERIFY_WITH_TIMEOUT(treeMatchesDisk(*store), 1000);
        QVERIFY(QDir(folder + u"/made"_s).removeRecursively());
        QVERIFY(QFile::remove(folder + u"/new.md"_s));
        QTRY_VERIFY_WITH_TIMEOUT(treeMatchesDisk(*store), 1000);

        // A branch switch: a thousand files removed, made, renamed and rewritten at once.
        for (int i = 0; i < 500; ++i)
            writeFile(folder + u"/manual/p%1.md"_s.arg(i), "# p\n");
        QTRY_VERIFY_WITH_TIMEOUT(treeMatchesDisk(*store), 2000);
        for (int i = 0; i < 500; ++i) {
            const QString page = folder + u"/manual/p%1.md"_s.arg(i);
            if (i % 4 == 0)
                QVERIFY(QFile::remove(page));
            else if (i % 4 == 1)
                QVERIFY(QFile::rename(page, folder + u"/manual/deep/q%1.md"_s.arg(i)));
            else
                writeFile(page, "# rewritten\n");
            writeFile(folder + u"/branch/n%1/page.md"_s.arg(i % 50), "# n\n");
        }
        QTRY_VERIFY_WITH_TIMEOUT(treeMatchesDisk(*store), 3000);
        // Ignored and hidden entries change nothing.
        QSignalSpy trees(store.get(), &WorkspaceStore::rootItemChanged);
        writeFile(folder + u"/node_modules/y.md"_s, "# y\n");
        writeFile(folder + u"/.hidden.md"_s, "# h\n");
        QTest::qWait(400);
        QCOMPARE(trees.count(), 0);
    }

    void aCleanDocumentTakesTheNewTextOnceTheFileStandsStill()
    {
        TestWorkspace workspace;
        const QString folder = workspace.folder({u"a.md"_s});
        const QString path = folder + u"/a.md"_s;
        auto store = openOn(workspace, folder, u"a.md"_s);
        store->startWatching();
        QSignalSpy ready(store->watcher(), &FolderWatcher::ready);
        QVERIFY(ready.wait());
        QSignalSpy replaced(store.get(), &WorkspaceStore::documentTextReplaced);

        // Written in two parts, 120 ms apart: only the whole text is ever taken.
        {
            QFile file(path);
            QVERIFY(file.open(QIODevice::Append));
            file.write("half");
            file.flush();
            QTest::qWait(120);
            file.write(" and whole\n");
        }
        QTRY_COMPARE_WITH_TIMEOUT(replaced.count(), 1, 1000);
        QCOMPARE(text(*store), u"# a.md\nhalf and whole\n"_s);
        QVERIFY(!store->currentDocument()->isDirty);

        // Saved by renaming a new file over it, as most programs do.
        writeFile(folder + u"/.a.md.tmp"_s, "# renamed over\n");
        QVERIFY(::rename(QFile::encodeName(folder + u"/.a.md.tmp"_s).constData(),
                         QFile::encodeName(path).constData())
                == 0);
        QTRY_COMPARE_WITH_TIMEOUT(text(*store), u"# renamed over\n"_s, 1000);
        // The same bytes again: nothing to take.
        writeFile(path, "# renamed over\n");
        QTest::qWait(400);
        QCOMPARE(replaced.count(), 2);

        // Removed: the text stays and a save writes it again.
        QVERIFY(QFile::remove(path));
        QTRY_COMPARE_WITH_TIMEOUT(store->notice(), DocumentNotice::RemovedFromDisk, 1000);
        QCOMPARE(store->noticeMessage(), u"« a.md » a été supprimé du disque."_s);
        store->saveCurrentDocument();
        QCOMPARE(readFile(path), QByteArray("# renamed over\n"));
        QCOMPARE(store->notice(), DocumentNotice::NoNotice);
    }

    void searchesAgainWhenDocumentsChange()
    {
        TestWorkspace workspace;
        const QString folder = workspace.folder({u"a.md"_s});
        auto store = workspace.makeStore();
        store->openFolder(QUrl::fromLocalFile(folder));
        store->startWatching();
        QSignalSpy ready(store->watcher(), &FolderWatcher::ready);
        QVERIFY(ready.wait());
        store->updateSearch(u"zanzibar"_s);
        QTRY_VERIFY(!store->isSearching());
        QVERIFY(store->searchResults().isEmpty());
        writeFile(folder + u"/b.md"_s, "Zanzibar\n");
        QTRY_COMPARE_WITH_TIMEOUT(store->searchResults().size(), 1, 2000);
        writeFile(folder + u"/b.md"_s, "gone\n");
        QTRY_VERIFY_WITH_TIMEOUT(store->searchResults().isEmpty(), 2000);
    }

    void atTheWatchLimitTheTreeIsReadWhenTheWindowComesBack()
    {
        TestWorkspace workspace;
        const QString folder = workspace.folder({u"a/x.md"_s, u"b/y.md"_s, u"c/z.md"_s});
        auto store = workspace.makeStore();
        store->openFolder(QUrl::fromLocalFile(folder));
        store->startWatching(2);
        QSignalSpy ready(store->watcher(), &FolderWatcher::ready);
        QVERIFY(ready.wait());
        QVERIFY(store->watcher()->isLimited());
        QCOMPARE(store->watcher()->watchCount(), 2);
        // The root is watched first.
        writeFile(folder + u"/top.md"_s, "# top\n");
        QTRY_VERIFY_WITH_TIMEOUT(treeMatchesDisk(*store), 1000);
        writeFile(folder + u"/c/unwatched.md"_s, "# u\n");
        QTest::qWait(300);
        QVERIFY(!treeMatchesDisk(*store));
        store->applicationActivated();
        QTRY_VERIFY_WITH_TIMEOUT(treeMatchesDisk(*store), 1000);
    }
};

QTEST_GUILESS_MAIN(TestDisk)
#include "tst_disk.moc"
