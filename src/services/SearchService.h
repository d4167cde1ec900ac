#pragma once

#include "FileSystemService.h"
#include "TextPattern.h"
#include "model/FileItem.h"
#include "model/FileSearchResults.h"
#include "model/SearchOptions.h"

#include <QList>
#include <QString>
#include <QUrl>

#include <atomic>

// Finds, in every document of a tree, the files whose name or text holds the query (by default
// ignoring case, not accents) and, in each, the lines that hold it. Each search reads every
// document afresh; there is no index. Files are read and searched in parallel, on all cores.
class SearchService
{
public:
    // How document text is searched. Both give the same results: Bytes searches the UTF-8 bytes
    // without decoding them, Unicode decodes each document and searches it with QString (the
    // reference the first is checked against).
    enum class Engine { Bytes, Unicode };

    explicit SearchService(Engine engine = Engine::Bytes);

    // Runs to the end on the calling thread and the search pool, unless `cancelled` becomes true:
    // then it stops within a file or so and returns what it has (which the caller discards).
    QList<FileSearchResults> search(const QString &query, const FileItem &root, const QUrl &rootURL,
                                    const std::atomic_bool *cancelled = nullptr,
                                    SearchOptions options = {}) const;
    // What `query` with `options` looks for: the search's rule, also used to replace.
    static TextPattern pattern(const QString &query, SearchOptions options);

    // The line and paragraph ends that split a document into lines.
    static bool isLineEnd(QChar c);

private:
    FileSystemService m_fileSystemService;
    Engine m_engine;
};
