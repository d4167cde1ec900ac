#include "WorkspaceStore.h"

#include "model/FileUrl.h"
#include "services/TextFile.h"

#include <QDateTime>
#include <QFileInfo>
#include <QFutureWatcher>
#include <QtConcurrent>

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

WorkspaceStore::WorkspaceStore(std::unique_ptr<QSettings> settings, QObject *parent)
    : QObject(parent),
      m_settings(std::move(settings)),
      m_searchService(std::make_shared<const SearchService>())
{
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
    const QString path = FileUrl::path(url);
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
    FileResult<QString> read = TextFile::readUtf8(path);
    if (read.error) {
        presentAlert(u"Impossible de lire le fichier: "_s, *read.error);
        return;
    }
    setSelectedFileURL(url);
    EditorDocument document;
    document.fileURL = url;
    document.content = std::move(read.value);
    document.lastModified = QDateTime::currentDateTime();
    setCurrentDocument(document);
    storeSetting(lastFileKey, path);
}

void WorkspaceStore::updateDocumentContent(const QString &newContent)
{
    if (!m_currentDocument || m_currentDocument->content == newContent)
        return;
    EditorDocument document = *m_currentDocument;
    document.content = newContent;
    document.isDirty = true;
    setCurrentDocument(document);
}

void WorkspaceStore::updateHeadings(const QList<HeadingItem> &headings)
{
    if (!m_currentDocument)
        return;
    EditorDocument document = *m_currentDocument;
    document.headings = headings;
    setCurrentDocument(document);
}

void WorkspaceStore::saveCurrentDocument()
{
    if (!m_currentDocument)
        return;
    const QString path = FileUrl::path(m_currentDocument->fileURL);
    if (std::optional<FileError> error
        = TextFile::writeUtf8Atomically(path, m_currentDocument->content)) {
        presentAlert(u"Erreur d'enregistrement: "_s, *error);
        return;
    }
    EditorDocument document = *m_currentDocument;
    document.isDirty = false;
    document.lastModified = QDateTime::currentDateTime();
    setCurrentDocument(document);
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

    const bool blank
        = std::all_of(query.begin(), query.end(), [](QChar c) { return c == u' ' || c == u'\t'; });
    if (!m_rootItem || m_rootURL.isEmpty() || blank) {
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

void WorkspaceStore::requestHeadingScroll(const QString &headingId)
{
    Q_EMIT headingScrollRequest(headingId);
}

void WorkspaceStore::requestSnippetInsert(const QString &snippet)
{
    Q_EMIT snippetInsertRequest(snippet);
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
    Q_EMIT rootItemChanged();
}

void WorkspaceStore::setSelectedFileURL(const QUrl &url)
{
    m_selectedFileURL = url;
    Q_EMIT selectedFileURLChanged();
}

void WorkspaceStore::setCurrentDocument(const std::optional<EditorDocument> &document)
{
    m_currentDocument = document;
    Q_EMIT currentDocumentChanged();
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
