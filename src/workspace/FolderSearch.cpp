#include "FolderSearch.h"

#include "FolderTree.h"
#include "model/FileKind.h"
#include "model/TextRules.h"

#include <algorithm>

using namespace Qt::StringLiterals;

FolderSearch::FolderSearch(const FolderTree *tree, QObject *parent)
    : QObject(parent), m_tree(tree), m_service(std::make_shared<const SearchService>())
{
    // A burst of changes (a branch switch) searches again once.
    m_refresh.setSingleShot(true);
    m_refresh.setInterval(refreshDelayMs);
    connect(&m_refresh, &QTimer::timeout, this, [this] {
        if (!m_query.isEmpty())
            update(m_query);
    });
}

void FolderSearch::update(const QString &query)
{
    m_query = query;
    const bool invalid = m_options.regularExpression && !TextRules::isBlank(query)
        && !SearchService::pattern(query, m_options).isValid();
    m_error = invalid ? u"Expression r\u00E9guli\u00E8re invalide"_s : QString();
    Q_EMIT queryChanged();
    m_run.supersede();
    const std::optional<FileItem> &root = m_tree->rootItem();
    if (!root || m_tree->rootURL().isEmpty() || TextRules::isBlank(query) || invalid) {
        setResults({});
        setSearching(false);
        return;
    }
    setSearching(true);
    // The search gets its own copy of the tree (cheap: implicitly shared), so a rescan cannot
    // disturb it.
    m_run.start(
        [service = m_service, query, options = m_options, root = *root,
         rootURL = m_tree->rootURL()](const std::atomic_bool &replaced) {
            return service->search(query, root, rootURL, &replaced, options);
        },
        [this](const QList<FileSearchResults> &results) {
            setResults(results);
            setSearching(false);
        });
}

void FolderSearch::setOptions(SearchOptions options)
{
    if (options == m_options)
        return;
    m_options = options;
    update(m_query);
    Q_EMIT optionsChanged();
}

void FolderSearch::refreshSoon()
{
    if (!m_query.isEmpty())
        m_refresh.start();
}

bool FolderSearch::touchesDocuments(const FolderWatcher::Changes &changes)
{
    return changes.everything || !changes.folders.isEmpty()
        || std::any_of(changes.files.cbegin(), changes.files.cend(), [](const QString &file) {
               return FileKind::isSearched(QStringView(file).mid(file.lastIndexOf(u'/') + 1));
           });
}

void FolderSearch::setResults(const QList<FileSearchResults> &results)
{
    m_results = results;
    Q_EMIT resultsChanged();
}

void FolderSearch::setSearching(bool searching)
{
    m_isSearching = searching;
    Q_EMIT isSearchingChanged();
}
