#pragma once

#include "DocumentNotice.h"
#include "model/EditorDocument.h"
#include "model/HeadingItem.h"
#include "model/TextEdit.h"
#include "services/FileError.h"
#include "services/FileIdentity.h"

#include <QList>
#include <QObject>
#include <QString>
#include <QTimer>
#include <QUrl>

#include <optional>

// The document open in the editor and its file: the text and identity of the file as last read
// or written here, and what happened to the file since. A change made by another program is read
// once the file has stood still; a clean document takes the new text, a modified one keeps its
// edits and says so. A save never writes over a file changed since it was read.
class OpenDocument : public QObject
{
    Q_OBJECT

public:
    static constexpr int stableFileMs = 150;

    explicit OpenDocument(QObject *parent = nullptr);

    const std::optional<EditorDocument> &document() const { return m_document; }
    // The document's file path; empty when none is open.
    QString path() const;
    // The text of the file as last read or written here: what the edits are edits of.
    const QString &diskText() const { return m_diskText; }
    DocumentNotice::Value notice() const { return m_notice; }
    // The notice's sentence, and why a save wrote nothing.
    QString noticeMessage() const;
    QString noticeDetail() const;
    void setNotice(DocumentNotice::Value notice, bool saveHeld = false);

    // A new, clean document holding `text`, read from the file at `url` whose identity it was.
    void open(const QUrl &url, const QString &text, const FileIdentity &identity);
    // No document open any more.
    void close();
    // The editor's whole text; a different text marks the document modified until it is saved.
    void updateContent(const QString &text);
    // The editor's edits of the text, applied in place: no copy of a large text per key. False,
    // and nothing changed, when they do not fit the text held here.
    bool editContent(const QList<TextEdit> &edits, qsizetype length);
    // The text's words and characters: counted whole once, then kept up to date by the edits.
    DocumentStatistics::Counts statistics() const;
    void updateHeadings(const QList<HeadingItem> &headings);
    // Edits brought back (a draft): the document is modified, its file untouched.
    void restoreEdits(const QString &text);
    // Writes the document to its file atomically, unless the file changed since it was read:
    // then nothing is written and the notice says why. Only a failed write is an error.
    std::optional<FileError> save();
    // The file's text replaces the document's ("Recharger").
    std::optional<FileError> reload();
    // The file's new text becomes what the edits replace: the next save writes them over it
    // ("Garder mes modifications"). False when no change was waiting for that answer.
    bool keepEdits();
    // What the file holds now becomes what the edits are edits of: it was written here, not by
    // another program, or the edits are to go over it.
    void takeFileAsBase();

    // The document's file was renamed or moved here to `url`: text, edits and history stay.
    void relocate(const QUrl &url);
    // Its text was rewritten here (links that follow a move, a replace across the folder): the
    // text becomes `text` as one change, and when the file was rewritten too, what the file
    // holds now is the base.
    void replaceText(const QString &text, bool fileWritten);

    // The file may have changed: it is looked at once it has stood still.
    void checkFileSoon();

Q_SIGNALS:
    // The document changed, then which of its parts: another document (or none) took its place
    // (the three others follow too), its text, its headings, its modified flag and save time.
    void changed();
    void replaced();
    void textChanged();
    void headingsChanged();
    void modifiedChanged();
    // Typed in the editor (not taken from the disk or a draft).
    void edited();
    // Written to its file.
    void saved();
    void noticeChanged();
    // The file was changed, replaced or removed by another program.
    void fileChanged();
    // The text was replaced here, not typed in the page: the page takes it as one change.
    void textReplaced();
    // The file moved from `from` to `to`, announced before the document changes.
    void relocated(const QUrl &from, const QUrl &to);

private:
    enum Part { Text = 1, Headings = 2, Modified = 4, Replaced = 8 | 1 | 2 | 4 };
    enum class DiskText { Same, Taken, Conflict };

    void setDocument(const std::optional<EditorDocument> &document, int parts);
    void emitChanges(int parts);
    // The document modified by the editor: its text now `text`.
    void takeEdit(QString text);
    void clearNotice();
    void replaceText(const QString &text, const FileIdentity &identity);
    void checkFile();
    // The file's bytes compared with what was read or written here: the same (the identity is
    // brought up to date), taken as the clean document's new text, or kept apart from the edits
    // by the notice.
    DiskText followFile(bool saveHeld);

    std::optional<EditorDocument> m_document;
    QString m_diskText;
    FileIdentity m_diskIdentity;
    DocumentNotice::Value m_notice = DocumentNotice::NoNotice;
    bool m_saveHeld = false;
    // A changed file is read once it has stood still for a moment: never half-written.
    QTimer m_check;
    FileIdentity m_lastSeenIdentity;
    // The text's counts, when known: dropped by every new text, kept through edits.
    mutable std::optional<DocumentStatistics::Counts> m_counts;
};
