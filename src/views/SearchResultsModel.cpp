#include "SearchResultsModel.h"

#include "workspace/StoreBinding.h"

#include <algorithm>

using namespace Qt::StringLiterals;

SearchResultsModel::SearchResultsModel(QObject *parent) : QAbstractListModel(parent) { }

void SearchResultsModel::setStore(WorkspaceStore *store)
{
    if (!rebindStore(m_store, store, this))
        return;
    if (store) {
        connect(store, &WorkspaceStore::searchResultsChanged, this,
                &SearchResultsModel::updateResults);
        connect(store, &WorkspaceStore::isSearchingChanged, this,
                &SearchResultsModel::stateChanged);
        connect(store, &WorkspaceStore::searchQueryChanged, this,
                &SearchResultsModel::stateChanged);
    }
    updateResults();
    Q_EMIT storeChanged();
    Q_EMIT stateChanged();
}

bool SearchResultsModel::isSearching() const
{
    return m_store && m_store->isSearching();
}

bool SearchResultsModel::showsStatus() const
{
    return m_store && !m_store->searchQuery().isEmpty();
}

bool SearchResultsModel::showsEmptyState() const
{
    return showsStatus() && !isSearching() && m_results.isEmpty();
}

QString SearchResultsModel::hitsText(qsizetype hits)
{
    return QString::number(hits) + (hits >= 2 ? u" résultats"_s : u" résultat"_s);
}

QString SearchResultsModel::summaryText(qsizetype hits, qsizetype files)
{
    return hitsText(hits) + u" dans "_s + QString::number(files)
        + (files >= 2 ? u" fichiers"_s : u" fichier"_s);
}

void SearchResultsModel::updateResults()
{
    const QList<FileSearchResults> results
        = m_store ? m_store->searchResults() : QList<FileSearchResults>();
    // The store announces equal lists too (same shared data: compared in constant time).
    if (results == m_results)
        return;
    beginResetModel();
    m_results = results;
    m_firstRows.clear();
    m_firstRows.reserve(std::size_t(results.size()));
    int row = 0;
    int hits = 0;
    for (const FileSearchResults &file : results) {
        m_firstRows.push_back(row);
        row += 1 + int(file.matches.size());
        hits += int(file.matches.size());
    }
    m_rowCount = row;
    m_hitCount = hits;
    endResetModel();
    Q_EMIT resultsChanged();
    Q_EMIT stateChanged();
}

std::pair<qsizetype, qsizetype> SearchResultsModel::locate(int row) const
{
    const auto after = std::upper_bound(m_firstRows.begin(), m_firstRows.end(), row);
    const qsizetype file = qsizetype(after - m_firstRows.begin()) - 1;
    return {file, row - m_firstRows[std::size_t(file)] - 1};
}

int SearchResultsModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_rowCount;
}

QVariant SearchResultsModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return {};
    const auto [fileIndex, hitIndex] = locate(index.row());
    const FileSearchResults &file = m_results.at(fileIndex);
    if (hitIndex < 0) {
        switch (role) {
        case IsFileRole:
            return true;
        case Qt::DisplayRole:
        case FileNameRole:
            return file.fileName;
        case FileUrlRole:
            return file.fileURL;
        case RelativePathRole:
            return file.relativePath;
        case HitCountRole:
            return int(file.matches.size());
        case AccessibleNameRole:
            return QString(file.fileName + u", "_s + hitsText(file.matches.size()));
        default:
            return {};
        }
    }
    const SearchResult &hit = file.matches.at(hitIndex);
    switch (role) {
    case IsFileRole:
        return false;
    case FileNameRole:
        return hit.fileName;
    case FileUrlRole:
        return hit.fileURL;
    case RelativePathRole:
        return hit.relativePath;
    case LineNumberRole:
        return hit.lineNumber;
    case Qt::DisplayRole:
    case LineContentRole:
        return hit.lineContent;
    case AccessibleNameRole:
        return QString(u"L"_s + QString::number(hit.lineNumber) + u' ' + hit.relativePath + u" : "_s
                       + hit.lineContent);
    default:
        return {};
    }
}

QHash<int, QByteArray> SearchResultsModel::roleNames() const
{
    return {{AccessibleNameRole, "accessibleName"},
            {IsFileRole, "isFile"},
            {FileNameRole, "fileName"},
            {FileUrlRole, "fileUrl"},
            {RelativePathRole, "relativePath"},
            {HitCountRole, "hitCount"},
            {LineNumberRole, "lineNumber"},
            {LineContentRole, "lineContent"}};
}

void SearchResultsModel::open(int row)
{
    if (row < 0 || row >= m_rowCount || !m_store)
        return;
    m_store->openFile(m_results.at(locate(row).first).fileURL);
}
