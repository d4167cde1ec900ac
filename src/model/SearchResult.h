#pragma once

#include <QHashFunctions>
#include <QMetaType>
#include <QString>
#include <QUrl>
#include <QUuid>

// One hit of a search: a matching line of a document, or its name when only the name matched.
class SearchResult
{
    Q_GADGET
    Q_PROPERTY(QUuid id MEMBER id CONSTANT)
    Q_PROPERTY(QUrl fileURL MEMBER fileURL CONSTANT)
    Q_PROPERTY(QString fileName MEMBER fileName CONSTANT)
    Q_PROPERTY(QString relativePath MEMBER relativePath CONSTANT)
    Q_PROPERTY(int lineNumber MEMBER lineNumber CONSTANT)
    Q_PROPERTY(QString lineContent MEMBER lineContent CONSTANT)
    Q_PROPERTY(QString matchTerm MEMBER matchTerm CONSTANT)

public:
    QUuid id;
    QUrl fileURL;
    QString fileName;
    QString relativePath;
    int lineNumber = 0;
    QString lineContent;
    QString matchTerm;
    // Its matches: `rangeCount` of its file's `matchRanges` from `firstRange` (one list per file,
    // not one per hit). None for a document found by its name alone.
    int firstRange = 0;
    int rangeCount = 0;
    int indent = 0; // spaces and tabs trimmed from the line's start

    // A fresh random (version 4) identifier. Far cheaper than QUuid::createUuid(), which asks
    // the system for entropy on every call: a search can make hundreds of thousands of hits.
    static QUuid newId();

    friend bool operator==(const SearchResult &a, const SearchResult &b)
    {
        return a.id == b.id && a.fileURL == b.fileURL && a.fileName == b.fileName
            && a.relativePath == b.relativePath && a.lineNumber == b.lineNumber
            && a.lineContent == b.lineContent && a.matchTerm == b.matchTerm
            && a.firstRange == b.firstRange && a.rangeCount == b.rangeCount && a.indent == b.indent;
    }
    friend bool operator!=(const SearchResult &a, const SearchResult &b) { return !(a == b); }
};

inline size_t qHash(const SearchResult &r, size_t seed = 0) noexcept
{
    return qHashMulti(seed, r.id, r.fileURL, r.fileName, r.relativePath, r.lineNumber,
                      r.lineContent, r.matchTerm, r.firstRange, r.rangeCount, r.indent);
}

Q_DECLARE_METATYPE(SearchResult)
