#pragma once

#include "model/FileSearchResults.h"
#include "workspace/WorkspaceStore.h"

#include <QAbstractListModel>
#include <QColor>
#include <QPointer>
#include <QtQml/qqmlregistration.h>

#include <vector>

// The search panel's rows: for each file of the results a header row, then one row per hit. The
// rows are not stored: a row number is turned into a file and a hit by a binary search over the
// files' first rows, so publishing 175,000 hits costs one pass over the files.
class SearchResultsModel : public QAbstractListModel
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(WorkspaceStore *store READ store WRITE setStore NOTIFY storeChanged)
    Q_PROPERTY(int count READ count NOTIFY resultsChanged)
    Q_PROPERTY(int hitCount READ hitCount NOTIFY resultsChanged)
    Q_PROPERTY(int fileCount READ fileCount NOTIFY resultsChanged)
    // "3 résultats dans 1 fichier"
    Q_PROPERTY(QString summaryText READ summaryText NOTIFY resultsChanged)
    Q_PROPERTY(bool isSearching READ isSearching NOTIFY stateChanged)
    // The status line shows while there is a query.
    Q_PROPERTY(bool showsStatus READ showsStatus NOTIFY stateChanged)
    // "Aucun résultat trouvé": a query, no search running, nothing found.
    Q_PROPERTY(bool showsEmptyState READ showsEmptyState NOTIFY stateChanged)
    // What a hit's excerpt may hold: three lines of this many characters, cut around the first
    // match; and the colour its matches are drawn on.
    Q_PROPERTY(int charsPerLine READ charsPerLine WRITE setCharsPerLine NOTIFY excerptStyleChanged)
    Q_PROPERTY(QColor highlightColor READ highlightColor WRITE setHighlightColor NOTIFY
                   excerptStyleChanged)
    // What "Tout remplacer" would replace: the matches listed, and the documents holding them.
    Q_PROPERTY(int occurrenceCount READ occurrenceCount NOTIFY resultsChanged)
    Q_PROPERTY(int occurrenceDocumentCount READ occurrenceDocumentCount NOTIFY resultsChanged)
    // « Remplacer N occurrences dans M documents ? »
    Q_PROPERTY(QString replaceQuestion READ replaceQuestion NOTIFY resultsChanged)

public:
    enum Role {
        IsFileRole = Qt::UserRole + 1,
        FileNameRole,
        FileUrlRole,
        RelativePathRole,
        HitCountRole,
        LineNumberRole,
        LineContentRole,
        // What a screen reader says of the row: "a.md, 2 résultats" or "L3 a.md : text".
        AccessibleNameRole,
        // The hit's line as rich text: at most three lines, its matches highlighted.
        ExcerptRole,
    };
    Q_ENUM(Role)

    explicit SearchResultsModel(QObject *parent = nullptr);

    WorkspaceStore *store() const { return m_store; }
    void setStore(WorkspaceStore *store);
    int count() const { return m_rowCount; }
    int hitCount() const { return m_hitCount; }
    int fileCount() const { return int(m_results.size()); }
    QString summaryText() const { return summaryText(m_hitCount, fileCount()); }
    // "1 résultat", "2 résultats": a number of hits with its noun.
    static QString hitsText(qsizetype hits);
    bool isSearching() const;
    bool showsStatus() const;
    bool showsEmptyState() const;

    static QString summaryText(qsizetype hits, qsizetype files);

    int charsPerLine() const { return m_charsPerLine; }
    void setCharsPerLine(int chars);
    QColor highlightColor() const { return m_highlightColor; }
    void setHighlightColor(const QColor &color);
    int occurrenceCount() const { return m_occurrenceCount; }
    int occurrenceDocumentCount() const { return m_occurrenceDocumentCount; }
    QString replaceQuestion() const;

    // The text a hit shows: `content` (its line, trimmed of `indent` spaces and tabs at the
    // start) cut to `budget` characters around its first match, "…" where it was cut, and each
    // match (offsets in the untrimmed line) drawn on `highlight`.
    static QString excerpt(const QString &content, const QList<std::pair<int, int>> &ranges,
                           int indent, int budget, const QColor &highlight);

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    // Opens the file of a header row at its start, or of a hit row at its line, its first match
    // selected.
    Q_INVOKABLE void open(int row);

Q_SIGNALS:
    void storeChanged();
    void resultsChanged();
    void stateChanged();
    void excerptStyleChanged();

private:
    void updateResults();
    // Every excerpt is drawn anew.
    void restyleExcerpts();
    // The file of a row and the hit within it (-1 for the file's header row).
    std::pair<qsizetype, qsizetype> locate(int row) const;

    QPointer<WorkspaceStore> m_store;
    QList<FileSearchResults> m_results;
    std::vector<int> m_firstRows; // row of each file's header
    int m_rowCount = 0;
    int m_hitCount = 0;
    int m_occurrenceCount = 0;
    int m_occurrenceDocumentCount = 0;
    int m_charsPerLine = 40;
    QColor m_highlightColor {255, 214, 10};
};
