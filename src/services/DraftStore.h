#pragma once

#include <QHash>
#include <QMutex>
#include <QString>
#include <QThreadPool>

#include <chrono>
#include <optional>

// Recovery drafts: the unsaved text of a document, kept under the user's state folder (never in
// the documents' folder) so that switching files, quitting or a crash loses no typing. A draft is
// keyed by the document's path and remembers the bytes the document was read from, so it is only
// offered against that same file. Writes happen in order on a thread of their own; the caller's
// cost is a copy of an implicitly shared string.
//
// A draft file is one line of JSON ({"path", "baseSize", "baseSha1", "written"}) followed by the
// draft's text, byte for byte.
class DraftStore
{
public:
    explicit DraftStore(const QString &folder);
    ~DraftStore();
    DraftStore(const DraftStore &) = delete;
    DraftStore &operator=(const DraftStore &) = delete;

    // $XDG_STATE_HOME/pagewell/drafts, or ~/.local/state/pagewell/drafts.
    static QString defaultFolder();
    static constexpr std::chrono::hours maxAge {24 * 30};

    // Where the draft of `documentPath` lives.
    QString draftPath(const QString &documentPath) const;

    // Keeps `text` as the draft of the document at `documentPath`, whose file held `baseText`.
    void save(const QString &documentPath, const QString &baseText, const QString &text);
    void remove(const QString &documentPath);
    // The draft of `documentPath` made against a file that held exactly `fileText`, and that says
    // something else than it; drafts still waiting to be written count.
    std::optional<QString> find(const QString &documentPath, const QString &fileText) const;
    // Removes, in the background, drafts older than `age` and drafts whose document is gone.
    void removeStale(std::chrono::seconds age = maxAge);
    // Returns once every save and removal asked for so far is on the disk.
    void waitForWrites();

private:
    struct Operation
    {
        bool remove = false;
        QString baseText;
        QString text;
    };
    void schedule(const QString &documentPath, Operation operation);
    void perform(const QString &documentPath);
    void write(const QString &documentPath, const Operation &operation) const;

    QString m_folder;
    mutable QMutex m_mutex;
    // The newest wish per document not yet taken by the writer, and the one being carried out.
    QHash<QString, Operation> m_waiting;
    QHash<QString, Operation> m_underWay;
    QThreadPool m_writer; // one thread: operations stay in order
};
