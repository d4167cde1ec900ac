#include "WorkspaceStore.h"

#include "model/FileUrl.h"
#include "services/LinkResolver.h"
#include "services/TextFile.h"

#include <QDateTime>
#include <QFileInfo>
#include <QFutureWatcher>
#include <QtConcurrent>

#include <utility>

using namespace Qt::StringLiterals;

namespace {

// A list of strings as the preferences file holds it. An INI file cannot tell a one-entry list
// from a plain string, so a string counts as a list of one.
QStringList stringList(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::QStringList:
        return value.toStringList();
    case QMetaType::QString:
        return {value.toString()};
    case QMetaType::QVariantList: {
        QStringList list;
        for (const QVariant &entry : value.toList()) {
            if (entry.typeId() != QMetaType::QString)
                return {};
            list.append(entry.toString());
        }
        return list;
    }
    default:
        return {};
    }
}

} // namespace

WorkspaceStore::WorkspaceStore(std::unique_ptr<QSettings> settings, const QString &draftsFolder,
                               QObject *parent)
    : QObject(parent),
      m_settings(std::move(settings)),
      m_searchService(std::make_shared<const SearchService>()),
      m_drafts(draftsFolder.isEmpty() ? DraftStore::defaultFolder() : draftsFolder)
{
    // At most a second of typing is ever only in memory, even while typing goes on.
    m_draftTimer.setSingleShot(true);
    m_draftTimer.setInterval(draftDelayMs);
    connect(&m_draftTimer, &QTimer::timeout, this, &WorkspaceStore::writeDraftNow);
    m_documentCheck.setSingleShot(true);
    m_documentCheck.setInterval(stableFileMs);
    connect(&m_documentCheck, &QTimer::timeout, this, &WorkspaceStore::checkDocumentOnDisk);
    // A burst of changes (a branch switch) searches again once.
    m_searchRefresh.setSingleShot(true);
    m_searchRefresh.setInterval(300);
    connect(&m_searchRefresh, &QTimer::timeout, this, [this] {
        if (!m_searchQuery.isEmpty())
            updateSearch(m_searchQuery);
    });

    m_recentFolderPaths = stringList(m_settings->value(recentsKey));
    restoreLastSession();
}

WorkspaceStore::~WorkspaceStore()
{
    if (m_searchCancelled)
        *m_searchCancelled = true;
}

WorkspaceStore *WorkspaceStore::shared()
{
    // Lives until the process ends, like the application itself.
    static WorkspaceStore *const store
        = new WorkspaceStore(std::make_unique<QSettings>(u"Pagewell"_s, u"Pagewell"_s));
    return store;
}

QVariant WorkspaceStore::rootItemValue() const
{
    return m_rootItem ? QVariant::fromValue(*m_rootItem) : QVariant();
}

QVariant WorkspaceStore::currentDocumentValue() const
{
    return m_currentDocument ? QVariant::fromValue(*m_currentDocument) : QVariant();
}

void WorkspaceStore::openFolder(const QUrl &url, const QUrl &preferredFileURL)
{
    setRootURL(url);
    m_history.clear();
    m_historyIndex = -1;
    Q_EMIT historyChanged();
    const QString path = FileUrl::path(url);
    m_treeChanges = {};
    if (m_watcher)
        m_watcher->setRoot(path);
    storeSetting(lastFolderKey, path);

    QStringList recents = m_recentFolderPaths;
    recents.removeAll(path);
    recents.prepend(path);
    if (recents.size() > maxRecentFolders)
        recents.resize(maxRecentFolders);
    setRecentFolderPaths(recents);
    storeSetting(recentsKey, recents);

    reloadCurrentFolder();

    if (!preferredFileURL.isEmpty() && QFileInfo::exists(FileUrl::path(preferredFileURL))) {
        openFile(preferredFileURL);
        return;
    }
    if (!m_rootItem)
        return;
    // Paths, not URLs: only the document that gets opened needs one.
    const QStringList documents = m_fileSystemService.collectDocumentPaths(*m_rootItem);
    for (const QString &document : documents) {
        const QStringView name = QStringView(document).mid(document.lastIndexOf(u'/') + 1);
        if (name.size() == 9 && name.toString().toLower() == u"readme.md") {
            openFile(FileUrl::fromPath(document, false));
            return;
        }
    }
    if (!documents.isEmpty())
        openFile(FileUrl::fromPath(documents.first(), false));
}

void WorkspaceStore::reloadCurrentFolder()
{
    if (m_rootURL.isEmpty())
        return;
    setRootItem(m_fileSystemService.scanDirectory(m_rootURL));
}

void WorkspaceStore::clearRecentFolders()
{
    setRecentFolderPaths({});
    m_settings->remove(recentsKey);
    m_settings->sync();
}

void WorkspaceStore::restoreLastSession()
{
    const QString folder = m_settings->value(lastFolderKey).toString();
    if (folder.isEmpty() || !QFileInfo(folder).isDir())
        return;
    QUrl preferred;
    const QString file = m_settings->value(lastFileKey).toString();
    if (!file.isEmpty() && QFileInfo::exists(file))
        preferred = FileUrl::fromPath(file);
    openFolder(QUrl::fromLocalFile(folder), preferred);
}

void WorkspaceStore::openFile(const QUrl &url)
{
    if (FileUrl::isDirectoryUrl(url))
        return;
    if (url == m_selectedFileURL && m_currentDocument)
        return;
    const QString path = FileUrl::path(url);
    FileIdentity identity;
    FileResult<QString> read = TextFile::readUtf8(path, &identity);
    if (read.error) {
        presentAlert(u"Impossible de lire le fichier: "_s, *read.error);
        return;
    }
    leaveDocument();
    m_diskText = read.value;
    m_diskIdentity = identity;
    m_offeredDraft = m_drafts.find(path, m_diskText);
    setSelectedFileURL(url);
    EditorDocument document;
    document.fileURL = url;
    document.content = std::move(read.value);
    document.lastModified = QDateTime::currentDateTime();
    setCurrentDocument(document);
    storeSetting(lastFileKey, path);
    recordVisit(path);
    if (m_offeredDraft)
        setNotice(DraftFound);
    if (m_watcher)
        m_watcher->setExtraFolder(QFileInfo(path).path());
}

void WorkspaceStore::updateDocumentContent(const QString &newContent)
{
    if (!m_currentDocument || m_currentDocument->content == newContent)
        return;
    EditorDocument document = *m_currentDocument;
    document.content = newContent;
    const bool wasDirty = document.isDirty;
    document.isDirty = true;
    setCurrentDocument(document, wasDirty ? Text : Text | Modified);
    if (!m_draftTimer.isActive())
        m_draftTimer.start();
}

void WorkspaceStore::updateReplacedDocumentContent(const QString &path, const QString &text)
{
    if (!m_replaced || m_replaced->path != path || text == m_replaced->content)
        return;
    m_replaced->content = text;
    if (text != m_replaced->diskText)
        m_drafts.save(path, m_replaced->diskText, text);
}

void WorkspaceStore::updateHeadings(const QList<HeadingItem> &headings)
{
    if (!m_currentDocument)
        return;
    EditorDocument document = *m_currentDocument;
    document.headings = headings;
    setCurrentDocument(document, Headings);
}

void WorkspaceStore::saveCurrentDocument()
{
    if (!m_currentDocument)
        return;
    // The bar asks first whether the file's new text or the edits win.
    if (m_notice == ChangedOnDisk) {
        setNotice(ChangedOnDisk, true);
        return;
    }
    const QString path = FileUrl::path(m_currentDocument->fileURL);
    const FileIdentity onDisk = FileIdentity::of(path);
    if (onDisk.exists() && onDisk != m_diskIdentity && !takeChangeFromDisk(true))
        return;
    FileIdentity written;
    if (std::optional<FileError> error
        = TextFile::writeUtf8Atomically(path, m_currentDocument->content,
                                        TextFile::Temporary::UnnamedWherePossible, &written)) {
        presentAlert(u"Erreur d'enregistrement: "_s, *error);
        return;
    }
    m_diskText = m_currentDocument->content;
    m_diskIdentity = written;
    m_draftTimer.stop();
    m_drafts.remove(path);
    m_offeredDraft.reset();
    EditorDocument document = *m_currentDocument;
    document.isDirty = false;
    document.lastModified = QDateTime::currentDateTime();
    setCurrentDocument(document, Modified);
    if (m_notice != NoNotice)
        setNotice(NoNotice);
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
    const QUrl target = folder.isEmpty() ? m_rootURL : folder;
    if (target.isEmpty())
        return;
    const FileResult<QUrl> created = m_fileSystemService.createNewFile(target, name);
    if (created.error) {
        presentAlert(u"Erreur lors de la création: "_s, *created.error);
        return;
    }
    // Written here, not by another program: the open document's file, rewritten, is not news.
    if (m_currentDocument && created.value == m_currentDocument->fileURL) {
        const QString path = FileUrl::path(created.value);
        m_diskIdentity = FileIdentity::of(path);
        if (FileResult<QString> read = TextFile::readUtf8(path); read.ok())
            m_diskText = read.value;
    }
    reloadCurrentFolder();
    openFile(created.value);
}

void WorkspaceStore::deleteFile(const QUrl &url)
{
    if (const std::optional<FileError> error = m_fileSystemService.deleteItem(url)) {
        presentAlert(u"Erreur lors de la suppression: "_s, *error);
        return;
    }
    if (m_selectedFileURL == url) {
        // Deleted on purpose: its edits go with it.
        m_draftTimer.stop();
        m_documentCheck.stop();
        if (m_currentDocument)
            m_drafts.remove(FileUrl::path(m_currentDocument->fileURL));
        m_offeredDraft.reset();
        if (m_notice != NoNotice)
            setNotice(NoNotice);
        setSelectedFileURL(QUrl());
        setCurrentDocument(std::nullopt);
    }
    reloadCurrentFolder();
}

void WorkspaceStore::updateSearch(const QString &query)
{
    setSearchQuery(query);
    if (m_searchCancelled)
        *m_searchCancelled = true;

    if (!m_rootItem || m_rootURL.isEmpty() || isBlank(query)) {
        setSearchResults({});
        setSearching(false);
        return;
    }

    setSearching(true);
    const auto cancelled = std::make_shared<std::atomic_bool>(false);
    m_searchCancelled = cancelled;
    // The search gets its own copy of the tree (cheap: implicitly shared), so a rescan cannot
    // disturb it.
    QFuture<QList<FileSearchResults>> future = QtConcurrent::run(
        [service = m_searchService, query, root = *m_rootItem, rootURL = m_rootURL, cancelled] {
            return service->search(query, root, rootURL, cancelled.get());
        });
    auto *watcher = new QFutureWatcher<QList<FileSearchResults>>(this);
    connect(watcher, &QFutureWatcherBase::finished, this, [this, watcher, cancelled] {
        watcher->deleteLater();
        // Checked here, on the main thread: a superseded search never publishes.
        if (*cancelled)
            return;
        setSearchResults(watcher->result());
        setSearching(false);
    });
    watcher->setFuture(future);
}

void WorkspaceStore::followLink(const QString &target, const QString &fromPath)
{
    if (!m_rootItem)
        return;
    const std::optional<LinkResolver::Target> found
        = LinkResolver::resolve(target, fromPath, *m_rootItem);
    if (!found) {
        setAlertMessage(u"Le lien \u00AB\u00A0%1\u00A0\u00BB ne m\u00E8ne \u00E0 aucun document "
                        "du dossier."_s.arg(target));
        setShowAlert(true);
        return;
    }
    openFile(QUrl::fromLocalFile(found->path));
    // The page takes the new text before this request, so the heading is there to be found.
    if (!found->fragment.isEmpty() && m_currentDocument
        && FileUrl::path(m_currentDocument->fileURL) == found->path)
        requestHeadingScroll(found->fragment);
}

void WorkspaceStore::recordVisit(const QString &path)
{
    if (m_travelling)
        return;
    m_history.resize(m_historyIndex + 1);
    if (m_history.isEmpty() || m_history.last() != path)
        m_history.append(path);
    m_historyIndex = m_history.size() - 1;
    Q_EMIT historyChanged();
}

void WorkspaceStore::travel(int step)
{
    // Documents deleted or renamed since are passed over, and forgotten.
    for (qsizetype i = m_historyIndex + step; i >= 0 && i < m_history.size(); i += step) {
        const QString path = m_history.at(i);
        if (!QFileInfo(path).isFile()) {
            m_history.removeAt(i);
            if (i < m_historyIndex)
                --m_historyIndex;
            if (step > 0)
                --i;
            continue;
        }
        m_travelling = true;
        openFile(QUrl::fromLocalFile(path));
        m_travelling = false;
        if (m_currentDocument && FileUrl::path(m_currentDocument->fileURL) == path) {
            m_historyIndex = i;
            Q_EMIT historyPositionRequest();
        }
        break;
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

bool WorkspaceStore::isBlank(const QString &text)
{
    return std::all_of(text.begin(), text.end(), [](QChar c) { return c == u' ' || c == u'\t'; });
}

QString WorkspaceStore::folderName() const
{
    return m_rootURL.isEmpty() ? u"Aucun dossier ouvert"_s : FileUrl::lastPathComponent(m_rootURL);
}

QString WorkspaceStore::noticeMessage() const
{
    if (!m_currentDocument)
        return {};
    const QString name = FileUrl::lastPathComponent(m_currentDocument->fileURL);
    switch (m_notice) {
    case DraftFound:
        return u"Des modifications non enregistrées de « "_s + name + u" » ont été retrouvées."_s;
    case ChangedOnDisk:
        return u"« "_s + name + u" » a été modifié sur le disque."_s;
    case RemovedFromDisk:
        return u"« "_s + name + u" » a été supprimé du disque."_s;
    case NoNotice:
        break;
    }
    return {};
}

QString WorkspaceStore::noticeDetail() const
{
    if (!m_saveHeld)
        return {};
    // No-break spaces keep the guillemets with their words.
    return u"Rien n'a été enregistré\u00a0: choisissez d'abord «\u00a0Recharger\u00a0» ou "
           u"«\u00a0Garder mes modifications\u00a0»."_s;
}

void WorkspaceStore::setNotice(Notice notice, bool saveHeld)
{
    m_notice = notice;
    m_saveHeld = saveHeld;
    Q_EMIT noticeChanged();
}

void WorkspaceStore::leaveDocument()
{
    writeDraftNow();
    if (m_currentDocument)
        m_replaced = ReplacedDocument {FileUrl::path(m_currentDocument->fileURL), m_diskText,
                                       m_currentDocument->content};
    m_documentCheck.stop();
    m_offeredDraft.reset();
    if (m_notice != NoNotice)
        setNotice(NoNotice);
}

void WorkspaceStore::writeDraftNow()
{
    m_draftTimer.stop();
    if (m_currentDocument && m_currentDocument->isDirty)
        m_drafts.save(FileUrl::path(m_currentDocument->fileURL), m_diskText,
                      m_currentDocument->content);
}

void WorkspaceStore::flushDraft()
{
    writeDraftNow();
    m_drafts.waitForWrites();
}

void WorkspaceStore::restoreDraft()
{
    if (m_notice != DraftFound || !m_offeredDraft || !m_currentDocument)
        return;
    EditorDocument document = *m_currentDocument;
    document.content = *m_offeredDraft;
    document.isDirty = true;
    m_offeredDraft.reset();
    setCurrentDocument(document, Text | Modified);
    setNotice(NoNotice);
    Q_EMIT documentTextReplaced();
}

void WorkspaceStore::discardDraft()
{
    if (m_notice != DraftFound || !m_currentDocument)
        return;
    m_drafts.remove(FileUrl::path(m_currentDocument->fileURL));
    m_offeredDraft.reset();
    setNotice(NoNotice);
}

void WorkspaceStore::reloadDocumentFromDisk()
{
    if (!m_currentDocument)
        return;
    FileIdentity identity;
    FileResult<QString> read
        = TextFile::readUtf8(FileUrl::path(m_currentDocument->fileURL), &identity);
    if (read.error) {
        presentAlert(u"Impossible de lire le fichier: "_s, *read.error);
        return;
    }
    // The edits dropped here stay as a draft, made against the text they were edits of.
    writeDraftNow();
    replaceDocumentText(read.value, identity);
}

void WorkspaceStore::keepEdits()
{
    if (m_notice != ChangedOnDisk || !m_currentDocument)
        return;
    // The new file becomes what the edits replace: the next save writes them over it.
    FileIdentity identity;
    FileResult<QString> read
        = TextFile::readUtf8(FileUrl::path(m_currentDocument->fileURL), &identity);
    m_diskIdentity
        = read.ok() ? identity : FileIdentity::of(FileUrl::path(m_currentDocument->fileURL));
    if (read.ok())
        m_diskText = read.value;
    setNotice(NoNotice);
    writeDraftNow();
}

void WorkspaceStore::replaceDocumentText(const QString &text, const FileIdentity &identity)
{
    m_diskText = text;
    m_diskIdentity = identity;
    m_offeredDraft.reset();
    EditorDocument document = *m_currentDocument;
    document.content = text;
    document.isDirty = false;
    document.lastModified = QDateTime::currentDateTime();
    setCurrentDocument(document, Text | Modified);
    if (m_notice != NoNotice)
        setNotice(NoNotice);
    Q_EMIT documentTextReplaced();
}

bool WorkspaceStore::takeChangeFromDisk(bool saveHeld)
{
    const QString path = FileUrl::path(m_currentDocument->fileURL);
    FileIdentity identity;
    FileResult<QString> read = TextFile::readUtf8(path, &identity);
    if (read.ok() && read.value == m_diskText) {
        // Touched, not changed (a checkout writing the same bytes, a copy).
        m_diskIdentity = identity;
        if (m_notice == RemovedFromDisk)
            setNotice(NoNotice);
        return true;
    }
    if (read.ok() && !m_currentDocument->isDirty) {
        replaceDocumentText(read.value, identity);
        return false;
    }
    setNotice(ChangedOnDisk, saveHeld);
    return false;
}

void WorkspaceStore::startWatching(int watchLimit)
{
    m_watcher
        = std::make_unique<FolderWatcher>(m_fileSystemService.ignoredFolderNames(), watchLimit);
    connect(m_watcher.get(), &FolderWatcher::changed, this, &WorkspaceStore::diskChanged);
    if (m_currentDocument)
        m_watcher->setExtraFolder(QFileInfo(FileUrl::path(m_currentDocument->fileURL)).path());
    if (!m_rootURL.isEmpty())
        m_watcher->setRoot(FileUrl::path(m_rootURL));
}

void WorkspaceStore::applicationActivated()
{
    checkDocumentSoon();
    if (m_watcher && m_watcher->isLimited())
        refreshTree({}, true);
}

void WorkspaceStore::diskChanged(const FolderWatcher::Changes &changes)
{
    if (changes.everything || !changes.folders.isEmpty())
        refreshTree(changes.folders, changes.everything);
    if (m_currentDocument) {
        const QString path = FileUrl::path(m_currentDocument->fileURL);
        if (changes.everything || changes.files.contains(path)
            || changes.folders.contains(QFileInfo(path).path()))
            checkDocumentSoon();
    }
    const bool documentsChanged
        = changes.everything || !changes.folders.isEmpty()
        || std::any_of(changes.files.cbegin(), changes.files.cend(), [](const QString &file) {
               const QStringView name = QStringView(file).mid(file.lastIndexOf(u'/') + 1);
               return FileItem::isMarkdownName(name) || FileItem::isSvgOrDiagramName(name);
           });
    if (documentsChanged && !m_searchQuery.isEmpty())
        m_searchRefresh.start();
}

void WorkspaceStore::refreshTree(const QSet<QString> &folders, bool everything)
{
    if (!m_rootItem)
        return;
    m_treeChanges.merge({folders, {}, everything});
    if (!m_treeRefreshRunning)
        startTreeRefresh();
}

// The tree is read again away from the main thread, only the folders that changed; the result
// is published if no other tree replaced the one it started from, else it is done again.
void WorkspaceStore::startTreeRefresh()
{
    if (!m_rootItem || m_treeChanges.isEmpty())
        return;
    m_treeRefreshRunning = true;
    const FolderWatcher::Changes changes = std::exchange(m_treeChanges, {});
    const quint64 generation = m_treeGeneration;
    QFuture<FileItem> future = QtConcurrent::run(
        [service = m_fileSystemService, root = *m_rootItem, rootURL = m_rootURL, changes] {
            return changes.everything ? service.scanDirectory(rootURL)
                                      : service.rescanFolders(root, changes.folders);
        });
    auto *watcher = new QFutureWatcher<FileItem>(this);
    connect(watcher, &QFutureWatcherBase::finished, this, [this, watcher, generation, changes] {
        watcher->deleteLater();
        m_treeRefreshRunning = false;
        if (generation != m_treeGeneration) {
            m_treeChanges.merge(changes);
        } else if (m_rootItem) {
            const FileItem tree = watcher->result();
            if (tree != *m_rootItem) {
                setRootItem(tree);
                if (!m_searchQuery.isEmpty())
                    m_searchRefresh.start();
            }
        }
        startTreeRefresh();
    });
    watcher->setFuture(future);
}

void WorkspaceStore::checkDocumentSoon()
{
    if (!m_currentDocument)
        return;
    m_lastSeenIdentity = FileIdentity::of(FileUrl::path(m_currentDocument->fileURL));
    m_documentCheck.start();
}

void WorkspaceStore::checkDocumentOnDisk()
{
    if (!m_currentDocument)
        return;
    const FileIdentity now = FileIdentity::of(FileUrl::path(m_currentDocument->fileURL));
    if (now != m_lastSeenIdentity) {
        // Still being written: wait until it stands still.
        m_lastSeenIdentity = now;
        m_documentCheck.start();
        return;
    }
    if (now != m_diskIdentity)
        Q_EMIT documentFileChanged();
    if (!now.exists()) {
        if (m_notice != RemovedFromDisk)
            setNotice(RemovedFromDisk);
        return;
    }
    if (now == m_diskIdentity) {
        if (m_notice == RemovedFromDisk)
            setNotice(NoNotice);
        return;
    }
    if (m_notice != ChangedOnDisk)
        takeChangeFromDisk(false);
}

void WorkspaceStore::presentAlert(const QString &prefix, const FileError &error)
{
    setAlertMessage(prefix + error.localizedDescription());
    setShowAlert(true);
}

void WorkspaceStore::storeSetting(const QString &key, const QVariant &value)
{
    m_settings->setValue(key, value);
    // Written through at once: the session survives a crash or a killed process.
    m_settings->sync();
}

void WorkspaceStore::setRootURL(const QUrl &url)
{
    m_rootURL = url;
    Q_EMIT rootURLChanged();
}

void WorkspaceStore::setRootItem(const std::optional<FileItem> &item)
{
    m_rootItem = item;
    ++m_treeGeneration;
    Q_EMIT rootItemChanged();
}

void WorkspaceStore::setSelectedFileURL(const QUrl &url)
{
    m_selectedFileURL = url;
    Q_EMIT selectedFileURLChanged();
}

void WorkspaceStore::setCurrentDocument(const std::optional<EditorDocument> &document, int changed)
{
    m_currentDocument = document;
    Q_EMIT currentDocumentChanged();
    if ((changed & Replaced) == Replaced)
        Q_EMIT documentReplaced();
    if (changed & Text)
        Q_EMIT documentTextChanged();
    if (changed & Headings)
        Q_EMIT documentHeadingsChanged();
    if (changed & Modified)
        Q_EMIT documentModifiedChanged();
}

void WorkspaceStore::setRecentFolderPaths(const QStringList &paths)
{
    m_recentFolderPaths = paths;
    Q_EMIT recentFolderPathsChanged();
}

void WorkspaceStore::setSidebarMode(SidebarMode::Value mode)
{
    m_sidebarMode = mode;
    Q_EMIT sidebarModeChanged();
}

void WorkspaceStore::setSearchQuery(const QString &query)
{
    m_searchQuery = query;
    Q_EMIT searchQueryChanged();
}

void WorkspaceStore::setSearchResults(const QList<FileSearchResults> &results)
{
    m_searchResults = results;
    Q_EMIT searchResultsChanged();
}

void WorkspaceStore::setSearching(bool searching)
{
    m_isSearching = searching;
    Q_EMIT isSearchingChanged();
}

void WorkspaceStore::setOutlineVisible(bool visible)
{
    m_isOutlineVisible = visible;
    Q_EMIT isOutlineVisibleChanged();
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
