// Renaming and moving items of a folder with the links that lead to them, the link index behind
// it, new files that never replace one, deletion through the trash, and taking each back.

#include "TestFiles.h"
#include "TestWorkspace.h"
#include "services/DesktopTrash.h"
#include "services/FileSystemService.h"
#include "services/MarkdownLinks.h"
#include "workspace/FolderOperations.h"
#include "workspace/LinkIndex.h"
#include "workspace/WorkspaceStore.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

class TestReorganize : public QObject
{
    Q_OBJECT

private:
    TestWorkspace m_workspace;

    // A store with `folder` open at `file`, watching nothing: each step is driven by the test.
    std::unique_ptr<WorkspaceStore> openStore(const QString &folder, const QString &file)
    {
        auto store = m_workspace.makeStore();
        store->openFolder(QUrl::fromLocalFile(folder), QUrl::fromLocalFile(folder + u'/' + file));
        return store;
    }

private Q_SLOTS:
    void initTestCase()
    {
        // The desktop's trash is looked for under the home folder: here, a scratch one.
        qputenv("HOME", QFile::encodeName(m_workspace.filePath(u"home"_s)));
        qputenv("XDG_DATA_HOME", QFile::encodeName(m_workspace.filePath(u"home/.local/share"_s)));
        QVERIFY(QDir().mkpath(m_workspace.filePath(u"home/.local/share"_s)));
    }

    // The shared table: each move, with the links found by the index and rewritten on disk.
    void rewritesTable_data()
    {
        QTest::addColumn<QJsonObject>("rewrite");
        QFile file(QStringLiteral(PAGEWELL_SHARED_TEST_DATA "/rewrites.json"));
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QJsonArray cases = QJsonDocument::fromJson(file.readAll())[u"cases"_s].toArray();
        QVERIFY(cases.size() >= 5);
        for (const QJsonValue &entry : cases)
            QTest::newRow(entry[u"name"_s].toString().toUtf8().constData()) << entry.toObject();
    }

    void rewritesTable()
    {
        QFETCH(QJsonObject, rewrite);
        const QString folder = m_workspace.folder({});
        const QJsonObject files = rewrite[u"files"_s].toObject();
        for (auto it = files.begin(); it != files.end(); ++it)
            writeFile(folder + u'/' + it.key(), it.value().toString().toUtf8());
        const QJsonArray move = rewrite[u"move"_s].toArray();
        const QString from = folder + u'/' + move[0].toString();
        const QString to = folder + u'/' + move[1].toString();

        const bool rename = QFileInfo(to).path() == QFileInfo(from).path();
        if (!rename)
            QVERIFY(QDir().mkpath(QFileInfo(to).path()));
        auto store = m_workspace.makeStore();
        store->openFolder(QUrl::fromLocalFile(folder));
        const QVariantMap ready = rename
            ? store->prepareRename(QUrl::fromLocalFile(from), to.section(u'/', -1))
            : store->prepareMove(QUrl::fromLocalFile(from),
                                 QUrl::fromLocalFile(QFileInfo(to).path()));
        QCOMPARE(ready[u"refusal"_s].toString(), QString());
        QCOMPARE(ready[u"links"_s].toInt(), rewrite[u"links"_s].toInt());
        store->applyPendingMove(true);
        QCOMPARE(store->alertMessage(), QString());
        QVERIFY(QFileInfo::exists(to));
        QVERIFY(!QFileInfo::exists(from));

        const QJsonObject after = rewrite[u"after"_s].toObject();
        for (auto it = after.begin(); it != after.end(); ++it)
            QCOMPARE(readFile(folder + u'/' + it.key()), it.value().toString().toUtf8());
        // Documents the table does not list kept every byte.
        for (auto it = files.begin(); it != files.end(); ++it) {
            const QString now = LinkRewriter::Move {from, to, QFileInfo(to).isDir()}.apply(
                folder + u'/' + it.key());
            if (!after.contains(now.mid(folder.size() + 1)))
                QCOMPARE(readFile(now), it.value().toString().toUtf8());
        }

        // "Annuler" puts names and texts back.
        store->undoLastOperation();
        QCOMPARE(store->alertMessage(), QString());
        for (auto it = files.begin(); it != files.end(); ++it)
            QCOMPARE(readFile(folder + u'/' + it.key()), it.value().toString().toUtf8());
    }

    // Code, indented code and a footnote hold no links; a nested list's links are links.
    void scannerReadsWhatTheReaderShows()
    {
        const QString text
            = u"Texte [a](a.md)\n\n    [code](b.md)\n\n- liste\n\n    [suite](c.md)\n"
              "\n[^1]: [note](d.md)\n~~~\n[[e]]\n~~~\n`` [f](f.md) `` [g](g.md)\n"_s;
        QStringList targets;
        for (const MarkdownLinks::Span &span : MarkdownLinks::scan(text))
            targets.append(text.mid(span.start, span.length));
        QCOMPARE(targets, (QStringList {u"a.md"_s, u"c.md"_s, u"d.md"_s, u"g.md"_s}));
    }

    // The folder's reading of bytes finds the same links on the same lines as the reading of
    // text, for every document of the shared table and a few harder lines.
    void bytesAndTextReadAlike()
    {
        QFile file(QStringLiteral(PAGEWELL_SHARED_TEST_DATA "/rewrites.json"));
        QVERIFY(file.open(QIODevice::ReadOnly));
        QStringList texts {u"\uFEFF[a](b.md)\r\n  ```\r\n[c](d.md)\r\n  ```\r\n<IMG SRC='x.png'> "
                           "[[é|à]] `[[no]]` [e](f (1).md) [^n]: [g](h.md)\n"_s};
        for (const QJsonValue entry :
             QJsonDocument::fromJson(file.readAll())[u"cases"_s].toArray()) {
            for (const QJsonValue text : entry[u"files"_s].toObject())
                texts.append(text.toString());
        }
        qsizetype total = 0;
        for (const QString &text : std::as_const(texts)) {
            QStringList fromText;
            for (const MarkdownLinks::Span &span : MarkdownLinks::scan(text))
                fromText.append(QString::number(span.line) + u' '
                                + text.mid(span.start, span.length));
            QStringList fromBytes;
            MarkdownLinks::scanUtf8(
                text.toUtf8(),
                [&](int line, QStringView lineText, const QList<MarkdownLinks::Span> &spans) {
                    for (const MarkdownLinks::Span &span : spans)
                        fromBytes.append(QString::number(line) + u' '
                                         + lineText.mid(span.start, span.length).toString());
                });
            QCOMPARE(fromBytes, fromText);
            total += fromText.size();
        }
        QVERIFY(total > 40);
    }

    // The index follows saves and the tree: a link written and saved appears, a new document
    // nearer to the linking one takes its wiki link, and a folder is led to through what it holds.
    void indexFollowsTheFolder()
    {
        const QString folder = m_workspace.folder({u"a/note.md"_s, u"b/x.md"_s});
        writeFile(folder + u"/b/lien.md", "[[note]] [n](../a/note.md)\n");
        FileSystemService service;
        LinkIndex index;
        QSignalSpy changed(&index, &LinkIndex::changed);
        index.update(service.scanDirectory(QUrl::fromLocalFile(folder)));
        QVERIFY(changed.wait());
        QCOMPARE(index.documentsLinkingTo(folder + u"/a/note.md"),
                 QStringList {folder + u"/b/lien.md"});
        QCOMPARE(index.linksTo(folder + u"/a/note.md").size(), 2);
        QCOMPARE(index.linksTo(folder + u"/a").size(), 2);
        QVERIFY(index.linksTo(folder + u"/b/x.md").isEmpty());
        // What leaves a document, as written.
        QStringList written;
        for (const LinkIndex::Link &link : index.linksFrom(folder + u"/b/lien.md"))
            written.append(link.target);
        QCOMPARE(written, (QStringList {u"note"_s, u"../a/note.md"_s}));

        writeFile(folder + u"/b/x.md", "[[lien]]\n");
        index.documentSaved(folder + u"/b/x.md");
        QVERIFY(changed.wait());
        QCOMPARE(index.documentsLinkingTo(folder + u"/b/lien.md"),
                 QStringList {folder + u"/b/x.md"});

        writeFile(folder + u"/b/note.md", "# nearer\n");
        index.update(service.scanDirectory(QUrl::fromLocalFile(folder)));
        index.waitUntilCurrent();
        QVERIFY(index.isCurrent());
        QCOMPARE(index.linksTo(folder + u"/b/note.md").size(), 1);
        QCOMPARE(index.linksTo(folder + u"/a/note.md").size(), 1);
        const LinkIndex::Link link = index.linksTo(folder + u"/b/note.md").first().second;
        QCOMPARE(LinkIndex::lineText(folder + u"/b/lien.md", link),
                 u"[[note]] [n](../a/note.md)"_s);
    }

    // The trash never puts one item over another, and gives back only a free place.
    void trashKeepsEveryItem()
    {
        const QString folder = m_workspace.folder({u"b.md"_s});
        const std::optional<DesktopTrash::Entry> first = DesktopTrash::put(folder + u"/b.md");
        QVERIFY(first);
        writeFile(folder + u"/b.md", "second");
        const std::optional<DesktopTrash::Entry> second = DesktopTrash::put(folder + u"/b.md");
        QVERIFY(second);
        QVERIFY(second->file != first->file);
        QCOMPARE(readFile(first->file), "# b.md\n");
        QCOMPARE(readFile(second->file), "second");
        writeFile(folder + u"/b.md", "third");
        QVERIFY(!DesktopTrash::restore(*first));
        QCOMPARE(readFile(folder + u"/b.md"), "third");
        QVERIFY(QFile::remove(folder + u"/b.md"));
        QVERIFY(DesktopTrash::restore(*second));
        QCOMPARE(readFile(folder + u"/b.md"), "second");
        QVERIFY(!QFileInfo::exists(second->info));
        QVERIFY(QFileInfo::exists(first->info));
    }

    // The open document with unsaved edits: its page text is rewritten as one change and keeps
    // the edits; its file on disk is rewritten too; undo gives both back.
    void openDocumentWithEdits()
    {
        const QString folder = m_workspace.folder({u"cible.md"_s});
        writeFile(folder + u"/index.md", "# Index\n\n[c](cible.md)\n");
        auto store = openStore(folder, u"index.md"_s);
        store->updateDocumentContent(u"# Index modifié\n\n[c](cible.md) [[cible]]\n"_s);
        QSignalSpy replaced(store.get(), &WorkspaceStore::documentTextReplaced);

        const QVariantMap plan
            = store->prepareRename(QUrl::fromLocalFile(folder + u"/cible.md"), u"but.md"_s);
        QCOMPARE(plan[u"links"_s].toInt(), 1); // on disk
        QCOMPARE(plan[u"documents"_s].toStringList(), QStringList {u"index.md"_s});
        store->applyPendingMove(true);
        QCOMPARE(store->currentDocument()->content, u"# Index modifié\n\n[c](but.md) [[but]]\n"_s);
        QVERIFY(store->currentDocument()->isDirty);
        QCOMPARE(replaced.size(), 1);
        QCOMPARE(readFile(folder + u"/index.md"), "# Index\n\n[c](but.md)\n");
        QCOMPARE(store->operationMessage(),
                 u"\u00AB\u00A0cible.md\u00A0\u00BB renomm\u00E9 en \u00AB\u00A0but.md\u00A0\u00BB"
                 "\u00A0; 1 lien mis \u00E0 jour dans 1 document."_s);

        store->undoLastOperation();
        QCOMPARE(store->currentDocument()->content,
                 u"# Index modifié\n\n[c](cible.md) [[cible]]\n"_s);
        QCOMPARE(readFile(folder + u"/index.md"), "# Index\n\n[c](cible.md)\n");
        QVERIFY(QFileInfo::exists(folder + u"/cible.md"));
        QCOMPARE(store->operationMessage(), QString());
    }

    // The open document itself moved: it keeps its text, edits and draft under its new path,
    // and the history and the last file follow it.
    void openDocumentMoved()
    {
        const QString folder = m_workspace.folder({u"a.md"_s, u"archive/"_s});
        writeFile(folder + u"/doc.md", "# Doc\n\n[a](a.md)\n");
        auto store = openStore(folder, u"doc.md"_s);
        store->updateDocumentContent(u"# Doc tapé\n\n[a](a.md)\n"_s);
        QSignalSpy relocated(store.get(), &WorkspaceStore::documentRelocated);
        store->prepareMove(QUrl::fromLocalFile(folder + u"/doc.md"),
                           QUrl::fromLocalFile(folder + u"/archive"));
        store->applyPendingMove(true);
        QCOMPARE(relocated.size(), 1);
        QCOMPARE(store->selectedFileURL(), QUrl::fromLocalFile(folder + u"/archive/doc.md"));
        QCOMPARE(store->currentDocument()->content, u"# Doc tapé\n\n[a](../a.md)\n"_s);
        QVERIFY(store->currentDocument()->isDirty);
        QCOMPARE(readFile(folder + u"/archive/doc.md"), "# Doc\n\n[a](../a.md)\n");
        QVERIFY(
            store->operationMessage().contains(u"d\u00E9plac\u00E9 vers \u00AB\u00A0archive"_s));
        store->flushDraft();
        QVERIFY(QFileInfo::exists(store->drafts().draftPath(folder + u"/archive/doc.md")));
        QVERIFY(!QFileInfo::exists(store->drafts().draftPath(folder + u"/doc.md")));

        // The next launch opens it where it is now.
        auto next = m_workspace.makeStore();
        QCOMPARE(next->currentDocument().has_value(), false);
        store.reset();
    }

    // A document another program changed after the links were counted is left alone and named.
    void changedElsewhereIsLeftAlone()
    {
        const QString folder = m_workspace.folder({u"cible.md"_s});
        writeFile(folder + u"/a.md", "[c](cible.md)\n");
        writeFile(folder + u"/b.md", "[c](cible.md)\n");
        auto store = openStore(folder, u"cible.md"_s);
        QCOMPARE(
            store->prepareRename(QUrl::fromLocalFile(folder + u"/cible.md"), u"x.md"_s)[u"links"_s]
                .toInt(),
            2);
        writeFile(folder + u"/b.md", "[c](cible.md) changé ailleurs\n");
        store->applyPendingMove(true);
        QCOMPARE(readFile(folder + u"/a.md"), "[c](x.md)\n");
        QCOMPARE(readFile(folder + u"/b.md"), "[c](cible.md) changé ailleurs\n");
        QVERIFY(store->showAlert());
        QVERIFY(store->alertMessage().contains(u"b.md (modifi\u00E9 par un autre programme)"_s));
        QVERIFY(store->operationMessage().contains(u"1 lien mis \u00E0 jour dans 1 document"_s));

        // Undo writes back only what is still as written here.
        writeFile(folder + u"/a.md", "[c](x.md) et plus\n");
        store->undoLastOperation();
        QCOMPARE(readFile(folder + u"/a.md"), "[c](x.md) et plus\n");
        QVERIFY(QFileInfo::exists(folder + u"/cible.md"));
    }

    // "Tout remplacer": the open document in its page, edits included, as one change; the
    // others on disk, byte for byte but the matches; one changed since the search left alone;
    // "Annuler" puts back what is still as written.
    void replaceAcrossTheFolder()
    {
        const QString folder = m_workspace.folder({});
        writeFile(folder + u"/a.md", "un chat\r\nle Chat\rchaton\n");
        writeFile(folder + u"/b.md",
                  "\xEF\xBB\xBF"
                  "chat");
        writeFile(folder + u"/c.md", "chat ici\n");
        writeFile(folder + u"/index.md", "# chat\n");
        auto store = openStore(folder, u"index.md"_s);
        store->updateDocumentContent(u"# chat et chat\n"_s);
        store->setSearchOptions({false, true, false}); // chaton stays
        store->updateSearch(u"chat"_s);
        QTRY_VERIFY(!store->isSearching());
        QCOMPARE(store->searchResults().size(), 4);
        writeFile(folder + u"/c.md", "chat ici, changé ailleurs\n");

        QSignalSpy replaced(store.get(), &WorkspaceStore::documentTextReplaced);
        store->replaceAll(u"chien"_s);
        QCOMPARE(store->currentDocument()->content, u"# chien et chien\n"_s);
        QVERIFY(store->currentDocument()->isDirty);
        QCOMPARE(replaced.size(), 1);
        QTRY_VERIFY(!store->isReplacing());
        QCOMPARE(readFile(folder + u"/a.md"), "un chien\r\nle chien\rchaton\n");
        QCOMPARE(readFile(folder + u"/b.md"),
                 "\xEF\xBB\xBF"
                 "chien");
        QCOMPARE(readFile(folder + u"/c.md"), "chat ici, changé ailleurs\n");
        QCOMPARE(readFile(folder + u"/index.md"), "# chat\n");
        QCOMPARE(store->operationMessage(), u"5 occurrences remplac\u00E9es dans 3 documents."_s);
        QVERIFY(store->showAlert());
        QVERIFY(store->alertMessage().contains(u"c.md (modifi\u00E9 par un autre programme)"_s));
        // The search runs again on what was written.
        QTRY_VERIFY(!store->isSearching());
        QCOMPARE(store->searchResults().size(), 2); // c.md, and index.md as saved

        // Undo: b.md was changed since, so only a.md and the page go back.
        writeFile(folder + u"/b.md", "chien, et plus\n");
        store->undoLastOperation();
        QCOMPARE(store->currentDocument()->content, u"# chat et chat\n"_s);
        QCOMPARE(replaced.size(), 2);
        QTRY_VERIFY(!store->isReplacing());
        QCOMPARE(readFile(folder + u"/a.md"), "un chat\r\nle Chat\rchaton\n");
        QCOMPARE(readFile(folder + u"/b.md"), "chien, et plus\n");
        QCOMPARE(store->operationMessage(), QString());
        QVERIFY(store->alertMessage().contains(u"b.md (modifi\u00E9 par un autre programme)"_s));

        // An expression's groups; one occurrence in one document said in the singular.
        store->dismissOperation();
        store->setSearchOptions({true, false, true});
        store->updateSearch(u"(un) (chat)"_s);
        QTRY_VERIFY(!store->isSearching());
        store->replaceAll(u"$2 $1 $&"_s);
        QTRY_VERIFY(!store->isReplacing());
        QCOMPARE(readFile(folder + u"/a.md"), "chat un un chat\r\nle Chat\rchaton\n");
        QCOMPARE(store->operationMessage(), u"1 occurrence remplac\u00E9e dans 1 document."_s);
    }

    // What may be renamed or moved where; "Ne pas les modifier" moves without a link changed.
    void refusalsAndLinksKeptAsWritten()
    {
        const QString folder
            = m_workspace.folder({u"Guide.md"_s, u"autre.md"_s, u"doc/"_s, u"doc/sous/"_s});
        writeFile(folder + u"/index.md", "[g](Guide.md)\n");
        auto store = openStore(folder, u"index.md"_s);
        const QUrl guide = QUrl::fromLocalFile(folder + u"/Guide.md");
        const QUrl doc = QUrl::fromLocalFile(folder + u"/doc");
        QCOMPARE(store->renameRefusal(guide, u"autre.md"_s),
                 u"\u00AB\u00A0autre.md\u00A0\u00BB existe d\u00E9j\u00E0 dans ce dossier."_s);
        QCOMPARE(store->renameRefusal(guide, u"guide.md"_s), QString());
        QVERIFY(!store->renameRefusal(guide, u"a/b.md"_s).isEmpty());
        QVERIFY(!store->renameRefusal(guide, u"  "_s).isEmpty());
        QVERIFY(!store->canMoveInto(doc, doc));
        QVERIFY(!store->canMoveInto(doc, QUrl::fromLocalFile(folder + u"/doc/sous")));
        QVERIFY(!store->canMoveInto(doc, QUrl::fromLocalFile(folder)));
        QVERIFY(store->canMoveInto(guide, doc));
        QVERIFY(!store->prepareMove(doc, QUrl::fromLocalFile(folder + u"/doc/sous"))[u"refusal"_s]
                     .toString()
                     .isEmpty());
        QVERIFY(store->showAlert());
        store->setShowAlert(false);

        store->prepareMove(guide, doc);
        store->applyPendingMove(false);
        QVERIFY(QFileInfo::exists(folder + u"/doc/Guide.md"));
        QCOMPARE(readFile(folder + u"/index.md"), "[g](Guide.md)\n");
        QCOMPARE(
            store->operationMessage(),
            u"\u00AB\u00A0Guide.md\u00A0\u00BB d\u00E9plac\u00E9 vers \u00AB\u00A0doc\u00A0\u00BB."_s);
    }

    // A new file never replaces one: "untitled 2.md" after "untitled.md", a taken name refused.
    void newFileNeverReplaces()
    {
        const QString folder = m_workspace.folder({});
        auto store = openStore(folder, QString());
        store->createUntitledFile();
        store->updateDocumentContent(u"# Tapé\n"_s);
        store->saveCurrentDocument();
        store->createUntitledFile();
        QCOMPARE(readFile(folder + u"/untitled.md"), "# Tapé\n");
        QVERIFY(QFileInfo::exists(folder + u"/untitled 2.md"));
        QCOMPARE(store->selectedFileURL(), QUrl::fromLocalFile(folder + u"/untitled 2.md"));

        QCOMPARE(store->newFileRefusal(u"untitled"_s),
                 u"\u00AB\u00A0untitled.md\u00A0\u00BB existe d\u00E9j\u00E0 dans ce dossier."_s);
        QCOMPARE(store->newFileRefusal(u"nouveau"_s), QString());
        store->createNewFile(u"untitled.md"_s);
        QVERIFY(store->showAlert());
        QCOMPARE(readFile(folder + u"/untitled.md"), "# Tapé\n");
    }

    // Deletion goes to the trash and comes back from it, a file and a folder.
    void deletionThroughTheTrash()
    {
        const QString folder = m_workspace.folder({u"a.md"_s, u"dossier/b.md"_s});
        auto store = openStore(folder, u"a.md"_s);
        const QString trash = QString::fromLocal8Bit(qgetenv("XDG_DATA_HOME")) + u"/Trash"_s;
        store->deleteFile(QUrl::fromLocalFile(folder + u"/a.md"));
        QVERIFY(!QFileInfo::exists(folder + u"/a.md"));
        // Where a file manager finds it, with the record that puts it back.
        QCOMPARE(readFile(trash + u"/files/a.md"_s), "# a.md\n");
        const QByteArray record
            = "[Trash Info]\nPath=" + QUrl::toPercentEncoding(folder, "/") + "/a.md\nDeletionDate=";
        QVERIFY(readFile(trash + u"/info/a.md.trashinfo"_s).startsWith(record));
        QVERIFY(!store->currentDocument());
        QCOMPARE(store->operationMessage(),
                 u"\u00AB\u00A0a.md\u00A0\u00BB a \u00E9t\u00E9 mis \u00E0 la corbeille."_s);
        store->undoLastOperation();
        QCOMPARE(readFile(folder + u"/a.md"), "# a.md\n");
        QVERIFY(!QFileInfo::exists(trash + u"/info/a.md.trashinfo"_s));
        QCOMPARE(store->selectedFileURL(), QUrl::fromLocalFile(folder + u"/a.md"));

        store->deleteFile(QUrl::fromLocalFile(folder + u"/dossier"));
        QVERIFY(!QFileInfo::exists(folder + u"/dossier"));
        QVERIFY(!store->rootItem()->descendant(QString(folder + u"/dossier")));
        store->undoLastOperation();
        QCOMPARE(readFile(folder + u"/dossier/b.md"), "# dossier/b.md\n");

        // No trash can be made: the window is asked, and nothing is removed until it answers.
        QVERIFY(QDir(trash).removeRecursively());
        writeFile(trash, "pas un dossier");
        QSignalSpy asked(store.get(), &WorkspaceStore::permanentDeletionRequest);
        store->deleteFile(QUrl::fromLocalFile(folder + u"/dossier/b.md"));
        QVERIFY(QFile::remove(trash));
        QCOMPARE(asked.size(), 1);
        QCOMPARE(asked[0][1].toString(), u"b.md"_s);
        QVERIFY(QFileInfo::exists(folder + u"/dossier/b.md"));
        store->deletePermanently(QUrl::fromLocalFile(folder + u"/dossier/b.md"));
        QVERIFY(!QFileInfo::exists(folder + u"/dossier/b.md"));
    }

    // The links that lead to the open document, kept current by saves made elsewhere.
    void backlinksFollowSaves()
    {
        const QString folder = m_workspace.folder({u"b.md"_s, u"guide/c.md"_s});
        writeFile(folder + u"/a.md", "# A\n\nVoir [B](b.md).\n\n```\n[pas un lien](b.md)\n```\n");
        auto store = openStore(folder, u"b.md"_s);
        QTRY_COMPARE(store->backlinks().size(), 1);
        QCOMPARE(store->backlinks()[0].path, folder + u"/a.md");
        QCOMPARE(store->backlinks()[0].line, 2);
        QCOMPARE(store->backlinks()[0].lineText, u"Voir [B](b.md)."_s);

        QSignalSpy changed(store.get(), &WorkspaceStore::backlinksChanged);
        store->openFile(QUrl::fromLocalFile(folder + u"/guide/c.md"));
        store->updateDocumentContent(u"# C\n\n[[b]]\n"_s);
        store->saveCurrentDocument();
        store->openFile(QUrl::fromLocalFile(folder + u"/b.md"));
        QTRY_COMPARE(store->backlinks().size(), 2);
        QCOMPARE(store->backlinks()[1].path, folder + u"/guide/c.md");
        QVERIFY(changed.size() >= 2);
    }
};

QTEST_GUILESS_MAIN(TestReorganize)
#include "tst_reorganize.moc"
