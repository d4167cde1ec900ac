#include "WorkspaceStore.h"

#include "model/FileKind.h"
#include "model/FileUrl.h"
#include "model/TextRules.h"
#include "services/LinkResolver.h"
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
    if (currentDocument() && created.value == currentDocument()->fileURL)
        m_document.takeFileAsBase();
    reloadCurrentFolder();
    openFile(created.value);
}

void WorkspaceStore::deleteFile(const QUrl &url)
{
    if (const std::optional<FileError> error = m_tree.fileSystem().deleteItem(url)) {
        presentAlert(u"Erreur lors de la suppression: "_s, *error);
        return;
    }
    if (m_selectedFileURL == url) {
        m_drafts.forget();
        setSelectedFileURL(QUrl());
        m_document.close();
    }
    reloadCurrentFolder();
}

void WorkspaceStore::updateSearch(const QString &query)
{
    m_search.update(query);
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
