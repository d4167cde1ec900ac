#pragma once

#include "model/TextEdit.h"
#include "services/DraftStore.h"

#include <QObject>
#include <QString>
#include <QTimer>

#include <optional>

class OpenDocument;

// Keeps the open document's unsaved edits as a recovery draft: at most a second after an edit,
// and at once when another document takes its place. A document opened on exactly the bytes a
// draft was made on is offered that draft, to restore or to ignore; a save removes it.
class DraftKeeper : public QObject
{
    Q_OBJECT

public:
    static constexpr int draftDelayMs = 1000;

    DraftKeeper(OpenDocument *document, const QString &folder, QObject *parent = nullptr);

    DraftStore &drafts() { return m_drafts; }

    // Before another document takes the open one's place: its edits are written now, and it is
    // remembered for the edits the editor may still send for it.
    void leave();
    // The document just opened: its draft, if it has one made on these bytes, is offered.
    void offer();
    // The last text of the document left, arriving after it was left: kept as its draft when it
    // differs from its file.
    void updateLeft(const QString &path, const QString &text);
    // The same, as the editor's edits of what it last sent; edits that do not fit are dropped.
    void editLeft(const QString &path, const QList<TextEdit> &edits, qsizetype length);
    // The offered draft becomes the document's text ("Rétablir"), or is deleted ("Ignorer").
    void restore();
    void discard();
    // The open document was deleted on purpose: its edits go with it.
    void forget();
    // The edits as a draft now, without waiting for the second to pass.
    void writeNow();
    // Writes the draft now and waits until it is on the disk.
    void flush();

private:
    OpenDocument *m_document;
    DraftStore m_drafts;
    QTimer m_timer;
    std::optional<QString> m_offered;
    // The document the open one replaced: its path, its file's text and its last edits.
    struct LeftDocument
    {
        QString path;
        QString diskText;
        QString content;
    };
    std::optional<LeftDocument> m_left;
};
