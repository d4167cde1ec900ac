#pragma once

#include "SearchResult.h"
#include "services/FileIdentity.h"

#include <QHashFunctions>
#include <QList>
#include <QMetaType>
#include <QString>
#include <QUrl>

#include <utility>

// The hits of one document, in line order.
class FileSearchResults
{
    Q_GADGET
    Q_PROPERTY(QString id READ id CONSTANT)
    Q_PROPERTY(QUrl fileURL MEMBER fileURL CONSTANT)
    Q_PROPERTY(QString fileName MEMBER fileName CONSTANT)
    Q_PROPERTY(QString relativePath MEMBER relativePath CONSTANT)
    Q_PROPERTY(QList<SearchResult> matches MEMBER matches CONSTANT)

public:
    QUrl fileURL;
    QString fileName;
    QString relativePath;
    QList<SearchResult> matches;
    // The matches of every hit, as [start, end) offsets in UTF-8 bytes of its untrimmed line, as
    // the byte search finds them; `rangesOf` turns a hit's into UTF-16 units when it is shown.
    QList<std::pair<int, int>> matchRanges;
    // The file whose text was searched, as it was then: a replace leaves a file changed since.
    FileIdentity identity;

    QString id() const;
    // A hit's matches in UTF-16 units of its untrimmed line: the first is where the editor
    // selects, all are drawn highlighted.
    QList<std::pair<int, int>> rangesOf(const SearchResult &hit) const;

    friend bool operator==(const FileSearchResults &a, const FileSearchResults &b)
    {
        return a.fileURL == b.fileURL && a.fileName == b.fileName
            && a.relativePath == b.relativePath && a.matches == b.matches
            && a.matchRanges == b.matchRanges;
    }
    friend bool operator!=(const FileSearchResults &a, const FileSearchResults &b)
    {
        return !(a == b);
    }
};

size_t qHash(const FileSearchResults &r, size_t seed = 0) noexcept;

Q_DECLARE_METATYPE(FileSearchResults)
