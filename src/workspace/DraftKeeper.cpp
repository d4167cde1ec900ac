#include "DraftKeeper.h"

#include "OpenDocument.h"

DraftKeeper::DraftKeeper(OpenDocument *document, const QString &folder, QObject *parent)
    : QObject(parent), m_document(document), m_drafts(folder)
{
    // At most a second of typing is ever only in memory, even while typing goes on.
    m_timer.setSingleShot(true);
    m_timer.setInterval(draftDelayMs);
    connect(&m_timer, &QTimer::timeout, this, &DraftKeeper::writeNow);
    connect(document, &OpenDocument::edited, this, [this] {
        if (!m_timer.isActive())
            m_timer.start();
    });
    connect(document, &OpenDocument::saved, this, [this] {
        m_timer.stop();
        m_drafts.remove(m_document->path());
        m_offered.reset();
    });
    connect(document, &OpenDocument::textReplaced, this, [this] { m_offered.reset(); });
}

void DraftKeeper::leave()
{
    writeNow();
    if (const auto &document = m_document->document())
        m_left = LeftDocument {m_document->path(), m_document->diskText(), document->content};
    m_offered.reset();
}

void DraftKeeper::offer()
{
    m_offered = m_drafts.find(m_document->path(), m_document->diskText());
    if (m_offered)
        m_document->setNotice(DocumentNotice::DraftFound);
}

void DraftKeeper::updateLeft(const QString &path, const QString &text)
{
    if (!m_left || m_left->path != path || text == m_left->content)
        return;
    m_left->content = text;
    if (text != m_left->diskText)
        m_drafts.save(path, m_left->diskText, text);
}

void DraftKeeper::editLeft(const QString &path, const QList<TextEdit> &edits, qsizetype length)
{
    if (!m_left || m_left->path != path || !TextEdit::fit(edits, m_left->content.size(), length))
        return;
    QString text = m_left->content;
    TextEdit::apply(edits, text);
    updateLeft(path, text);
}

void DraftKeeper::restore()
{
    if (m_document->notice() != DocumentNotice::DraftFound || !m_offered || !m_document->document())
        return;
    m_document->restoreEdits(*std::exchange(m_offered, std::nullopt));
}

void DraftKeeper::discard()
{
    if (m_document->notice() != DocumentNotice::DraftFound || !m_document->document())
        return;
    m_drafts.remove(m_document->path());
    m_offered.reset();
    m_document->setNotice(DocumentNotice::NoNotice);
}

void DraftKeeper::forget()
{
    m_timer.stop();
    if (m_document->document())
        m_drafts.remove(m_document->path());
    m_offered.reset();
}

void DraftKeeper::writeNow()
{
    m_timer.stop();
    const auto &document = m_document->document();
    if (document && document->isDirty)
        m_drafts.save(m_document->path(), m_document->diskText(), document->content);
}

void DraftKeeper::flush()
{
    writeNow();
    m_drafts.waitForWrites();
}
