#include "WorkspaceStore.h"

#include "model/FileKind.h"
#include "model/FileUrl.h"
#include "model/TextRules.h"
#include "services/LinkResolver.h"
#include "services/LinkRewriter.h"
#include "services/TextFile.h"

#include <QFileInfo>

using namespace Qt::StringLiterals;

WorkspaceStore::WorkspaceStore(std::unique_ptr<QSettings> settings, const QString &draftsFolder,
                               QObject *parent)
    : QObject(parent),
      m_session(std::move(settings)),
      m_drafts(&m_document, draftsFolder.isEmpty() ? DraftStore::defaultFolder() : draftsFolder)
{
    // The rooms' announcements are the store's own.
    connect(&m_session, &WorkspaceSession::recentFolderPathsChanged, this,
            &WorkspaceStore::recentFolderPathsChanged);
    connect(&m_tree, &FolderTree::rootURLChanged, this, &WorkspaceStore::rootURLChanged);
    connect(&m_tree, &FolderTree::rootItemChanged, this, &WorkspaceStore::rootItemChanged);
    connect(&m_tree, &FolderTree::rescanned, &m_search, &FolderSearch::refreshSoon);
    connect(&m_tree, &FolderTree::diskChanged, this, &WorkspaceStore::diskChanged);
    connect(&m_document, &OpenDocument::changed, this, &WorkspaceStore::currentDocumentChanged);
    connect(&m_document, &OpenDocument::replaced, this, &WorkspaceStore::documentReplaced);
    connect(&m_document, &OpenDocument::textChanged, this, &WorkspaceStore::documentTextChanged);
    connect(&m_document, &OpenDocument::headingsChanged, this,
            &WorkspaceStore::documentHeadingsChanged);
    connect(&m_document, &OpenDocument::modifiedChanged, this,
            &WorkspaceStore::documentModifiedChanged);
    connect(&m_document, &OpenDocument::noticeChanged, this, &WorkspaceStore::noticeChanged);
    connect(&m_document, &OpenDocument::fileChanged, this, &WorkspaceStore::documentFileChanged);
    connect(&m_document, &OpenDocument::textReplaced, this, &WorkspaceStore::documentTextReplaced);
    connect(&m_search, &FolderSearch::queryChanged, this, &WorkspaceStore::searchQueryChanged);
    connect(&m_search, &FolderSearch::resultsChanged, this, &WorkspaceStore::searchResultsChanged);
    connect(&m_search, &FolderSearch::isSearchingChanged, this,
            &WorkspaceStore::isSearchingChanged);
    connect(&m_search, &FolderSearch::optionsChanged, this, &WorkspaceStore::searchOptionsChanged);
    // An expression becomes valid or not as it is typed.
    connect(&m_search, &FolderSearch::queryChanged, this, &WorkspaceStore::searchOptionsChanged);
    // The link index follows the tree, the disk and the saves made here.
    connect(&m_tree, &FolderTree::rootItemChanged, this, [this] { m_links.update(rootItem()); });
    connect(&m_document, &OpenDocument::saved, this,
            [this] { m_links.documentSaved(m_document.path()); });
    connect(&m_links, &LinkIndex::changed, this, &WorkspaceStore::backlinksChanged);
    connect(&m_document, &OpenDocument::replaced, this, &WorkspaceStore::backlinksChanged);
    connect(&m_document, &OpenDocument::relocated, this, &WorkspaceStore::documentRelocated);

    restoreLastSession();
}

WorkspaceStore::~WorkspaceStore() = default;

WorkspaceStore *WorkspaceStore::shared()
{
    // Lives until the process ends, like the application itself.
    static WorkspaceStore *const store
        = new WorkspaceStore(std::make_unique<QSettings>(u"Pagewell"_s, u"Pagewell"_s));
    return store;
}

QVariant WorkspaceStore::rootItemValue() const
{
    return rootItem() ? QVariant::fromValue(*rootItem()) : QVariant();
}

QVariant WorkspaceStore::currentDocumentValue() const
{
    return currentDocument() ? QVariant::fromValue(*currentDocument()) : QVariant();
}

void WorkspaceStore::openFolder(const QUrl &url, const QUrl &preferredFileURL)
{
    // What "Annuler" would take back belongs to the folder left.
    if (!m_operationMessage.isEmpty())
        dismissOperation();
    m_pendingMove.reset();
    m_tree.setRoot(url);
    m_history.clear();
    Q_EMIT historyChanged();
    m_session.rememberFolder(FileUrl::path(url));
    reloadCurrentFolder();

    if (!preferredFileURL.isEmpty() && QFileInfo::exists(FileUrl::path(preferredFileURL))) {
        openFile(preferredFileURL);
        return;
    }
    if (!rootItem())
        return;
    // Paths, not URLs: only the document that gets opened needs one.
    const QStringList documents = m_tree.fileSystem().collectDocumentPaths(*rootItem());
    for (const QString &document : documents) {
        if (FileKind::isReadme(QStringView(document).mid(document.lastIndexOf(u'/') + 1))) {
            openFile(FileUrl::fromPath(document, false));
            return;
        }
    }
    if (!documents.isEmpty())
        openFile(FileUrl::fromPath(documents.first(), false));
}

void WorkspaceStore::reloadCurrentFolder()
{
    m_tree.reload();
}

void WorkspaceStore::clearRecentFolders()
{
    m_session.clearRecentFolders();
}

void WorkspaceStore::restoreLastSession()
{
    const QString folder = m_session.lastFolder();
    if (folder.isEmpty() || !QFileInfo(folder).isDir())
        return;
    QUrl preferred;
    const QString file = m_session.lastFile();
    if (!file.isEmpty() && QFileInfo::exists(file))
        preferred = FileUrl::fromPath(file);
    openFolder(QUrl::fromLocalFile(folder), preferred);
}

void WorkspaceStore::openFile(const QUrl &url)
{
    if (FileUrl::isDirectoryUrl(url))
        return;
    if (url == m_selectedFileURL && currentDocument())
        return;
    const QString path = FileUrl::path(url);
    FileIdentity identity;
    FileResult<QString> read = TextFile::readUtf8(path, &identity);
    if (read.error) {
        presentAlert(u"Impossible de lire le fichier: "_s, *read.error);
        return;
    }
    m_drafts.leave();
    setSelectedFileURL(url);
    m_document.open(url, read.value, identity);
    m_session.rememberFile(path);
    if (!m_travelling) {
        m_history.visit(path);
        Q_EMIT historyChanged();
    }
    m_drafts.offer();
    m_tree.watchDocumentFolder(path);
}

void WorkspaceStore::updateDocumentContent(const QString &newContent)
{
    m_document.updateContent(newContent);
}

void WorkspaceStore::updateReplacedDocumentContent(const QString &path, const QString &text)
{
    m_drafts.updateLeft(path, text);
}

bool WorkspaceStore::editDocumentContent(const QList<TextEdit> &edits, qsizetype length)
{
    return m_document.editContent(edits, length);
}

void WorkspaceStore::editReplacedDocumentContent(const QString &path, const QList<TextEdit> &edits,
                                                 qsizetype length)
{
    m_drafts.editLeft(path, edits, length);
}

void WorkspaceStore::updateHeadings(const QList<HeadingItem> &headings)
{
    m_document.updateHeadings(headings);
}

void WorkspaceStore::saveCurrentDocument()
{
    if (const std::optional<FileError> error = m_document.save())
        presentAlert(u"Erreur d'enregistrement: "_s, *error);
}

void WorkspaceStore::requestSave()
{
    if (isSignalConnected(QMetaMethod::fromSignal(&WorkspaceStore::saveRequest)))
        Q_EMIT saveRequest();
    else
        saveCurrentDocument();
}

void WorkspaceStore::createNewFile(const QString &name, const QUrl &folder)
{
    const QUrl target = folder.isEmpty() ? rootURL() : folder;
    if (target.isEmpty())
        return;
    const FileResult<QUrl> created = m_tree.fileSystem().createNewFile(target, name);
    if (created.error) {
        presentAlert(u"Erreur lors de la création: "_s, *created.error);
        return;
    }
    reloadCurrentFolder();
    openFile(created.value);
}

void WorkspaceStore::createUntitledFile()
{
    if (hasFolder())
        createNewFile(FolderOperations::freeName(FileUrl::path(rootURL()), u"untitled.md"_s));
}

QString WorkspaceStore::newFileRefusal(const QString &name, const QUrl &folder) const
{
    const QUrl target = folder.isEmpty() ? rootURL() : folder;
    if (target.isEmpty() || TextRules::isBlank(name))
        return {};
    const QString fileName = FileSystemService::newFileName(name);
    if (!QFileInfo::exists(FileUrl::joinPath(FileUrl::path(target), fileName)))
        return {};
    return u"\u00AB\u00A0%1\u00A0\u00BB existe d\u00E9j\u00E0 dans ce dossier."_s.arg(fileName);
}

void WorkspaceStore::deleteFile(const QUrl &url)
{
    const QString path = FileUrl::path(url);
    if (!QFileInfo::exists(path) && !QFileInfo(path).isSymLink()) {
        presentAlert(u"Erreur lors de la suppression: "_s, FileError::fromErrno(ENOENT, path));
        return;
    }
    const std::optional<FolderOperations::Trashed> trashed = FolderOperations::moveToTrash(path);
    if (!trashed) {
        Q_EMIT permanentDeletionRequest(url, FileUrl::lastPathComponent(url));
        return;
    }
    closeIfSelected(url);
    m_lastMove.reset();
    m_lastReplace.reset();
    m_lastTrash = trashed;
    setOperation(u"\u00AB\u00A0%1\u00A0\u00BB a \u00E9t\u00E9 mis \u00E0 la corbeille."_s.arg(
        FileUrl::lastPathComponent(url)));
    reloadCurrentFolder();
}

void WorkspaceStore::closeIfSelected(const QUrl &url)
{
    // A deleted document goes with its edits; the folder of an open one leaves it open.
    if (m_selectedFileURL == url) {
        m_drafts.forget();
        setSelectedFileURL(QUrl());
        m_document.close();
    }
}

void WorkspaceStore::deletePermanently(const QUrl &url)
{
    if (const std::optional<FileError> error = m_tree.fileSystem().deleteItem(url)) {
        presentAlert(u"Erreur lors de la suppression: "_s, *error);
        return;
    }
    closeIfSelected(url);
    reloadCurrentFolder();
}

QString WorkspaceStore::renameRefusal(const QUrl &url, const QString &name) const
{
    const QString path = FileUrl::path(url);
    if (name.contains(u'/'))
        return u"Un nom ne peut pas contenir \u00AB\u00A0/\u00A0\u00BB."_s;
    return FolderOperations::refusal(path, path.section(u'/', 0, -2) + u'/' + name.trimmed())
        .value_or(QString());
}

bool WorkspaceStore::canMoveInto(const QUrl &url, const QUrl &folder) const
{
    const QString path = FileUrl::path(url);
    const QString target = FileUrl::path(folder);
    const FileItem *node = rootItem() ? rootItem()->descendant(target) : nullptr;
    return node && node->isDirectory() && target != path && !target.startsWith(path + u'/')
        && target != path.section(u'/', 0, -2);
}

QVariantMap WorkspaceStore::prepareRename(const QUrl &url, const QString &name)
{
    const QString path = FileUrl::path(url);
    return prepare(path, path.section(u'/', 0, -2) + u'/' + name.trimmed(), QFileInfo(path).isDir(),
                   renameRefusal(url, name));
}

QVariantMap WorkspaceStore::prepareMove(const QUrl &url, const QUrl &folder)
{
    const QString path = FileUrl::path(url);
    const QString to = FileUrl::path(folder) + u'/' + path.section(u'/', -1);
    QString refusal;
    if (!canMoveInto(url, folder))
        refusal = u"\u00AB\u00A0%1\u00A0\u00BB ne peut pas aller dans ce dossier."_s.arg(
            path.section(u'/', -1));
    else
        refusal = FolderOperations::refusal(path, to).value_or(QString());
    // A drop or a choice in a list has no field to say it under: the alert does.
    if (!refusal.isEmpty()) {
        setAlertMessage(refusal);
        setShowAlert(true);
    }
    return prepare(path, to, QFileInfo(path).isDir(), refusal);
}

QVariantMap WorkspaceStore::prepare(const QString &from, const QString &to, bool isFolder,
                                    const QString &refusal)
{
    m_pendingMove.reset();
    if (!refusal.isEmpty() || !rootItem())
        return {{u"refusal"_s, refusal}, {u"links"_s, 0}};
    m_links.waitUntilCurrent();
    const LinkRewriter::Move move {from, to, isFolder};
    m_pendingMove
        = FolderOperations::plan(*rootItem(), move, m_links.documentsLinkingTo(from), true);
    QStringList documents;
    for (const FolderOperations::Change &change : std::as_const(m_pendingMove->changes))
        documents.append(change.path.mid(rootItem()->id().size() + 1));
    const int links = m_pendingMove->links();
    const qsizetype count = documents.size();
    const QString name = from.section(u'/', -1);
    const QString question = links == 1
        ? u"1 lien dans 1 document m\u00E8ne \u00E0 \u00AB\u00A0%1\u00A0\u00BB."_s.arg(name)
        : u"%1 liens dans %2 %3 m\u00E8nent \u00E0 \u00AB\u00A0%4\u00A0\u00BB."_s.arg(links)
              .arg(count)
              .arg(count == 1 ? u"document"_s : u"documents"_s, name);
    return {{u"refusal"_s, QString()},
            {u"links"_s, links},
            {u"documents"_s, documents},
            {u"question"_s, question}};
}

void WorkspaceStore::cancelPendingMove()
{
    m_pendingMove.reset();
}

void WorkspaceStore::applyPendingMove(bool updateLinks)
{
    if (!m_pendingMove || !rootItem())
        return;
    FolderOperations::Plan plan = *std::exchange(m_pendingMove, std::nullopt);
    if (!updateLinks)
        plan.changes.clear();
    // The open document's text in the page, unsaved edits included, rewritten the same way.
    std::optional<QString> pageText;
    if (updateLinks && currentDocument()) {
        const LinkResolver::NameIndex names(*rootItem());
        const LinkRewriter::Result rewritten = LinkRewriter::rewrite(
            currentDocument()->content, m_document.path(), plan.move, *rootItem(), names);
        if (rewritten.links > 0)
            pageText = rewritten.text;
    }
    std::variant<FolderOperations::Done, FileError> result = FolderOperations::perform(plan);
    if (const FileError *error = std::get_if<FileError>(&result)) {
        presentAlert(u"Impossible de d\u00E9placer \u00AB\u00A0%1\u00A0\u00BB : "_s.arg(
                         plan.move.from.section(u'/', -1)),
                     *error);
        return;
    }
    const FolderOperations::Done &done = std::get<FolderOperations::Done>(result);
    m_pageTextBefore = currentDocument() ? currentDocument()->content : QString();
    followMove(plan.move);
    const bool openWritten = wroteOpenDocument(done);
    if (pageText || openWritten)
        m_document.replaceText(pageText.value_or(currentDocument()->content), openWritten);
    m_pageTextAfter = currentDocument() ? currentDocument()->content : QString();
    QSet<QString> written;
    for (const FolderOperations::Change &change : done.written)
        written.insert(change.newPath);
    refreshAfterMove(written);

    m_lastTrash.reset();
    m_lastReplace.reset();
    m_lastMove = done;
    const QString oldName = plan.move.from.section(u'/', -1);
    const QString what = plan.move.from.section(u'/', 0, -2) == plan.move.to.section(u'/', 0, -2)
        ? u"\u00AB\u00A0%1\u00A0\u00BB renomm\u00E9 en \u00AB\u00A0%2\u00A0\u00BB"_s.arg(
            oldName, plan.move.to.section(u'/', -1))
        : u"\u00AB\u00A0%1\u00A0\u00BB d\u00E9plac\u00E9 vers \u00AB\u00A0%2\u00A0\u00BB"_s.arg(
            oldName,
            plan.move.to.section(u'/', 0, -2) == rootItem()->id()
                ? folderName()
                : plan.move.to.section(u'/', -2, -2));
    const qsizetype documents = done.written.size();
    setOperation(done.links == 0 ? what + u'.'
                                 : u"%1\u00A0; %2 %3 mis \u00E0 jour dans %4 %5."_s.arg(what)
                                       .arg(done.links)
                                       .arg(done.links == 1 ? u"lien"_s : u"liens"_s)
                                       .arg(documents)
                                       .arg(documents == 1 ? u"document"_s : u"documents"_s));
    alertFailures(u"Ces documents n'ont pas \u00E9t\u00E9 mis \u00E0 jour"_s, done.leftAlone,
                  done.failed, done.errors);
}

bool WorkspaceStore::wroteOpenDocument(const FolderOperations::Done &done) const
{
    // Before the open document follows the move back, or after it followed the move: its path
    // is where the files were written.
    return std::any_of(done.written.begin(), done.written.end(),
                       [this](const FolderOperations::Change &change) {
                           return change.newPath == m_document.path();
                       });
}

void WorkspaceStore::refreshAfterMove(const QSet<QString> &written)
{
    reloadCurrentFolder();
    m_links.update(rootItem(), written);
}

void WorkspaceStore::followMove(const LinkRewriter::Move &move)
{
    const QString path = m_document.path();
    const QString moved = move.apply(path);
    if (!path.isEmpty() && moved != path) {
        const QUrl url = QUrl::fromLocalFile(moved);
        m_drafts.drafts().remove(path);
        m_document.relocate(url);
        setSelectedFileURL(url);
        m_session.rememberFile(moved);
        m_tree.watchDocumentFolder(moved);
        if (currentDocument()->isDirty)
            m_drafts.writeNow();
    }
    m_history.replacePaths([&move](const QString &entry) { return move.apply(entry); });
    m_session.replacePaths([&move](const QString &entry) { return move.apply(entry); });
    Q_EMIT historyChanged();
}

void WorkspaceStore::undoLastOperation()
{
    if (m_lastReplace) {
        if (m_replaceRun.isRunning())
            return;
        const FolderReplace::Done last = *std::exchange(m_lastReplace, std::nullopt);
        setOperation({});
        // The page's text goes back unless it was typed in since.
        if (m_pageReplaced > 0 && m_document.path() == m_replacedPagePath && currentDocument()
            && currentDocument()->content == m_pageTextAfter)
            m_document.replaceText(m_pageTextBefore, false);
        m_pageReplaced = 0;
        m_replaceRun.start(
            [last](const std::atomic_bool &) { return FolderReplace::undo(last); },
            [this](const FolderReplace::Done &undone) { replaceDone(undone, true); });
        Q_EMIT isReplacingChanged();
        return;
    }
    if (m_lastTrash) {
        const FolderOperations::Trashed trashed = *std::exchange(m_lastTrash, std::nullopt);
        setOperation({});
        if (const std::optional<FileError> error = FolderOperations::restore(trashed)) {
            presentAlert(u"Impossible de remettre \u00AB\u00A0%1\u00A0\u00BB : "_s.arg(
                             trashed.original.section(u'/', -1)),
                         *error);
            return;
        }
        reloadCurrentFolder();
        if (!currentDocument() && FileKind::isMarkdown(trashed.original.section(u'/', -1)))
            openFile(QUrl::fromLocalFile(trashed.original));
        return;
    }
    if (!m_lastMove)
        return;
    const FolderOperations::Done last = *std::exchange(m_lastMove, std::nullopt);
    setOperation({});
    const FolderOperations::Done undone = FolderOperations::undo(last);
    const bool movedBack = !undone.failed.contains(last.move.to);
    const bool openWritten = wroteOpenDocument(undone);
    if (movedBack)
        followMove(undone.move);
    if (currentDocument()) {
        // The page's text goes back too, unless it was typed in since.
        const bool untouched = currentDocument()->content == m_pageTextAfter;
        if (untouched || openWritten)
            m_document.replaceText(untouched ? m_pageTextBefore : currentDocument()->content,
                                   openWritten);
    }
    QSet<QString> written;
    for (const FolderOperations::Change &change : undone.written)
        written.insert(movedBack ? change.path : change.newPath);
    refreshAfterMove(written);
    alertFailures(u"Ces documents n'ont pas \u00E9t\u00E9 remis comme avant"_s, undone.leftAlone,
                  undone.failed, undone.errors);
}

void WorkspaceStore::dismissOperation()
{
    m_lastReplace.reset();
    m_lastMove.reset();
    m_lastTrash.reset();
    setOperation({});
}

void WorkspaceStore::setOperation(const QString &message)
{
    m_operationMessage = message;
    Q_EMIT operationChanged();
}

void WorkspaceStore::alertFailures(const QString &title, const QStringList &leftAlone,
                                   const QStringList &failed, const QList<FileError> &errors)
{
    QStringList lines;
    const auto relative = [this](const QString &path) {
        return rootItem() && path.startsWith(rootItem()->id() + u'/')
            ? path.mid(rootItem()->id().size() + 1)
            : path;
    };
    for (const QString &path : leftAlone)
        lines.append(u"\u2022 %1 (modifi\u00E9 par un autre programme)"_s.arg(relative(path)));
    for (qsizetype i = 0; i < failed.size(); ++i)
        lines.append(
            u"\u2022 %1 (%2)"_s.arg(relative(failed[i]), errors[i].localizedDescription()));
    if (lines.isEmpty())
        return;
    setAlertMessage(title + u"\u00A0:\n"_s + lines.join(u'\n'));
    setShowAlert(true);
}

QList<WorkspaceStore::Backlink> WorkspaceStore::backlinks() const
{
    QList<Backlink> backlinks;
    const QString path = m_document.path();
    if (path.isEmpty())
        return backlinks;
    // One row per document, at its first link here.
    for (const auto &[from, link] : m_links.linksTo(path)) {
        if (from != path && (backlinks.isEmpty() || backlinks.last().path != from))
            backlinks.append({from, link.line, LinkIndex::lineText(from, link)});
    }
    return backlinks;
}

void WorkspaceStore::openFileAtLine(const QUrl &url, int line)
{
    openFile(url);
    if (m_document.path() == FileUrl::path(url))
        Q_EMIT lineRevealRequest(line);
}

void WorkspaceStore::openFileAtMatch(const QUrl &url, int line, int from, int to)
{
    openFile(url);
    if (m_document.path() == FileUrl::path(url))
        Q_EMIT matchRevealRequest(line, from, to);
}

void WorkspaceStore::updateSearch(const QString &query)
{
    m_search.update(query);
}

void WorkspaceStore::setSearchCaseSensitive(bool on)
{
    SearchOptions options = searchOptions();
    options.caseSensitive = on;
    m_search.setOptions(options);
}

void WorkspaceStore::setSearchWholeWord(bool on)
{
    SearchOptions options = searchOptions();
    options.wholeWord = on;
    m_search.setOptions(options);
}

void WorkspaceStore::setSearchRegularExpression(bool on)
{
    SearchOptions options = searchOptions();
    options.regularExpression = on;
    m_search.setOptions(options);
}

void WorkspaceStore::replaceAll(const QString &replacement)
{
    const TextPattern pattern = SearchService::pattern(m_search.query(), m_search.options());
    if (!rootItem() || m_replaceRun.isRunning() || m_search.isSearching() || !pattern.isValid()
        || m_search.results().isEmpty())
        return;
    const QList<FileSearchResults> results = m_search.results();
    // The open document is replaced in the page, edits included, as one change.
    const QString openPath = m_document.path();
    m_pageReplaced = 0;
    m_replacedPagePath = openPath;
    const bool openListed = !openPath.isEmpty()
        && std::any_of(results.begin(), results.end(), [&openPath](const FileSearchResults &file) {
               return FileUrl::path(file.fileURL) == openPath;
           });
    if (openListed && currentDocument()) {
        m_pageTextBefore = currentDocument()->content;
        m_pageTextAfter = pattern.replacedInText(m_pageTextBefore, replacement, &m_pageReplaced);
        if (m_pageReplaced > 0)
            m_document.replaceText(m_pageTextAfter, false);
    }
    m_lastMove.reset();
    m_lastTrash.reset();
    m_lastReplace.reset();
    setOperation({});
    m_replaceRun.start(
        [pattern, replacement, results, openPath](const std::atomic_bool &) {
            return FolderReplace::perform(pattern, replacement, results, openPath);
        },
        [this](const FolderReplace::Done &done) { replaceDone(done, false); });
    Q_EMIT isReplacingChanged();
}

void WorkspaceStore::replaceDone(const FolderReplace::Done &done, bool undoing)
{
    Q_EMIT isReplacingChanged();
    QSet<QString> written;
    for (const FolderReplace::Document &document : done.written)
        written.insert(document.path);
    m_links.update(rootItem(), written);
    m_search.update(m_search.query());
    if (undoing) {
        alertFailures(u"Ces documents n'ont pas \u00E9t\u00E9 remis comme avant"_s, done.leftAlone,
                      done.failed, done.errors);
        return;
    }
    const qsizetype documents = done.written.size() + (m_pageReplaced > 0 ? 1 : 0);
    // A rename, move or deletion made while the files were written keeps its own "Annuler".
    const bool overtaken = m_lastMove || m_lastTrash;
    if (documents > 0 && !overtaken) {
        m_lastReplace = done;
        setOperation(FolderReplace::summary(done.count + m_pageReplaced, documents));
    }
    alertFailures(u"Ces documents n'ont pas \u00E9t\u00E9 modifi\u00E9s"_s, done.leftAlone,
                  done.failed, done.errors);
}

void WorkspaceStore::followLink(const QString &target, const QString &fromPath)
{
    if (!rootItem())
        return;
    const std::optional<LinkResolver::Target> found
        = LinkResolver::resolve(target, fromPath, *rootItem());
    if (!found) {
        setAlertMessage(u"Le lien \u00AB\u00A0%1\u00A0\u00BB ne m\u00E8ne \u00E0 aucun document "
                        "du dossier."_s.arg(target));
        setShowAlert(true);
        return;
    }
    openFile(QUrl::fromLocalFile(found->path));
    // The page takes the new text before this request, so the heading is there to be found.
    if (!found->fragment.isEmpty() && m_document.path() == found->path)
        requestHeadingScroll(found->fragment);
}

void WorkspaceStore::travel(int step)
{
    const qsizetype index
        = m_history.find(step, [](const QString &path) { return QFileInfo(path).isFile(); });
    if (index >= 0) {
        const QString path = m_history.at(index);
        m_travelling = true;
        openFile(QUrl::fromLocalFile(path));
        m_travelling = false;
        if (m_document.path() == path) {
            m_history.arrive(index);
            Q_EMIT historyPositionRequest();
        }
    }
    Q_EMIT historyChanged();
}

void WorkspaceStore::requestHeadingScroll(const QString &headingId)
{
    Q_EMIT headingScrollRequest(headingId);
}

void WorkspaceStore::requestSnippetInsert(const QString &snippet)
{
    Q_EMIT snippetInsertRequest(snippet);
}

bool WorkspaceStore::isSearchQueryBlank() const
{
    return TextRules::isBlank(m_search.query());
}

bool WorkspaceStore::acceptsNewFileName(const QString &name) const
{
    return !TextRules::isBlank(name);
}

QString WorkspaceStore::folderName() const
{
    return rootURL().isEmpty() ? u"Aucun dossier ouvert"_s : FileUrl::lastPathComponent(rootURL());
}

void WorkspaceStore::flushDraft()
{
    m_drafts.flush();
}

void WorkspaceStore::restoreDraft()
{
    m_drafts.restore();
}

void WorkspaceStore::discardDraft()
{
    m_drafts.discard();
}

void WorkspaceStore::reloadDocumentFromDisk()
{
    if (!currentDocument())
        return;
    // The edits dropped here stay as a draft, made against the text they were edits of.
    m_drafts.writeNow();
    if (const std::optional<FileError> error = m_document.reload())
        presentAlert(u"Impossible de lire le fichier: "_s, *error);
}

void WorkspaceStore::keepEdits()
{
    if (m_document.keepEdits())
        m_drafts.writeNow();
}

void WorkspaceStore::startWatching(int watchLimit)
{
    m_tree.startWatching(watchLimit, m_document.path());
}

void WorkspaceStore::applicationActivated()
{
    m_document.checkFileSoon();
    m_tree.refreshIfLimited();
}

void WorkspaceStore::diskChanged(const FolderWatcher::Changes &changes)
{
    const QString path = m_document.path();
    if (!path.isEmpty()
        && (changes.everything || changes.files.contains(path)
            || changes.folders.contains(QFileInfo(path).path())))
        m_document.checkFileSoon();
    if (FolderSearch::touchesDocuments(changes))
        m_search.refreshSoon();
    if (changes.everything)
        m_links.rereadAll();
    else if (!changes.files.isEmpty())
        m_links.update(rootItem(), changes.files);
}

void WorkspaceStore::presentAlert(const QString &prefix, const FileError &error)
{
    setAlertMessage(prefix + error.localizedDescription());
    setShowAlert(true);
}

void WorkspaceStore::setSelectedFileURL(const QUrl &url)
{
    m_selectedFileURL = url;
    Q_EMIT selectedFileURLChanged();
}

void WorkspaceStore::setSidebarMode(SidebarMode::Value mode)
{
    m_sidebarMode = mode;
    Q_EMIT sidebarModeChanged();
}

void WorkspaceStore::setOutlineVisible(bool visible)
{
    m_isOutlineVisible = visible;
    Q_EMIT isOutlineVisibleChanged();
}

void WorkspaceStore::setShowSource(bool shown)
{
    if (shown == showSource())
        return;
    m_session.rememberShowSource(shown);
    Q_EMIT showSourceChanged();
}

void WorkspaceStore::setAlertMessage(const QString &message)
{
    m_alertMessage = message;
    Q_EMIT alertMessageChanged();
}

void WorkspaceStore::setShowAlert(bool show)
{
    m_showAlert = show;
    Q_EMIT showAlertChanged();
}
