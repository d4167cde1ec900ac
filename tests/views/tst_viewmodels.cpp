#include "../core/TestWorkspace.h"
#include "EditorHeaderModel.h"
#include "FolderTreeModel.h"
#include "OutlineModel.h"
#include "QuickOpenModel.h"
#include "SearchResultsModel.h"
#include "model/DocumentStatistics.h"
#include "model/FileUrl.h"

#include <QAbstractItemModelTester>
#include <QGuiApplication>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

QStringList column(const QAbstractItemModel &model, int role)
{
    QStringList values;
    for (int row = 0; row < model.rowCount(); ++row)
        values.append(model.data(model.index(row, 0), role).toString());
    return values;
}

} // namespace

class TestViewModels : public QObject
{
    Q_OBJECT

    TestWorkspace m_workspace;

    std::unique_ptr<WorkspaceStore> makeStore() { return m_workspace.makeStore(); }
    QString folder(const QStringList &files) { return m_workspace.folder(files); }

private Q_SLOTS:
    void treeOpensRootFoldersAndTogglesInPlace()
    {
        auto store = makeStore();
        const QString root = folder(
            {u"A/C/deep.md"_s, u"A/a.md"_s, u"B/b.txt"_s, u"x.md"_s, u"z.svg"_s, u"y.txt"_s});
        store->openFolder(QUrl::fromLocalFile(root));
        FolderTreeModel model;
        QAbstractItemModelTester tester(&model);
        model.setStore(store.get());

        // The root's folders open; deeper ones stay closed.
        QCOMPARE(column(model, FolderTreeModel::NameRole),
                 (QStringList {u"A"_s, u"C"_s, u"a.md"_s, u"B"_s, u"b.txt"_s, u"x.md"_s, u"y.txt"_s,
                               u"z.svg"_s}));
        QCOMPARE(column(model, FolderTreeModel::DepthRole),
                 (QStringList {u"0"_s, u"1"_s, u"1"_s, u"0"_s, u"1"_s, u"0"_s, u"0"_s, u"0"_s}));
        QCOMPARE(
            column(model, FolderTreeModel::SymbolRole),
            (QStringList {u"folder.fill"_s, u"folder.fill"_s, u"doc.text.fill"_s, u"folder.fill"_s,
                          u"doc"_s, u"doc.text.fill"_s, u"doc"_s, u"chart.bar.doc.horizontal"_s}));
        // Badges count Markdown below a folder; B has none.
        QCOMPARE(column(model, FolderTreeModel::BadgeCountRole).mid(0, 4),
                 (QStringList {u"2"_s, u"1"_s, u"0"_s, u"0"_s}));
        QCOMPARE(model.parentRow(2), 0);
        QCOMPARE(model.parentRow(3), -1);

        // Opening and closing a folder inserts and removes just its rows.
        QSignalSpy inserted(&model, &QAbstractItemModel::rowsInserted);
        QSignalSpy removed(&model, &QAbstractItemModel::rowsRemoved);
        QSignalSpy reset(&model, &QAbstractItemModel::modelReset);
        const QUrl selected = store->selectedFileURL();
        model.activate(1); // C
        QCOMPARE(inserted.count(), 1);
        QCOMPARE(inserted.at(0).at(1).toInt(), 2);
        QCOMPARE(model.data(model.index(2), FolderTreeModel::NameRole).toString(), u"deep.md"_s);
        QCOMPARE(model.data(model.index(2), FolderTreeModel::DepthRole).toInt(), 2);
        model.activate(0); // A, with C open inside
        QCOMPARE(removed.count(), 1);
        QCOMPARE(removed.at(0).at(2).toInt(), 3);
        QCOMPARE(model.count(), 6);
        QCOMPARE(store->selectedFileURL(), selected); // a folder click selects nothing
        model.activate(0);
        QCOMPARE(model.count(), 9); // C is still open inside A
        QCOMPARE(reset.count(), 0);

        // A file click opens it, and the row shows as selected.
        model.activate(3); // a.md
        QCOMPARE(FileUrl::path(store->selectedFileURL()), root + u"/A/a.md"_s);
        QVERIFY(model.data(model.index(3), FolderTreeModel::IsSelectedRole).toBool());
        QCOMPARE(model.selectedRow(), 3);

        // A rescan keeps what is open and touches only the rows that changed.
        inserted.clear();
        removed.clear();
        store->createNewFile(u"new"_s, QUrl::fromLocalFile(root + u"/A/C"_s));
        QCOMPARE(reset.count(), 0);
        QCOMPARE(inserted.count(), 1);
        QCOMPARE(removed.count(), 0);
        QVERIFY(column(model, FolderTreeModel::NameRole).contains(u"new.md"_s));
        QCOMPARE(model.data(model.index(0), FolderTreeModel::BadgeCountRole).toInt(), 3);
        // An announcement of the same tree changes nothing.
        inserted.clear();
        QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
        Q_EMIT store->rootItemChanged();
        QCOMPARE(inserted.count() + removed.count() + changed.count(), 0);

        // A folder that is gone leaves the expanded set.
        QVERIFY(model.expandedFolderIds().contains(root + u"/A/C"_s));
        store->deleteFile(FileUrl::fromPath(root + u"/A"_s));
        QVERIFY(!model.expandedFolderIds().contains(root + u"/A/C"_s));
        QCOMPARE(column(model, FolderTreeModel::NameRole),
                 (QStringList {u"B"_s, u"b.txt"_s, u"x.md"_s, u"y.txt"_s, u"z.svg"_s}));
        QVERIFY(!model.isEmptyFolder());
    }

    void searchRowsAndSummary()
    {
        QCOMPARE(SearchResultsModel::summaryText(1, 1), u"1 résultat dans 1 fichier"_s);
        QCOMPARE(SearchResultsModel::summaryText(2, 1), u"2 résultats dans 1 fichier"_s);

        auto store = makeStore();
        const QString root = folder({u"b.md"_s, u"sub/a.md"_s, u"c.md"_s});
        writeFile(root + u"/b.md"_s, "alpha\nnothing\nalpha beta\n");
        writeFile(root + u"/sub/a.md"_s, "x\nALPHA\n");
        store->openFolder(QUrl::fromLocalFile(root));
        SearchResultsModel model;
        QAbstractItemModelTester tester(&model);
        model.setStore(store.get());
        QVERIFY(!model.showsStatus());
        QVERIFY(!model.showsEmptyState());

        store->updateSearch(u"alpha"_s);
        QVERIFY(model.isSearching());
        QVERIFY(!model.showsEmptyState());
        QTRY_VERIFY(!store->isSearching());
        QCOMPARE(model.summaryText(), u"3 résultats dans 2 fichiers"_s);
        QCOMPARE(model.count(), 5);
        QCOMPARE(column(model, SearchResultsModel::IsFileRole),
                 (QStringList {u"true"_s, u"false"_s, u"true"_s, u"false"_s, u"false"_s}));
        QCOMPARE(column(model, SearchResultsModel::FileNameRole).at(0), u"a.md"_s);
        QCOMPARE(model.data(model.index(0), SearchResultsModel::HitCountRole).toInt(), 1);
        QCOMPARE(model.data(model.index(1), SearchResultsModel::RelativePathRole).toString(),
                 u"sub/a.md"_s);
        QCOMPARE(column(model, SearchResultsModel::LineNumberRole).mid(3),
                 (QStringList {u"1"_s, u"3"_s}));
        QCOMPARE(model.data(model.index(4), SearchResultsModel::LineContentRole).toString(),
                 u"alpha beta"_s);
        // A hit opens its file at its line, its first match selected; a file row at its start.
        QSignalSpy reveal(store.get(), &WorkspaceStore::matchRevealRequest);
        model.open(4);
        QCOMPARE(FileUrl::path(store->selectedFileURL()), root + u"/b.md"_s);
        QCOMPARE(reveal.size(), 1);
        QCOMPARE(reveal.at(0), (QVariantList {2, 0, 5}));
        model.open(0);
        QCOMPARE(FileUrl::path(store->selectedFileURL()), root + u"/sub/a.md"_s);
        QCOMPARE(reveal.size(), 1);
        // "Tout remplacer" asks about matches, not lines.
        QCOMPARE(model.occurrenceCount(), 3);
        QCOMPARE(model.replaceQuestion(), u"Remplacer 3 occurrences dans 2 documents ?"_s);
        QVERIFY(model.data(model.index(4), SearchResultsModel::ExcerptRole)
                    .toString()
                    .contains(u">alpha</span> beta"_s));

        // The same list announced again is not published again.
        QSignalSpy reset(&model, &QAbstractItemModel::modelReset);
        Q_EMIT store->searchResultsChanged();
        QCOMPARE(reset.count(), 0);

        store->updateSearch(u"zzz"_s);
        QTRY_VERIFY(!store->isSearching());
        QCOMPARE(model.summaryText(), u"0 résultat dans 0 fichier"_s);
        QVERIFY(model.showsEmptyState());
        QCOMPARE(model.count(), 0);
    }

    // A hit's excerpt: its matches highlighted, a long line cut around the first one.
    void searchExcerpts()
    {
        const QColor mark(1, 2, 3);
        const QString on = u"<span style=\"background-color:#010203\">"_s;
        const auto plain
            = [](QString html) { return html.remove(QRegularExpression(u"<[^>]*>"_s)); };
        // Offsets count from the untrimmed line: two spaces went from its start. Markup in the
        // text stays text.
        const QString short_ = SearchResultsModel::excerpt(u"a <b> a & a"_s,
                                                           {{2, 3}, {8, 9}, {12, 13}}, 2, 60, mark);
        QCOMPARE(short_,
                 u"<span style=\"white-space:pre-wrap\">"_s + on + u"a</span> &lt;b&gt; "_s + on
                     + u"a</span> &amp; "_s + on + u"a</span></span>"_s);

        // 200 characters, the match at 120: the cut starts at a word shortly before it, ends
        // within the budget, and says so at both ends.
        QString line;
        for (int i = 0; i < 40; ++i)
            line += u"mot%1 "_s.arg(i % 10);
        line.replace(120, 6, u"CIBLE "_s);
        const QString cut = plain(SearchResultsModel::excerpt(line, {{120, 125}}, 0, 60, mark));
        QVERIFY(cut.startsWith(u'\u2026') && cut.endsWith(u'\u2026'));
        QVERIFY(cut.size() <= 60);
        const qsizetype at = cut.indexOf(u"CIBLE"_s);
        QVERIFY(at > 1 && at < 20);
        QCOMPARE(cut.at(1), u'm'); // from a word's start
        QVERIFY(SearchResultsModel::excerpt(line, {{120, 125}}, 0, 60, mark)
                    .contains(on + u"CIBLE</span>"_s));
        // A match near the end: the cut keeps the end and shows as much before as fits.
        const QString end = plain(SearchResultsModel::excerpt(line, {{196, 199}}, 0, 60, mark));
        QVERIFY(end.startsWith(u'\u2026') && !end.endsWith(u'\u2026'));
        QCOMPARE(end.size(), 60);
        QVERIFY(line.endsWith(end.mid(1)));
        // A match beyond the cut is not drawn; one outside the trimmed text neither.
        const QString first = SearchResultsModel::excerpt(line, {{0, 3}, {190, 193}}, 0, 60, mark);
        QCOMPARE(first.count(on), 1);
        QVERIFY(!plain(first).startsWith(u'\u2026'));
        QCOMPARE(SearchResultsModel::excerpt(u"x"_s, {{5, 7}}, 0, 60, mark).count(on), 0);
    }

    void outlineRowsAndRequests()
    {
        auto store = makeStore();
        store->openFolder(QUrl::fromLocalFile(folder({u"doc.md"_s})));
        OutlineModel model;
        QAbstractItemModelTester tester(&model);
        model.setStore(store.get());
        QVERIFY(model.hasDocument());
        QCOMPARE(model.count(), 0);
        QVERIFY(model.sizeText().startsWith(u"Taille : "_s));
        QVERIFY(model.modifiedText().startsWith(u"Modifié le : "_s));

        QSignalSpy reset(&model, &QAbstractItemModel::modelReset);
        const QList<HeadingItem> headings
            = {{u"intro"_s, 1, u"Intro"_s}, {u"l'étape"_s, 3, u"L'étape"_s}};
        store->updateHeadings(headings);
        QCOMPARE(reset.count(), 1);
        QCOMPARE(column(model, OutlineModel::TagRole), (QStringList {u"H1"_s, u"H3"_s}));
        QCOMPARE(column(model, OutlineModel::IndentationRole), (QStringList {u""_s, u"    "_s}));
        // Typing neither resets the list nor reads the file's facts again.
        QSignalSpy facts(&model, &OutlineModel::documentChanged);
        store->updateDocumentContent(u"# Intro\n"_s);
        store->updateDocumentContent(u"# Intro\nmore\n"_s);
        QCOMPARE(reset.count(), 1);
        QCOMPARE(facts.count(), 1); // the first edit: the document becomes modified
        store->saveCurrentDocument();
        QCOMPARE(facts.count(), 2); // its save time

        QSignalSpy requests(store.get(), &WorkspaceStore::headingScrollRequest);
        model.scrollTo(1);
        model.scrollTo(1);
        QCOMPARE(requests.count(), 2);
        QCOMPARE(requests.at(1).at(0).toString(), u"l'étape"_s);

        // The size follows the file on disk while the document keeps its edits.
        store->startWatching();
        QSignalSpy ready(store->watcher(), &FolderWatcher::ready);
        QVERIFY(ready.wait());
        const QString path = FileUrl::path(store->currentDocument()->fileURL);
        writeFile(path, QByteArray(5000, 'x'));
        QTRY_COMPARE_WITH_TIMEOUT(model.sizeText(), u"Taille : 5.0 kB"_s, 2000);
        QFile::remove(path);
        QTRY_COMPARE_WITH_TIMEOUT(model.sizeText(), u"Taille : -"_s, 2000);
    }

    void quickOpenFollowsTheFolderWhileShown()
    {
        auto store = makeStore();
        const QString root = folder({u"README.md"_s, u"guide/install.md"_s, u"api/index.md"_s});
        store->openFolder(QUrl::fromLocalFile(root));
        QuickOpenModel model;
        QAbstractItemModelTester tester(&model);
        model.setStore(store.get());
        model.setQuery(u"inst"_s);
        QCOMPARE(model.count(), 0); // hidden: nothing read

        model.setActive(true);
        QCOMPARE(column(model, QuickOpenModel::NameRole), QStringList {u"install.md"_s});
        QCOMPARE(column(model, QuickOpenModel::FolderRole), QStringList {u"guide"_s});
        QCOMPARE(column(model, QuickOpenModel::AccessibleNameRole),
                 QStringList {u"install.md, guide"_s});
        // A new document is in the list at once, from the tree.
        store->createNewFile(u"instances"_s, QUrl::fromLocalFile(root));
        QCOMPARE(column(model, QuickOpenModel::NameRole),
                 (QStringList {u"instances.md"_s, u"install.md"_s}));
        // Nothing typed: the documents opened, the most recent first; Return opens.
        model.setQuery(QString());
        QCOMPARE(column(model, QuickOpenModel::NameRole),
                 (QStringList {u"instances.md"_s, u"README.md"_s}));
        model.setQuery(u"apiidx"_s);
        model.open(0);
        QCOMPARE(store->currentDocument()->fileURL, QUrl::fromLocalFile(root + u"/api/index.md"_s));
    }

    void headerTextsAndRelativePath()
    {
        // Every occurrence goes, not only a leading one.
        QCOMPARE(EditorHeaderModel::relativePath(u"/w/docs/x/w/docs/a.md"_s, u"/w/docs"_s),
                 u"xa.md"_s);
        QCOMPARE(DocumentStatistics::readingTimeText(200), u"~1 min de lecture"_s);
        QCOMPARE(DocumentStatistics::readingTimeText(201), u"~2 min de lecture"_s);

        auto store = makeStore();
        const QString root = folder({u"docs/api/name.md"_s});
        store->openFolder(QUrl::fromLocalFile(root));
        EditorHeaderModel header;
        header.setStore(store.get());
        QCOMPARE(header.fileName(), u"name.md"_s);
        QCOMPARE(header.relativePath(), u"docs/api/name.md"_s);
        QVERIFY(!header.isDirty());
        QCOMPARE(header.wordsText(), u"2 mots"_s); // "# docs/api/name.md"

        QSignalSpy statistics(&header, &EditorHeaderModel::statisticsChanged);
        store->updateDocumentContent(QString());
        QVERIFY(header.isDirty());
        QCOMPARE(header.wordsText(), u"0 mots"_s);
        QCOMPARE(header.charactersText(), u"0 car."_s);
        QCOMPARE(header.readingTimeText(), u"~1 min de lecture"_s);
        QCOMPARE(statistics.count(), 1);
        // A heading update does not count the text again.
        store->updateHeadings({});
        QCOMPARE(statistics.count(), 1);
        store->updateDocumentContent(u"e\u0301t\u00E9 \U0001F1EB\U0001F1F7\r\n"_s);
        QCOMPARE(header.charactersText(), u"6 car."_s); // e+accent, t, é, space, flag, CR LF
        // Words part at every kind of space, the French no-break one among them.
        store->updateDocumentContent(u"un\u00A0deux\u2028trois\u3000quatre,cinq \U0001F600"_s);
        QCOMPARE(header.wordsText(), u"5 mots"_s);
        QCOMPARE(DocumentStatistics::characterCount(u"👨\u200D👩\u200D👧 a\r\nb"_s), 5);
    }
};

QTEST_MAIN(TestViewModels)
#include "tst_viewmodels.moc"
