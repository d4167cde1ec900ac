#pragma once

#include "model/FileSearchResults.h"
#include "model/SearchOptions.h"
#include "services/FolderWatcher.h"
#include "services/LatestRun.h"
#include "services/SearchService.h"

#include <QList>
#include <QObject>
#include <QString>
#include <QTimer>

#include <memory>

class FolderTree;

// The search of the open folder: the query, the search under way and its results. Each query
// replaces the search before it, which then stops and publishes nothing; documents changed on
// disk search the same query again a moment later.
class FolderSearch : public QObject
{
    Q_OBJECT

public:
    static constexpr int refreshDelayMs = 300;

    explicit FolderSearch(const FolderTree *tree, QObject *parent = nullptr);

    const QString &query() const { return m_query; }
    const SearchOptions &options() const { return m_options; }
    // Why the query finds nothing whatever the folder holds: « Expression régulière invalide »;
    // else empty.
    const QString &error() const { return m_error; }
    const QList<FileSearchResults> &results() const { return m_results; }
    bool isSearching() const { return m_isSearching; }

    // Records the query and searches the folder in the background; a blank query, or no folder,
    // empties the results at once.
    void update(const QString &query);
    // The same query read another way, searched again.
    void setOptions(SearchOptions options);
    // Documents may have changed: the query runs again once changes have paused.
    void refreshSoon();
    // Whether the changes the watcher saw may change what a search finds.
    static bool touchesDocuments(const FolderWatcher::Changes &changes);

Q_SIGNALS:
    void queryChanged();
    void optionsChanged();
    void resultsChanged();
    void isSearchingChanged();

private:
    void setResults(const QList<FileSearchResults> &results);
    void setSearching(bool searching);

    const FolderTree *m_tree;
    // Shared with the search under way, which may outlive this object.
    const std::shared_ptr<const SearchService> m_service;
    QString m_query;
    SearchOptions m_options;
    QString m_error; // of the query and options last searched
    QList<FileSearchResults> m_results;
    bool m_isSearching = false;
    QTimer m_refresh;
    LatestRun<QList<FileSearchResults>> m_run {this};
};
