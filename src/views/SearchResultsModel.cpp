#include "SearchResultsModel.h"

#include "workspace/FolderReplace.h"
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
    m_occurrenceCount = 0;
    m_occurrenceDocumentCount = 0;
    for (const FileSearchResults &file : results) {
        m_firstRows.push_back(row);
        row += 1 + int(file.matches.size());
        hits += int(file.matches.size());
        const int occurrences = int(file.matchRanges.size());
        m_occurrenceCount += occurrences;
        m_occurrenceDocumentCount += occurrences > 0 ? 1 : 0;
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
    case ExcerptRole:
        // Wrapping at word ends leaves lines short: half a line of slack keeps the cut in view.
        return excerpt(hit.lineContent, file.rangesOf(hit), hit.indent,
                       3 * m_charsPerLine - m_charsPerLine / 2, m_highlightColor);
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
            {LineContentRole, "lineContent"},
            {ExcerptRole, "excerpt"}};
}

void SearchResultsModel::open(int row)
{
    if (row < 0 || row >= m_rowCount || !m_store)
        return;
    const auto [fileIndex, hitIndex] = locate(row);
    const FileSearchResults &file = m_results.at(fileIndex);
    if (hitIndex < 0 || file.matches.at(hitIndex).rangeCount == 0) {
        m_store->openFile(file.fileURL);
        return;
    }
    const SearchResult &hit = file.matches.at(hitIndex);
    const std::pair<int, int> first = file.rangesOf(hit).constFirst();
    m_store->openFileAtMatch(file.fileURL, hit.lineNumber - 1, first.first, first.second);
}

void SearchResultsModel::setCharsPerLine(int chars)
{
    chars = std::max(chars, 8);
    if (chars == m_charsPerLine)
        return;
    m_charsPerLine = chars;
    restyleExcerpts();
}

void SearchResultsModel::setHighlightColor(const QColor &color)
{
    if (color == m_highlightColor)
        return;
    m_highlightColor = color;
    restyleExcerpts();
}

void SearchResultsModel::restyleExcerpts()
{
    Q_EMIT excerptStyleChanged();
    if (m_rowCount > 0)
        Q_EMIT dataChanged(index(0), index(m_rowCount - 1), {ExcerptRole});
}

QString SearchResultsModel::replaceQuestion() const
{
    return FolderReplace::question(m_occurrenceCount, m_occurrenceDocumentCount);
}

QString SearchResultsModel::excerpt(const QString &content,
                                    const QList<std::pair<int, int>> &ranges, int indent,
                                    int budget, const QColor &highlight)
{
    // The matches within the trimmed text.
    QList<std::pair<qsizetype, qsizetype>> shown;
    for (const auto &[from, to] : ranges) {
        const qsizetype start = std::clamp<qsizetype>(from - indent, 0, content.size());
        const qsizetype end = std::clamp<qsizetype>(to - indent, 0, content.size());
        if (end > start)
            shown.append({start, end});
    }
    qsizetype begin = 0;
    qsizetype end = content.size();
    if (content.size() > budget) {
        // A little of what comes before the match, from a word's start; then as much as fits.
        const qsizetype first = shown.isEmpty() ? 0 : shown.first().first;
        begin = std::max<qsizetype>(0, first - std::max(budget / 9, 4));
        if (begin > 0) {
            const qsizetype space = content.indexOf(u' ', begin);
            if (space >= 0 && space < first)
                begin = space + 1;
        }
        end = std::min<qsizetype>(content.size(), begin + budget - 2);
        if (end == content.size())
            begin = std::max<qsizetype>(0, std::min(begin, end - budget + 1));
        // Never split a surrogate pair.
        if (begin > 0 && content[begin].isLowSurrogate())
            ++begin;
        if (end < content.size() && content[end].isLowSurrogate())
            --end;
    }
    const QString mark = u"<span style=\"background-color:%1\">"_s.arg(highlight.name());
    QString html = u"<span style=\"white-space:pre-wrap\">"_s;
    if (begin > 0)
        html += u'\u2026';
    qsizetype at = begin;
    for (const auto &[start, stop] : shown) {
        if (stop <= at || start >= end)
            continue;
        const qsizetype from = std::max(start, at);
        const qsizetype to = std::min(stop, end);
        html += content.mid(at, from - at).toHtmlEscaped();
        html += mark + content.mid(from, to - from).toHtmlEscaped() + u"</span>"_s;
        at = to;
    }
    html += content.mid(at, end - at).toHtmlEscaped();
    if (end < content.size())
        html += u'\u2026';
    return html + u"</span>"_s;
}
