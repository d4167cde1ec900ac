#pragma once

#include "services/FuzzyMatcher.h"

#include <QList>
#include <QSet>
#include <QString>
#include <QStringList>

#include <vector>

// The documents of the open folder as "Aller au fichier..." finds them: folded once when the
// folder's list changes, then ranked for every key. A query that extends the previous one only
// looks at what that one matched.
class DocumentFinder
{
public:
    // `paths` are absolute; `rootPath` is the open folder's, without a final slash.
    void setDocuments(const QStringList &paths, const QString &rootPath);
    qsizetype documentCount() const { return qsizetype(m_documents.size()); }

    // The documents matching `query`, best first: by score, then the most recently opened
    // (`recent`, most recent first), then the shorter path, then the path. An empty query gives
    // the recent documents that are in the folder, in their order.
    QStringList find(const QString &query, const QStringList &recent);
    // The same, as positions for path(): a list of a hundred thousand paths is not copied.
    std::vector<qsizetype> rank(const QString &query, const QStringList &recent);
    const QString &path(qsizetype index) const { return m_documents[std::size_t(index)].path; }

    // The path shown for a document: relative to the open folder.
    QString relativePath(const QString &path) const;

private:
    struct Document
    {
        QString path;
        std::size_t at = 0; // of its folded path in m_texts and m_starts
        std::size_t length = 0;
        qsizetype nameStart = 0;
    };
    FuzzyMatcher::View folded(const Document &document) const
    {
        return {std::u16string_view(m_texts).substr(document.at, document.length),
                std::string_view(m_starts).substr(document.at, document.length),
                document.nameStart};
    }

    std::vector<Document> m_documents;
    // Every folded path, in the documents' order.
    std::u16string m_texts;
    std::string m_starts;
    QSet<QString> m_paths;
    QString m_rootPrefix;
    // The previous query (folded, without spaces) and the documents it matched.
    QString m_lastQuery;
    std::vector<qsizetype> m_lastMatches;
    bool m_hasLast = false;
};
