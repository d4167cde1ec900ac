#include "TestFiles.h"
#include "model/FileUrl.h"
#include "workspace/WorkspaceStore.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QSize>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

QUrl fileUrl(const QString &path)
{
    return QUrl::fromLocalFile(path);
}

} // namespace

class TestWorkspaceStore : public QObject
{
    Q_OBJECT

    QTemporaryDir m_scratch;
    int m_settingsCount = 0;
    QString m_settingsPath;

    // A store on its own preferences file, as a fresh launch would make it.
    std::unique_ptr<WorkspaceStore> launch()
    {
        return std::make_unique<WorkspaceStore>(
            std::make_unique<QSettings>(m_settingsPath, QSettings::IniFormat),
            m_scratch.filePath(u"drafts"_s));
    }

    QSettings settings() const { return QSettings(m_settingsPath, QSettings::IniFormat); }

    // A new folder with the given files (each holding its own name as a heading).
    QString folder(const QStringList &files)
    {
        const QString path = m_scratch.filePath(u"f%1"_s.arg(++m_settingsCount));
        makeTree(path, files);
        return path;
    }

    QString selectedPath(const WorkspaceStore &store) const
    {
        return FileUrl::path(store.selectedFileURL());
    }

private Q_SLOTS:
    void init()
    {
        m_settingsPath = m_scratch.filePath(u"settings-%1.ini"_s.arg(++m_settingsCount));
    }

    // Each change of the open document says what changed, so a view does only its own work.
    void documentChangesAreAnnouncedByPart()
    {
        const QString root = folder({u"a.md"_s, u"b.md"_s});
        auto store = launch();
        store->openFolder(QUrl::fromLocalFile(root));
        QSignalSpy replaced(store.get(), &WorkspaceStore::documentReplaced);
        QSignalSpy text(store.get(), &WorkspaceStore::documentTextChanged);
        QSignalSpy headings(store.get(), &WorkspaceStore::documentHeadingsChanged);
        QSignalSpy modified(store.get(), &WorkspaceStore::documentModifiedChanged);
        const auto counts = [&] {
            return QList<qsizetype> {replaced.count(), text.count(), headings.count(),
                                     modified.count()};
        };
        store->updateDocumentContent(u"one"_s);
        store->updateDocumentContent(u"two"_s);
        QCOMPARE(counts(), (QList<qsizetype> {0, 2, 0, 1}));
        store->updateHeadings({{u"h"_s, 1, u"H"_s}});
        QCOMPARE(counts(), (QList<qsizetype> {0, 2, 1, 1}));
        store->saveCurrentDocument();
        QCOMPARE(counts(), (QList<qsizetype> {0, 2, 1, 2}));
        store->openFile(QUrl::fromLocalFile(root + u"/b.md"_s));
        QCOMPARE(counts(), (QList<qsizetype> {1, 3, 2, 3}));
    }

    // The editor's edits give the text a whole text would, with the same announcements; the
    // counts kept through them are the text's own, in prose, emoji, combining marks, CR LF and
    // one long line of encoded data where no settled place is near.
    void editsGiveTheTextAndItsCounts()
    {
        const QString root = folder({u"a.md"_s});
        QString prose;
        for (int i = 0; i < 400; ++i)
            prose += u"Ligne %1 \U0001F600 e\u0301t\u00e9\u00a0mot\r\n"_s.arg(i);
        prose += QString(9000, u'A') + u"\n fin"_s;
        writeFile(root + u"/a.md"_s, prose.toUtf8());
        auto store = launch();
        store->openFolder(QUrl::fromLocalFile(root));
        QSignalSpy text(store.get(), &WorkspaceStore::documentTextChanged);
        QSignalSpy modified(store.get(), &WorkspaceStore::documentModifiedChanged);
        QCOMPARE(store->documentStatistics(), DocumentStatistics::count(prose));

        const QStringList pieces {u"x"_s,      u" "_s,      u"\r\n"_s, u"\U0001F1EB\U0001F1F7"_s,
                                  u"\u0301"_s, u"\u200d"_s, u""_s,     u"deux mots\n"_s,
                                  u"\r"_s,     u"\n"_s};
        QString expected = prose;
        int changing = 0;
        quint32 seed = 11;
        const auto random = [&seed](qsizetype n) {
            seed = seed * 1664525u + 1013904223u;
            return qsizetype((seed >> 8) % quint32(n));
        };
        for (int step = 0; step < 300; ++step) {
            // One to three ranges, in order and apart, positions in the text before the step.
            QList<TextEdit> edits;
            qsizetype at = 0;
            for (int n = 1 + random(3); n > 0 && at < expected.size(); --n) {
                const qsizetype from = at + random(std::min<qsizetype>(expected.size() - at, 3000));
                const qsizetype to = std::min(expected.size(), from + random(3) * random(30));
                edits.append({from, to, pieces.at(random(pieces.size()))});
                at = to + 1;
            }
            qsizetype length = expected.size();
            const QString before = expected;
            for (auto edit = edits.rbegin(); edit != edits.rend(); ++edit) {
                expected = expected.left(edit->from) + edit->inserted + expected.mid(edit->to);
                length += edit->inserted.size() - (edit->to - edit->from);
            }
            changing += expected != before;
            QVERIFY(store->editDocumentContent(edits, length));
            QCOMPARE(text.count(), changing);
            if (step % 25 == 0 || step == 299) {
                QCOMPARE(store->currentDocument()->content, expected);
                QCOMPARE(store->documentStatistics(), DocumentStatistics::count(expected));
            }
        }
        QCOMPARE(store->currentDocument()->content, expected);
        QVERIFY(store->currentDocument()->isDirty);
        QCOMPARE(modified.count(), 1);

        // Edits that do not fit change nothing; an edit giving the same text is no edit.
        const qsizetype size = expected.size();
        const QList<QList<TextEdit>> unfit {{{0, 0, u"x"_s}}, // the length disagrees
                                            {{5, 2, u""_s}},
                                            {{0, size + 1, u""_s}},
                                            {{4, 6, u""_s}, {5, 7, u""_s}}};
        for (const QList<TextEdit> &edits : unfit)
            QVERIFY(!store->editDocumentContent(edits, size - 4 * (&edits != &unfit.first())));
        QVERIFY(store->editDocumentContent({{0, 1, expected.left(1)}}, size));
        store->saveCurrentDocument();
        QVERIFY(store->editDocumentContent({{0, 1, expected.left(1)}}, size));
        QVERIFY(!store->currentDocument()->isDirty);
        QCOMPARE(readFile(root + u"/a.md"_s), expected.toUtf8());
        QCOMPARE(text.count(), changing);
    }

    void recentFoldersMoveToTheFrontAndPersist()
    {
        auto store = launch();
        QStringList folders;
        for (int i = 0; i < 11; ++i)
            folders.append(folder({}));
        store->openFolder(fileUrl(folders[0]));
        store->openFolder(fileUrl(folders[1]));
        QCOMPARE(store->recentFolderPaths(), (QStringList {folders[1], folders[0]}));

        store->openFolder(fileUrl(folders[0]));
        QCOMPARE(store->recentFolderPaths(), (QStringList {folders[0], folders[1]}));
        for (int i = 2; i < 11; ++i)
            store->openFolder(fileUrl(folders[i]));
        QCOMPARE(store->recentFolderPaths().size(), 10);
        QCOMPARE(store->recentFolderPaths().first(), folders[10]);
        QVERIFY(!store->recentFolderPaths().contains(folders[1])); // the oldest one went
        QCOMPARE(settings().value(WorkspaceSession::recentsKey).toStringList(),
                 store->recentFolderPaths());
    }

    void opensTheReadmeOrTheFirstDocument()
    {
        auto store = launch();
        const QString withReadme = folder({u"docs/guide.md"_s, u"ReadMe.MD"_s, u"a.md"_s});
        store->openFolder(fileUrl(withReadme));
        QCOMPARE(selectedPath(*store), withReadme + u"/ReadMe.MD"_s);
        QCOMPARE(store->currentDocument()->content, u"# ReadMe.MD\n"_s);
        QVERIFY(!store->currentDocument()->isDirty);
        QVERIFY(store->currentDocument()->headings.isEmpty());
        QCOMPARE(settings().value(WorkspaceSession::lastFileKey).toString(),
                 withReadme + u"/ReadMe.MD"_s);

        const QString markdownReadme = folder({u"README.markdown"_s, u"docs/sub.md"_s});
        store->openFolder(fileUrl(markdownReadme));
        QCOMPARE(selectedPath(*store), markdownReadme + u"/docs/sub.md"_s);

        // A preferred file wins; a missing one falls back to the readme rule.
        store->openFolder(fileUrl(withReadme), fileUrl(withReadme + u"/a.md"_s));
        QCOMPARE(selectedPath(*store), withReadme + u"/a.md"_s);
        store->openFolder(fileUrl(withReadme), fileUrl(withReadme + u"/gone.md"_s));
        QCOMPARE(selectedPath(*store), withReadme + u"/ReadMe.MD"_s);
        // A preferred folder opens no document: the one open stays.
        store->openFolder(fileUrl(markdownReadme), FileUrl::fromPath(markdownReadme + u"/docs"_s));
        QCOMPARE(store->rootURL(), fileUrl(markdownReadme));
        QCOMPARE(selectedPath(*store), withReadme + u"/ReadMe.MD"_s);
        QVERIFY(!store->showAlert());
    }

    void restoresTheLastSession()
    {
        const QString docs = folder({u"README.md"_s, u"b.md"_s});
        const QString elsewhere = folder({u"outside.md"_s});
        {
            auto store = launch();
            store->openFolder(fileUrl(docs));
            store->openFile(fileUrl(elsewhere + u"/outside.md"_s));
            store->clearRecentFolders();
            QVERIFY(store->recentFolderPaths().isEmpty());
            QVERIFY(!settings().contains(WorkspaceSession::recentsKey));
            QCOMPARE(settings().value(WorkspaceSession::lastFolderKey).toString(), docs);
        }
        // The outside file comes back selected, though it is not in the tree.
        auto store = launch();
        QCOMPARE(store->rootURL(), fileUrl(docs));
        QCOMPARE(selectedPath(*store), elsewhere + u"/outside.md"_s);
        QCOMPARE(store->currentDocument()->content, u"# outside.md\n"_s);
        QCOMPARE(store->recentFolderPaths(), QStringList {docs});

        // A last file that vanished gives way to the readme.
        QFile::remove(elsewhere + u"/outside.md"_s);
        QCOMPARE(selectedPath(*launch()), docs + u"/README.md"_s);
        // A last folder that vanished opens nothing.
        QVERIFY(QDir(docs).removeRecursively());
        QVERIFY(launch()->rootURL().isEmpty());
    }

    void openFileFailuresAndNoOps()
    {
        auto store = launch();
        const QString path = folder({u"a.md"_s});
        writeFile(path + u"/latin.md"_s, "Caf\xE9 cr\xE8me\n");
        store->openFolder(fileUrl(path));
        const std::optional<EditorDocument> before = store->currentDocument();

        store->openFile(fileUrl(path + u"/latin.md"_s));
        QVERIFY(store->showAlert());
        QVERIFY(store->alertMessage().startsWith(u"Impossible de lire le fichier: Le fichier "));
        QVERIFY(store->alertMessage().contains(u"UTF-8"));
        QCOMPARE(store->currentDocument(), before);
        QCOMPARE(selectedPath(*store), path + u"/a.md"_s);
        QCOMPARE(settings().value(WorkspaceSession::lastFileKey).toString(), path + u"/a.md"_s);

        // A folder URL is not a document: nothing happens, not even an alert.
        store->setShowAlert(false);
        QSignalSpy message(store.get(), &WorkspaceStore::alertMessageChanged);
        QSignalSpy document(store.get(), &WorkspaceStore::currentDocumentChanged);
        store->openFile(FileUrl::fromPath(path));
        QCOMPARE(message.count(), 0);
        QCOMPARE(document.count(), 0);
        QVERIFY(!store->showAlert());
    }

    void editsAreStickyAndSurviveReopening()
    {
        auto store = launch();
        const QString path = folder({u"a.md"_s, u"b.md"_s});
        store->openFolder(fileUrl(path));
        const QString original = store->currentDocument()->content;

        QSignalSpy changes(store.get(), &WorkspaceStore::currentDocumentChanged);
        store->updateDocumentContent(original);
        QCOMPARE(changes.count(), 0); // the same text: no notification
        QVERIFY(!store->currentDocument()->isDirty);

        store->updateDocumentContent(original + u'x');
        QCOMPARE(changes.count(), 1);
        store->updateDocumentContent(original);
        QCOMPARE(changes.count(), 2);
        QVERIFY(store->currentDocument()->isDirty); // typed and deleted: still modified

        store->updateDocumentContent(u"edited"_s);
        store->openFile(fileUrl(path + u"/a.md"_s)); // the open file: edits kept
        QCOMPARE(store->currentDocument()->content, u"edited"_s);

        store->openFile(fileUrl(path + u"/b.md"_s)); // another file: edits dropped, clean
        QCOMPARE(store->currentDocument()->content, u"# b.md\n"_s);
        QVERIFY(!store->currentDocument()->isDirty);
        QCOMPARE(readFile(path + u"/a.md"_s), QByteArray("# a.md\n"));
    }

    void failedSaveShowsTheAlertAndKeepsTheEdits()
    {
        auto store = launch();
        const QString root = folder({u"doc.md"_s});
        store->openFolder(fileUrl(root));
        const QByteArray old = readFile(root + u"/doc.md"_s);
        // 12 KB of text against a 4 KiB file-size limit: the write fails at its last flush.
        store->updateDocumentContent(QString(12 * 1024, u'x'));
        {
            const FileSizeLimit limit(4096);
            store->saveCurrentDocument();
        }

        QVERIFY(store->showAlert());
        QCOMPARE(store->alertMessage(),
                 u"Erreur d'enregistrement: \u00AB\u00A0doc.md\u00A0\u00BB dépasse la taille de "
                 u"fichier autorisée."_s);
        QVERIFY(store->currentDocument()->isDirty);
        QCOMPARE(readFile(root + u"/doc.md"_s), old);
    }

    void searchPublishesOnlyTheLatestQuery()
    {
        auto store = launch();
        const QString path = folder({});
        for (int i = 0; i < 40; ++i)
            writeFile(path + u"/doc%1.md"_s.arg(i), "alpha\nabc\n");
        store->openFolder(fileUrl(path));

        QSignalSpy results(store.get(), &WorkspaceStore::searchResultsChanged);
        store->updateSearch(u"a"_s);
        store->updateSearch(u"ab"_s);
        QCOMPARE(store->searchQuery(), u"ab"_s);
        QVERIFY(store->isSearching());
        QTRY_VERIFY(!store->isSearching());
        QTest::qWait(50); // the superseded search has long finished too
        QCOMPARE(results.count(), 1);
        QCOMPARE(store->searchResults().size(), 40);
        for (const FileSearchResults &file : store->searchResults()) {
            QCOMPARE(file.matches.size(), 1);
            QCOMPARE(file.matches.at(0).matchTerm, u"ab"_s);
            QCOMPARE(file.matches.at(0).lineNumber, 2);
        }
    }

    void clearingStopsTheRunningSearch()
    {
        auto store = launch();
        store->openFolder(fileUrl(folder({u"a.md"_s, u"b.md"_s})));
        QSignalSpy results(store.get(), &WorkspaceStore::searchResultsChanged);
        store->updateSearch(u"md"_s);
        QVERIFY(store->isSearching());
        store->updateSearch(u" \t "_s); // blank: cleared at once, and the tree shows again
        QVERIFY(store->isSearchQueryBlank());
        QVERIFY(!store->isSearching());
        QVERIFY(store->searchResults().isEmpty());
        QCOMPARE(results.count(), 1);
        QTest::qWait(100);
        QCOMPARE(results.count(), 1); // the late result was dropped
        QVERIFY(!store->isSearching());
        // A line break alone is not blank: it searches.
        store->updateSearch(u"\n"_s);
        QVERIFY(!store->isSearchQueryBlank() && store->isSearching());
    }

    // A toggle searches the same query again, read its way; an invalid expression says so and
    // searches nothing until it is valid or the toggle is off.
    void togglesSearchAgainAndAnInvalidExpressionSaysSo()
    {
        auto store = launch();
        const QString path = folder({});
        writeFile(path + u"/a.md"_s, "Alpha (beta\nalphabet\n");
        store->openFolder(fileUrl(path));
        QSignalSpy options(store.get(), &WorkspaceStore::searchOptionsChanged);
        store->updateSearch(u"alpha"_s);
        QTRY_VERIFY(!store->isSearching());
        QCOMPARE(store->searchResults().value(0).matches.size(), 2);

        store->setSearchWholeWord(true);
        QVERIFY(store->isSearching());
        QTRY_VERIFY(!store->isSearching());
        QCOMPARE(store->searchResults().value(0).matches.size(), 1);
        store->setSearchCaseSensitive(true);
        QTRY_VERIFY(!store->isSearching());
        QVERIFY(store->searchResults().isEmpty());
        QVERIFY(options.count() >= 2);

        store->setSearchCaseSensitive(false);
        store->setSearchWholeWord(false);
        store->setSearchRegularExpression(true);
        store->updateSearch(u"(beta"_s);
        QCOMPARE(store->searchError(), u"Expression r\u00E9guli\u00E8re invalide"_s);
        QVERIFY(!store->isSearching());
        QVERIFY(store->searchResults().isEmpty());
        store->updateSearch(u"\\(beta"_s);
        QCOMPARE(store->searchError(), QString());
        QTRY_VERIFY(!store->isSearching());
        QCOMPARE(store->searchResults().size(), 1);
        // The same text as plain text is valid at once.
        store->updateSearch(u"(beta"_s);
        store->setSearchRegularExpression(false);
        QCOMPARE(store->searchError(), QString());
        QTRY_VERIFY(!store->isSearching());
        QCOMPARE(store->searchResults().size(), 1);
    }

    void createsAndOpensNewDocuments()
    {
        auto store = launch();
        store->createNewFile(u"untitled.md"_s); // no folder: nothing happens
        QVERIFY(!store->currentDocument());

        const QString path = folder({u"README.md"_s, u"sub/x.md"_s});
        store->openFolder(fileUrl(path));
        store->createNewFile(u"untitled.md"_s);
        const QString created = path + u"/untitled.md"_s;
        QCOMPARE(readFile(created), QByteArray("# untitled\n\n"));
        QCOMPARE(selectedPath(*store), created);
        QCOMPARE(store->currentDocument()->content, u"# untitled\n\n"_s);
        QVERIFY(store->rootItem()->children().size() == 3);

        // The same name again replaces nothing: the alert says so, the document stays as it is.
        store->updateDocumentContent(u"edited"_s);
        store->createNewFile(u"untitled.md"_s);
        QVERIFY(store->showAlert());
        QCOMPARE(readFile(created), QByteArray("# untitled\n\n"));
        QCOMPARE(store->currentDocument()->content, u"edited"_s);
        QVERIFY(store->currentDocument()->isDirty);

        // In a chosen folder.
        store->createNewFile(u"Guide"_s, FileUrl::fromPath(path + u"/sub"_s));
        QCOMPARE(selectedPath(*store), path + u"/sub/Guide.md"_s);

        // Into a folder that is gone: the alert, and no rescan.
        QSignalSpy rescans(store.get(), &WorkspaceStore::rootItemChanged);
        store->createNewFile(u"x"_s, fileUrl(path + u"/gone"_s));
        QVERIFY(store->showAlert());
        QVERIFY(store->alertMessage().startsWith(u"Erreur lors de la création: "));
        QCOMPARE(rescans.count(), 0);
    }

    void deletionKeepsSelectionConsistent()
    {
        auto store = launch();
        const QString path = folder({u"README.md"_s, u"other.md"_s, u"sub/inner.md"_s});
        store->openFolder(fileUrl(path));

        store->deleteFile(fileUrl(path + u"/other.md"_s));
        QCOMPARE(selectedPath(*store), path + u"/README.md"_s);
        QVERIFY(store->currentDocument());
        QCOMPARE(store->rootItem()->children().size(), 2);

        store->deleteFile(store->selectedFileURL());
        QVERIFY(store->selectedFileURL().isEmpty());
        QVERIFY(!store->currentDocument());
        QVERIFY(!QFileInfo::exists(path + u"/README.md"_s));

        // Deleting the folder of the open file keeps the document open.
        store->openFile(fileUrl(path + u"/sub/inner.md"_s));
        store->deleteFile(FileUrl::fromPath(path + u"/sub"_s));
        QCOMPARE(selectedPath(*store), path + u"/sub/inner.md"_s);
        QVERIFY(store->currentDocument());
        QVERIFY(store->rootItem()->children().isEmpty());

        QSignalSpy rescans(store.get(), &WorkspaceStore::rootItemChanged);
        store->deleteFile(fileUrl(path + u"/missing.md"_s));
        QVERIFY(store->alertMessage().startsWith(u"Erreur lors de la suppression: "));
        QVERIFY(store->showAlert());
        QCOMPARE(rescans.count(), 0);
    }

    void historyGoesBackAndForth()
    {
        auto store = launch();
        const QString root = folder({u"a.md"_s, u"b.md"_s, u"c.md"_s});
        store->openFolder(fileUrl(root)); // opens a.md
        QSignalSpy positions(store.get(), &WorkspaceStore::historyPositionRequest);
        const auto open = [&](const char *name) {
            store->openFile(fileUrl(root + u'/' + QLatin1String(name)));
        };
        const auto at = [&] { return selectedPath(*store).mid(root.size() + 1); };
        open("b.md");
        open("c.md");
        QVERIFY(store->canGoBack() && !store->canGoForward());
        store->goBack();
        QCOMPARE(at(), u"b.md"_s);
        store->goBack();
        QCOMPARE(at(), u"a.md"_s);
        QVERIFY(!store->canGoBack() && store->canGoForward());
        store->goBack(); // nothing before
        QCOMPARE(at(), u"a.md"_s);
        store->goForward();
        QCOMPARE(at(), u"b.md"_s);
        QCOMPARE(positions.count(), 3); // each document reached by travelling, shown where left
        // A new open after going back drops what was ahead.
        open("a.md");
        QVERIFY(!store->canGoForward());
        store->goBack();
        QCOMPARE(at(), u"b.md"_s);
        // A document deleted since is passed over.
        QVERIFY(QFile::remove(root + u"/a.md"_s));
        store->goBack();
        QCOMPARE(at(), u"b.md"_s);
        QVERIFY(!store->canGoBack());
        QVERIFY(!store->showAlert());
        // Another folder starts a new history.
        store->openFolder(fileUrl(folder({u"x.md"_s})));
        QVERIFY(!store->canGoBack() && !store->canGoForward());
    }
};

QTEST_GUILESS_MAIN(TestWorkspaceStore)
#include "tst_workspacestore.moc"
