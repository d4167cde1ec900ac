// The editor page's protocol, decided by the coordinator, against a real store and without a web
// view: every call it asks for is recorded as the page would receive it.
#include "../core/TestWorkspace.h"
#include "Coordinator.h"
#include "EditorScripts.h"
#include "LocalFileGuard.h"
#include "model/FileUrl.h"

#include <QJsonDocument>
#include <QSettings>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

struct Recorder
{
    QStringList scripts;
    QList<bool> completions;
    // The link facts come from a worker thread whenever it is done: their own test only.
    bool withLinkFacts = false;
};

} // namespace

class TestCoordinator : public QObject
{
    Q_OBJECT

    TestWorkspace m_workspace;

    std::unique_ptr<WorkspaceStore> makeStore() { return m_workspace.makeStore(); }
    QString folder(const QStringList &files) { return m_workspace.folder(files); }

    // A coordinator as the view makes it: store and appearance set, then completed.
    std::unique_ptr<Coordinator> makeCoordinator(WorkspaceStore *store, bool dark,
                                                 Recorder &recorder)
    {
        auto coordinator = std::make_unique<Coordinator>();
        connect(coordinator.get(), &Coordinator::scriptRequested, this,
                [&recorder](const QString &script, bool completion) {
                    if (!recorder.withLinkFacts && script.contains(u"setLinkFacts("_s))
                        return;
                    recorder.scripts.append(script);
                    recorder.completions.append(completion);
                });
        coordinator->classBegin();
        coordinator->setStore(store);
        coordinator->setDark(dark);
        coordinator->componentComplete();
        return coordinator;
    }

    static QVariantMap json(const char *text)
    {
        return QJsonDocument::fromJson(text).object().toVariantMap();
    }

private Q_SLOTS:
    void encodings()
    {
        const QString text = u"a `b` c\\d ${e} $f 'g' \"h\"\r\nfin"_s;
        QCOMPARE(EditorScripts::templateLiteral(text),
                 u"`a \\`b\\` c\\\\d \\${e} \\$f 'g' \"h\"\\r\nfin`"_s);
        QCOMPARE(EditorScripts::templateLiteral(u"a\rb\u2028c"_s), u"`a\\rb\u2028c`"_s);
        QCOMPARE(EditorScripts::quoted(u"l'étape\\x"_s), u"'l\\'étape\\\\x'"_s);

        // In pieces: each a literal of at most 4 Ki units, a surrogate pair never cut, and the
        // pieces read back give the text.
        QString large;
        while (large.size() < 4'095)
            large += u"é`$\\\r\n"_s;
        large.truncate(4'095);
        large += u"😀"_s + QString(5'000, u'x') + u"\r"_s;
        const QString pieces = EditorScripts::templateLiteralPieces(large);
        const QStringList literals = pieces.split(u"`+`"_s);
        QCOMPARE(literals.size(), 3);
        QString decoded;
        for (const QString &literal : literals) {
            const QStringView body = QStringView(literal)
                                         .sliced(literal.startsWith(u'`'))
                                         .chopped(literal.endsWith(u'`'));
            QString piece;
            for (qsizetype i = 0; i < body.size(); ++i) {
                const bool escape = body[i] == u'\\';
                piece += escape && body[i + 1] == u'r' ? QChar(u'\r') : body[i + escape];
                i += escape;
            }
            QVERIFY(piece.size() <= 4'096);
            QVERIFY(!piece.back().isHighSurrogate());
            decoded += piece;
        }
        QCOMPARE(decoded.size(), large.size());
        QCOMPARE(decoded, large);
        QCOMPARE(EditorScripts::templateLiteralPieces(u"court"_s), u"`court`"_s);
        // The calls that carry a whole document hold the same pieces, an empty one included.
        QCOMPARE(EditorScripts::replaceCall(large),
                 u"window.Pagewell && window.Pagewell.replaceContent("_s + pieces + u");"_s);
        QVERIFY(EditorScripts::startCall(large, u"/d/a.md"_s, false)
                    .endsWith(u"("_s + pieces + u");"_s));
        QVERIFY(EditorScripts::startCall(QString(), u"/d/a.md"_s, true).endsWith(u"(``);"_s));
    }

    void callsFollowTheFileAndTheLook()
    {
        auto store = makeStore();
        Recorder empty;
        auto withoutDocument = makeCoordinator(store.get(), true, empty);
        withoutDocument->navigationFinished();
        QCOMPARE(empty.scripts.last(), u"window.Pagewell && window.Pagewell.init('', true);"_s);

        const QString root = folder({u"a.md"_s, u"l'équipe.md"_s});
        store->openFolder(QUrl::fromLocalFile(root), QUrl::fromLocalFile(root + u"/a.md"_s));
        Recorder calls;
        auto coordinator = makeCoordinator(store.get(), false, calls);
        // Before the page has loaded: no document. The appearance changes while it loads: the
        // start call carries the one the view was made with, the folder before it.
        coordinator->setDark(true);
        QVERIFY(!calls.scripts.join(u'\n').contains(u"setContent"_s));
        calls.scripts.clear();
        coordinator->navigationFinished();
        QCOMPARE(
            calls.scripts,
            (QStringList {u"window.Pagewell && window.Pagewell.setFolder('"_s + root + u"');"_s,
                          u"window.Pagewell && ((t) => (window.Pagewell.init(t, false), "
                          u"window.Pagewell.setContent(t, '"_s
                              + root + u"/a.md')))(`# a.md\n`);"_s}));
        QVERIFY(!coordinator->isInternalUpdate());

        // Another file: one call, with a completion, its quote escaped in the path.
        calls.scripts.clear();
        store->openFile(QUrl::fromLocalFile(root + u"/l'équipe.md"_s));
        QCOMPARE(calls.scripts.size(), 1);
        QVERIFY(calls.scripts.at(0).endsWith(u"/l\\'équipe.md');"_s));
        QCOMPARE(calls.completions.last(), true);
        QVERIFY(coordinator->isInternalUpdate());
        coordinator->contentCallFinished();
        QVERIFY(!coordinator->isInternalUpdate());

        // Edits and heading updates send nothing back; a theme call goes once per change.
        calls.scripts.clear();
        store->updateDocumentContent(u"edited"_s);
        store->updateHeadings({});
        coordinator->setDark(false);
        coordinator->setDark(false);
        QCOMPARE(calls.scripts,
                 QStringList {u"window.Pagewell && window.Pagewell.setTheme('light');"_s});
        // Another folder is told to the page.
        const QString other = folder({u"b.md"_s});
        store->openFolder(QUrl::fromLocalFile(other));
        QVERIFY(calls.scripts.contains(u"window.Pagewell && window.Pagewell.setFolder('"_s + other
                                       + u"');"_s));
    }

    void sourceShownIsRememberedAndToldToThePage()
    {
        QTemporaryDir scratch;
        const QString settings = scratch.filePath(u"settings.ini"_s);
        auto makeRemembering = [&] {
            return std::make_unique<WorkspaceStore>(
                std::make_unique<QSettings>(settings, QSettings::IniFormat),
                m_workspace.draftsFolder());
        };
        const QString call = u"window.Pagewell && window.Pagewell.setShowSource(true);"_s;
        auto store = makeRemembering();
        QVERIFY(!store->showSource());
        Recorder calls;
        auto coordinator = makeCoordinator(store.get(), false, calls);
        // Before the page is there, nothing; the page's start says nothing of the default.
        store->setShowSource(true);
        store->setShowSource(false);
        coordinator->navigationFinished();
        QVERIFY(!calls.scripts.join(u'\n').contains(u"setShowSource"_s));
        store->setShowSource(true);
        store->setShowSource(true);
        QCOMPARE(calls.scripts.filter(u"setShowSource"_s), QStringList {call});

        // The next launch remembers it, and tells the page before its start.
        store.reset();
        auto next = makeRemembering();
        QVERIFY(next->showSource());
        Recorder started;
        auto nextCoordinator = makeCoordinator(next.get(), false, started);
        nextCoordinator->navigationFinished();
        const qsizetype told = started.scripts.indexOf(call);
        QVERIFY(told >= 0);
        const qsizetype start
            = started.scripts.indexOf(QRegularExpression(u".*Pagewell\\.init\\(.*"_s));
        QVERIFY(start > told);
        next->setShowSource(false);
        QCOMPARE(started.scripts.last(),
                 u"window.Pagewell && window.Pagewell.setShowSource(false);"_s);
    }

    void messages()
    {
        auto store = makeStore();
        const QString root = folder({u"a.md"_s, u"b.md"_s});
        store->openFolder(QUrl::fromLocalFile(root));
        Recorder calls;
        auto coordinator = makeCoordinator(store.get(), false, calls);
        coordinator->navigationFinished();
        store->openFile(QUrl::fromLocalFile(root + u"/b.md"_s));
        store->openFile(QUrl::fromLocalFile(root + u"/a.md"_s));
        QVERIFY(coordinator->isInternalUpdate());

        // The echo of the content call is dropped; handling waits for the event loop, and the
        // in-flight test is made then.
        coordinator->receiveMessage(json(R"({"type":"contentChanged","markdown":"echo"})"));
        QCOMPARE(store->currentDocument()->content, u"# a.md\n"_s);
        QCoreApplication::processEvents();
        QVERIFY(!store->currentDocument()->isDirty);
        coordinator->contentCallFinished();
        coordinator->receiveMessage(json(R"({"type":"contentChanged","markdown":"typed"})"));
        QCoreApplication::processEvents();
        QCOMPARE(store->currentDocument()->content, u"typed"_s);
        QVERIFY(store->currentDocument()->isDirty);

        // Headings: bad entries skipped, an empty array empties.
        coordinator->receiveMessage(json(R"({"type":"headingsUpdated","headings":[
            {"id":"a","level":1,"text":"A"},{"id":"b","text":"no level"},
            {"id":"c","level":2.5,"text":"C"},{"id":"d","level":2,"text":"D","extra":1}]})"));
        QCoreApplication::processEvents();
        QCOMPARE(store->currentDocument()->headings,
                 (QList<HeadingItem> {{u"a"_s, 1, u"A"_s}, {u"d"_s, 2, u"D"_s}}));
        coordinator->receiveMessage(json(R"({"type":"headingsUpdated","headings":[]})"));
        QCoreApplication::processEvents();
        QVERIFY(store->currentDocument()->headings.isEmpty());

        // Malformed messages change nothing.
        QSignalSpy changes(store.get(), &WorkspaceStore::currentDocumentChanged);
        coordinator->receiveMessage(json(R"({"type":3,"markdown":"x"})"));
        coordinator->receiveMessage(u"contentChanged"_s);
        coordinator->receiveMessage(json(R"({"markdown":"x"})"));
        coordinator->receiveMessage(json(R"({"type":"contentChanged","markdown":7})"));
        coordinator->receiveMessage(json(R"({"type":"unknown"})"));
        QCoreApplication::processEvents();
        QCOMPARE(changes.count(), 0);

        // Messages are handled in the order they came, after the call returned.
        coordinator->receiveMessage(json(R"({"type":"contentChanged","markdown":"saved text"})"));
        coordinator->receiveMessage(json(R"({"type":"saveRequested","markdown":"ignored"})"));
        QCOMPARE(readFile(root + u"/a.md"_s), QByteArray("# a.md\n"));
        QCoreApplication::processEvents();
        QCOMPARE(readFile(root + u"/a.md"_s), QByteArray("saved text"));
        QVERIFY(!store->currentDocument()->isDirty);

        // Typing the page sends after another document replaced its own goes to that document's
        // draft, never into the open one, even while the new text is being sent.
        store->openFile(QUrl::fromLocalFile(root + u"/b.md"_s));
        QVERIFY(coordinator->isInternalUpdate());
        QVariantMap late = json(R"({"type":"contentChanged","markdown":"saved text, late"})");
        late.insert(u"path"_s, QString(root + u"/a.md"_s));
        coordinator->receiveMessage(late);
        QCoreApplication::processEvents();
        QCOMPARE(store->currentDocument()->content, u"# b.md\n"_s);
        QVERIFY(!store->currentDocument()->isDirty);
        store->drafts().waitForWrites();
        QCOMPARE(store->drafts().find(root + u"/a.md"_s, u"saved text"_s), u"saved text, late"_s);
    }

    // A large document's edits: applied to the store's text with its rules, checked in shape,
    // and when they do not fit, the page is asked for its text once and its later edits wait
    // for it. Edits of the document just left go to its draft.
    void editsReachTheStore()
    {
        auto store = makeStore();
        const QString root = folder({u"a.md"_s, u"b.md"_s});
        writeFile(root + u"/a.md"_s, "\xef\xbb\xbfun\r\ndeux \xf0\x9f\x99\x82\r\n");
        store->openFolder(QUrl::fromLocalFile(root), QUrl::fromLocalFile(root + u"/a.md"_s));
        Recorder calls;
        auto coordinator = makeCoordinator(store.get(), false, calls);
        coordinator->navigationFinished();
        const QString path = root + u"/a.md"_s;
        const auto edited
            = [&](const QString &changes, qsizetype length, const QString &from = QString()) {
                  QVariantMap message
                      = QJsonDocument::fromJson(u"{\"type\":\"contentEdited\","
                                                u"\"changes\":%1,\"length\":%2}"_s.arg(changes)
                                                    .arg(length)
                                                    .toUtf8())
                            .object()
                            .toVariantMap();
                  message.insert(u"path"_s, from.isEmpty() ? path : from);
                  coordinator->receiveMessage(message);
                  QCoreApplication::processEvents();
              };
        const QString original = store->currentDocument()->content;
        QCOMPARE(original.size(), 14); // mark, "un", CR LF, "deux ", a surrogate pair, CR LF
        QCOMPARE(store->documentStatistics(), (DocumentStatistics::Counts {3, 11}));

        // Two ranges in one step, positions in the text before it; the emoji replaced whole.
        edited(uR"([[1,3,"Un"],[10,12,"é"]])"_s, 13);
        QCOMPARE(store->currentDocument()->content, u"\ufeffUn\r\ndeux \u00e9\r\n"_s);
        QVERIFY(store->currentDocument()->isDirty);
        QCOMPARE(store->documentStatistics(), (DocumentStatistics::Counts {3, 11}));
        QVERIFY(calls.scripts.filter(u"sendContent"_s).isEmpty());

        // Wrong shapes are ignored.
        QSignalSpy changes(store.get(), &WorkspaceStore::currentDocumentChanged);
        for (const QString &bad :
             {uR"([[1,2]])"_s, uR"([[1,2,3]])"_s, uR"([[1.5,2,"x"]])"_s, uR"([[-1,2,"x"]])"_s,
              uR"([["1",2,"x"]])"_s, uR"({"a":1})"_s, uR"([[1,2,"x"],5])"_s})
            edited(bad, 12);
        coordinator->receiveMessage(
            json(R"({"type":"contentEdited","changes":[[0,0,"x"]],"length":"13"})"));
        QCoreApplication::processEvents();
        QCOMPARE(changes.count(), 0);

        // Edits that do not fit: nothing changes, the whole text is asked for, once; edits until
        // it comes are in it.
        edited(uR"([[0,0,"x"]])"_s, 40);
        edited(uR"([[5,1,"x"]])"_s, 12);
        edited(uR"([[0,0,"x"]])"_s, 14);
        QCOMPARE(store->currentDocument()->content, u"\ufeffUn\r\ndeux \u00e9\r\n"_s);
        QCOMPARE(calls.scripts.filter(u"sendContent"_s),
                 QStringList {u"window.Pagewell && window.Pagewell.sendContent();"_s});
        QVariantMap whole = json(R"({"type":"contentChanged","markdown":"x\ufeffUn"})");
        whole.insert(u"path"_s, path);
        coordinator->receiveMessage(whole);
        QCoreApplication::processEvents();
        edited(uR"([[4,4,"!"]])"_s, 5);
        QCOMPARE(store->currentDocument()->content, u"x\ufeffUn!"_s);

        // A save right after an edit writes it.
        edited(uR"([[5,5,"\r\n"]])"_s, 7);
        coordinator->receiveMessage(json(R"({"type":"saveRequested"})"));
        QCoreApplication::processEvents();
        QCOMPARE(readFile(path), QByteArray("x\xef\xbb\xbfUn!\r\n"));

        // Edits of the document just left go to its draft, never into the open one.
        store->openFile(QUrl::fromLocalFile(root + u"/b.md"_s));
        coordinator->contentCallFinished();
        edited(uR"([[0,0,"late "]])"_s, 12, path);
        QCOMPARE(store->currentDocument()->content, u"# b.md\n"_s);
        store->drafts().waitForWrites();
        QCOMPARE(store->drafts().find(path, u"x\ufeffUn!\r\n"_s), u"late x\ufeffUn!\r\n"_s);
    }

    // A link is followed in a later turn: the target opens, then its heading is asked for; a
    // link leading nowhere says so and changes nothing; a message of another shape is ignored.
    void linksOpenTheirTarget()
    {
        auto store = makeStore();
        const QString root = folder({u"a.md"_s, u"guide/install.md"_s});
        store->openFolder(QUrl::fromLocalFile(root), QUrl::fromLocalFile(root + u"/a.md"_s));
        Recorder calls;
        auto coordinator = makeCoordinator(store.get(), false, calls);
        coordinator->navigationFinished();
        calls.scripts.clear();
        const auto link = [&](const QString &target) {
            QVariantMap message {{u"type"_s, u"openLink"_s},
                                 {u"target"_s, target},
                                 {u"path"_s, QString(root + u"/a.md"_s)}};
            coordinator->receiveMessage(message);
        };
        link(u"[[absent]]"_s);
        coordinator->receiveMessage(json(R"({"type":"openLink","target":3,"path":"/x"})"));
        coordinator->receiveMessage(json(R"({"type":"openLink","target":"guide/install.md"})"));
        QVERIFY(!store->showAlert());
        QCoreApplication::processEvents();
        QVERIFY(store->showAlert());
        QCOMPARE(store->optionalAlertMessage(),
                 u"Le lien \u00AB\u00A0[[absent]]\u00A0\u00BB ne m\u00E8ne \u00E0 aucun "
                 u"document du dossier."_s);
        QCOMPARE(FileUrl::path(store->selectedFileURL()), root + u"/a.md"_s);
        QVERIFY(calls.scripts.isEmpty());

        link(u"guide/install#mise-en-route"_s);
        QCoreApplication::processEvents();
        QCOMPARE(FileUrl::path(store->selectedFileURL()), root + u"/guide/install.md"_s);
        QCOMPARE(calls.scripts.size(), 2);
        QVERIFY(calls.scripts.at(0).contains(u"setContent(`# guide/install.md\n`"_s));
        QCOMPARE(calls.scripts.at(1),
                 u"window.Pagewell && window.Pagewell.scrollToHeading('mise-en-route');"_s);
    }

    // What the folder says of the document's links and pictures reaches the page once the text
    // settles, and only when it changed: targets leading nowhere, each picture's file and size.
    void linkFactsFollowTheText()
    {
        auto store = makeStore();
        const QString root = folder({u"a.md"_s});
        writeFile(root + u"/img/rouge.png"_s,
                  QByteArray::fromBase64("iVBORw0KGgoAAAANSUhEUgAAAAIAAAABCAIAAAB7QOjdAAAAEElEQVR4"
                                         "nGP4z8DAwMDAAAAN/QH/ZtN3bgAAAABJRU5ErkJggg=="));
        const QString text = u"[x](absent.md) [y](a.md) [w](<https://a.org>)\n![[rouge.png]]\n"_s;
        writeFile(root + u"/a.md"_s, text.toUtf8());
        store->openFolder(QUrl::fromLocalFile(root), QUrl::fromLocalFile(root + u"/a.md"_s));
        Recorder calls;
        calls.withLinkFacts = true;
        auto coordinator = makeCoordinator(store.get(), false, calls);
        coordinator->navigationFinished();
        const auto facts = [&] { return calls.scripts.filter(u"window.Pagewell.setLinkFacts("_s); };
        QTRY_COMPARE(facts().size(), 1);
        QCOMPARE(facts().at(0),
                 u"window.Pagewell && window.Pagewell.setLinkFacts({\"missing\":[\"absent.md\"],"
                 u"\"pictures\":{\"[[rouge.png]]\":{\"height\":1,\"path\":\""_s
                     + root + u"/img/rouge.png\",\"width\":2}}}, '"_s + root + u"/a.md');"_s);
        store->updateDocumentContent(text + u"typed"_s);
        QTest::qWait(700);
        QCOMPARE(facts().size(), 1);
        store->updateDocumentContent(u"[z](autre.md)"_s);
        QTRY_COMPARE(facts().size(), 2);
        QVERIFY(facts().at(1).contains(u"{\"missing\":[\"autre.md\"],\"pictures\":{}}"_s));
    }

    // The page reads its own files and the open folder's; a link out of the folder, a file
    // beside it or a missing one is refused.
    void thePageReadsOnlyItsFilesAndTheFolders()
    {
        const QString root = folder({u"docs/img/a.png"_s, u"page/editor.js"_s, u"secret.png"_s});
        const QString docs = root + u"/docs"_s;
        const QString page = root + u"/page"_s;
        QVERIFY(QFile::link(root + u"/secret.png"_s, docs + u"/img/lien.png"_s));
        QVERIFY(LocalFileGuard::allows(docs + u"/img/a.png"_s, page, docs));
        QVERIFY(LocalFileGuard::allows(page + u"/editor.js"_s, page, docs));
        QVERIFY(LocalFileGuard::allows(docs + u"/img/../img/a.png"_s, page, QString(docs + u'/')));
        QVERIFY(!LocalFileGuard::allows(root + u"/secret.png"_s, page, docs));
        QVERIFY(!LocalFileGuard::allows(docs + u"/img/lien.png"_s, page, docs));
        QVERIFY(!LocalFileGuard::allows(docs + u"/img/absent.png"_s, page, docs));
        QVERIFY(!LocalFileGuard::allows(docs + u"/img/a.png"_s, page, QString()));
    }

    void requestChannels()
    {
        auto store = makeStore();
        Recorder calls;
        auto coordinator = makeCoordinator(store.get(), false, calls);
        calls.scripts.clear();
        store->requestHeadingScroll(u"l'intro"_s);
        store->requestHeadingScroll(u"l'intro"_s);
        store->requestSnippetInsert(u"$x$"_s);
        QCOMPARE(
            calls.scripts,
            (QStringList {u"window.Pagewell && window.Pagewell.scrollToHeading('l\\'intro');"_s,
                          u"window.Pagewell && window.Pagewell.scrollToHeading('l\\'intro');"_s,
                          u"window.Pagewell && window.Pagewell.insertText(`\\$x\\$`);"_s}));
        QVERIFY(!calls.completions.contains(true));
        // Once the view and its coordinator are gone, values are dropped.
        coordinator.reset();
        store->requestHeadingScroll(u"x"_s);
        store->requestSnippetInsert(u"y"_s);
        QCOMPARE(calls.scripts.size(), 3);
    }

    void navigation()
    {
        const QUrl page = QUrl::fromLocalFile(u"/opt/pagewell/web/editor.html"_s);
        Coordinator coordinator;
        coordinator.setPageUrl(page);
        QVERIFY(coordinator.allowsNavigation(page));
        QVERIFY(coordinator.allowsNavigation(QUrl(page.toString() + u"#titre"_s)));
        QVERIFY(!coordinator.allowsNavigation(QUrl(u"https://example.org/"_s)));
        QVERIFY(!coordinator.allowsNavigation(QUrl::fromLocalFile(u"/etc/passwd"_s)));
        // A window the page opens (Ctrl+click on an address) goes to the desktop: the browser,
        // the mail program; never a file, never a script.
        QVERIFY(Coordinator::opensOutside(QUrl(u"https://example.org/a"_s)));
        QVERIFY(Coordinator::opensOutside(QUrl(u"mailto:a@b.c"_s)));
        QVERIFY(!Coordinator::opensOutside(QUrl::fromLocalFile(u"/etc/passwd"_s)));
        QVERIFY(!Coordinator::opensOutside(QUrl(u"javascript:alert(1)"_s)));
        QVERIFY(!coordinator.allowsNavigation(QUrl()));
    }
};

QTEST_GUILESS_MAIN(TestCoordinator)
#include "tst_coordinator.moc"
