#pragma once

#include "model/FileItem.h"
#include "services/LatestRun.h"
#include "services/MarkdownLinks.h"

#include <QHash>
#include <QList>
#include <QObject>
#include <QSet>
#include <QString>

#include <memory>
#include <optional>

// Every link and picture written in the folder's documents and where each leads, kept current
// away from the main thread: read whole when a folder opens, then only the documents the disk or
// a save changed; the links are resolved again when the tree changes (a name that appears may
// take a wiki link). It answers what leads to a document and what leaves one.
class LinkIndex : public QObject
{
    Q_OBJECT

public:
    // A link that may lead into the folder (addresses and "#heading" alone are left out).
    struct Link
    {
        QString target; // as written
        qint64 lineStart; // the byte where its line starts in the file
        MarkdownLinks::Form form;
        bool picture;
        int line; // from 0
    };
    // A link that leads somewhere: the document holding it and its place in that document.
    struct Incoming
    {
        QString from;
        qsizetype index; // in the document's links
    };
    struct Snapshot
    {
        QHash<QString, QList<Link>> written; // by document
        QHash<QString, QList<Incoming>> incoming; // by the file or folder a link leads to
    };

    explicit LinkIndex(QObject *parent = nullptr);

    // The index of another tree (or none): the documents not read yet, or named in `changed`,
    // are read, and every link is resolved again.
    void update(const std::optional<FileItem> &root, const QSet<QString> &changed = {});
    // Every document is read again (the watcher lost track of what changed).
    void rereadAll();
    // Brings the index up to date here and now, when it is not.
    void waitUntilCurrent();
    // A document's text as just written here.
    void documentSaved(const QString &path);

    // Whether the index is built for the tree it was last given.
    bool isCurrent() const { return !m_run.isRunning() && m_pending.isEmpty() && !m_rootChanged; }
    const Snapshot &snapshot() const { return *m_snapshot; }
    // The links that lead to `path`, or below it for a folder, by document then line.
    QList<std::pair<QString, Link>> linksTo(const QString &path) const;
    // The documents whose links lead to `path` or below it.
    QStringList documentsLinkingTo(const QString &path) const;
    // The links written in the document at `path`, as last read.
    QList<Link> linksFrom(const QString &path) const { return m_snapshot->written.value(path); }
    // The text of the line holding `link` in the document at `path`, trimmed.
    static QString lineText(const QString &path, const Link &link);

    // The work of a build, here and now: for the benchmark and the tests.
    static std::shared_ptr<const Snapshot> build(const FileItem &root, const Snapshot &previous,
                                                 const QSet<QString> &reread, bool readAll,
                                                 const std::atomic_bool &replaced);

Q_SIGNALS:
    // A new state was published.
    void changed();

private:
    void start();

    std::optional<FileItem> m_root;
    bool m_rootChanged = false;
    bool m_readAll = true;
    QSet<QString> m_pending;
    // What the run under way reads again.
    QSet<QString> m_reading;
    bool m_readingAll = false;
    std::shared_ptr<const Snapshot> m_snapshot;
    LatestRun<std::shared_ptr<const Snapshot>> m_run {this};
};
