#include "OpenDocument.h"

#include "model/FileUrl.h"
#include "services/TextFile.h"

#include <QDateTime>

using namespace Qt::StringLiterals;

OpenDocument::OpenDocument(QObject *parent) : QObject(parent)
{
    m_check.setSingleShot(true);
    m_check.setInterval(stableFileMs);
    connect(&m_check, &QTimer::timeout, this, &OpenDocument::checkFile);
}

QString OpenDocument::path() const
{
    return m_document ? FileUrl::path(m_document->fileURL) : QString();
}

QString OpenDocument::noticeMessage() const
{
    if (!m_document)
        return {};
    const QString name = FileUrl::lastPathComponent(m_document->fileURL);
    switch (m_notice) {
    case DocumentNotice::DraftFound:
        return u"Des modifications non enregistrées de « "_s + name + u" » ont été retrouvées."_s;
    case DocumentNotice::ChangedOnDisk:
        return u"« "_s + name + u" » a été modifié sur le disque."_s;
    case DocumentNotice::RemovedFromDisk:
        return u"« "_s + name + u" » a été supprimé du disque."_s;
    case DocumentNotice::NoNotice:
        break;
    }
    return {};
}

QString OpenDocument::noticeDetail() const
{
    if (!m_saveHeld)
        return {};
    // No-break spaces keep the guillemets with their words.
    return u"Rien n'a été enregistré\u00a0: choisissez d'abord «\u00a0Recharger\u00a0» ou "
           u"«\u00a0Garder mes modifications\u00a0»."_s;
}

void OpenDocument::setNotice(DocumentNotice::Value notice, bool saveHeld)
{
    m_notice = notice;
    m_saveHeld = saveHeld;
    Q_EMIT noticeChanged();
}

void OpenDocument::clearNotice()
{
    if (m_notice != DocumentNotice::NoNotice)
        setNotice(DocumentNotice::NoNotice);
}

void OpenDocument::open(const QUrl &url, const QString &text, const FileIdentity &identity)
{
    m_check.stop();
    clearNotice();
    m_diskText = text;
    m_diskIdentity = identity;
    EditorDocument document;
    document.fileURL = url;
    document.content = text;
    document.lastModified = QDateTime::currentDateTime();
    setDocument(document, Replaced);
}

void OpenDocument::close()
{
    m_check.stop();
    clearNotice();
    setDocument(std::nullopt, Replaced);
}

void OpenDocument::updateContent(const QString &text)
{
    if (!m_document || m_document->content == text)
        return;
    m_counts.reset();
    takeEdit(text);
}

bool OpenDocument::editContent(const QList<TextEdit> &edits, qsizetype length)
{
    if (!m_document || !TextEdit::fit(edits, m_document->content.size(), length))
        return false;
    if (TextEdit::changeNothing(edits, m_document->content))
        return true;
    // Moved out, the text is held once and changes in place.
    QString text = std::exchange(m_document->content, {});
    TextEdit::apply(edits, text, &m_counts);
    takeEdit(std::move(text));
    return true;
}

void OpenDocument::takeEdit(QString text)
{
    m_document->content = std::move(text);
    const bool wasDirty = std::exchange(m_document->isDirty, true);
    emitChanges(wasDirty ? Text : Text | Modified);
    Q_EMIT edited();
}

DocumentStatistics::Counts OpenDocument::statistics() const
{
    if (!m_counts)
        m_counts = DocumentStatistics::count(m_document ? m_document->content : QString());
    return *m_counts;
}

void OpenDocument::updateHeadings(const QList<HeadingItem> &headings)
{
    if (!m_document)
        return;
    EditorDocument document = *m_document;
    document.headings = headings;
    setDocument(document, Headings);
}

void OpenDocument::restoreEdits(const QString &text)
{
    if (!m_document)
        return;
    EditorDocument document = *m_document;
    document.content = text;
    document.isDirty = true;
    setDocument(document, Text | Modified);
    clearNotice();
    Q_EMIT textReplaced();
}

std::optional<FileError> OpenDocument::save()
{
    if (!m_document)
        return std::nullopt;
    // The bar asks first whether the file's new text or the edits win.
    if (m_notice == DocumentNotice::ChangedOnDisk) {
        setNotice(DocumentNotice::ChangedOnDisk, true);
        return std::nullopt;
    }
    const QString file = path();
    const FileIdentity onDisk = FileIdentity::of(file);
    if (onDisk.exists() && onDisk != m_diskIdentity && followFile(true) != DiskText::Same)
        return std::nullopt;
    FileIdentity written;
    if (std::optional<FileError> error = TextFile::writeUtf8Atomically(
            file, m_document->content, TextFile::Temporary::UnnamedWherePossible, &written))
        return error;
    m_diskText = m_document->content;
    m_diskIdentity = written;
    Q_EMIT saved();
    EditorDocument document = *m_document;
    document.isDirty = false;
    document.lastModified = QDateTime::currentDateTime();
    setDocument(document, Modified);
    clearNotice();
    return std::nullopt;
}

std::optional<FileError> OpenDocument::reload()
{
    if (!m_document)
        return std::nullopt;
    FileIdentity identity;
    FileResult<QString> read = TextFile::readUtf8(path(), &identity);
    if (read.error)
        return read.error;
    replaceText(read.value, identity);
    return std::nullopt;
}

bool OpenDocument::keepEdits()
{
    if (m_notice != DocumentNotice::ChangedOnDisk || !m_document)
        return false;
    takeFileAsBase();
    setNotice(DocumentNotice::NoNotice);
    return true;
}

void OpenDocument::takeFileAsBase()
{
    FileIdentity identity;
    FileResult<QString> read = TextFile::readUtf8(path(), &identity);
    m_diskIdentity = read.ok() ? identity : FileIdentity::of(path());
    if (read.ok())
        m_diskText = read.value;
}

void OpenDocument::replaceText(const QString &text, const FileIdentity &identity)
{
    m_diskText = text;
    m_diskIdentity = identity;
    EditorDocument document = *m_document;
    document.content = text;
    document.isDirty = false;
    document.lastModified = QDateTime::currentDateTime();
    setDocument(document, Text | Modified);
    clearNotice();
    Q_EMIT textReplaced();
}

OpenDocument::DiskText OpenDocument::followFile(bool saveHeld)
{
    FileIdentity identity;
    FileResult<QString> read = TextFile::readUtf8(path(), &identity);
    if (read.ok() && read.value == m_diskText) {
        // Touched, not changed (a checkout writing the same bytes, a copy).
        m_diskIdentity = identity;
        if (m_notice == DocumentNotice::RemovedFromDisk)
            clearNotice();
        return DiskText::Same;
    }
    if (read.ok() && !m_document->isDirty) {
        replaceText(read.value, identity);
        return DiskText::Taken;
    }
    setNotice(DocumentNotice::ChangedOnDisk, saveHeld);
    return DiskText::Conflict;
}

void OpenDocument::relocate(const QUrl &url)
{
    if (!m_document || m_document->fileURL == url)
        return;
    Q_EMIT relocated(m_document->fileURL, url);
    EditorDocument document = *m_document;
    document.fileURL = url;
    setDocument(document, 0);
}

void OpenDocument::replaceText(const QString &text, bool fileWritten)
{
    if (!m_document)
        return;
    if (fileWritten)
        takeFileAsBase();
    if (text == m_document->content && !fileWritten)
        return;
    EditorDocument document = *m_document;
    document.content = text;
    document.isDirty = text != m_diskText;
    setDocument(document, Text | Modified);
    Q_EMIT textReplaced();
}

void OpenDocument::checkFileSoon()
{
    if (!m_document)
        return;
    m_lastSeenIdentity = FileIdentity::of(path());
    m_check.start();
}

void OpenDocument::checkFile()
{
    if (!m_document)
        return;
    const FileIdentity now = FileIdentity::of(path());
    if (now != m_lastSeenIdentity) {
        // Still being written: wait until it stands still.
        m_lastSeenIdentity = now;
        m_check.start();
        return;
    }
    if (now != m_diskIdentity)
        Q_EMIT fileChanged();
    if (!now.exists()) {
        if (m_notice != DocumentNotice::RemovedFromDisk)
            setNotice(DocumentNotice::RemovedFromDisk);
        return;
    }
    if (now == m_diskIdentity) {
        if (m_notice == DocumentNotice::RemovedFromDisk)
            clearNotice();
        return;
    }
    if (m_notice != DocumentNotice::ChangedOnDisk)
        followFile(false);
}

void OpenDocument::setDocument(const std::optional<EditorDocument> &document, int parts)
{
    m_document = document;
    if (parts & Text)
        m_counts.reset();
    emitChanges(parts);
}

void OpenDocument::emitChanges(int parts)
{
    Q_EMIT changed();
    if ((parts & Replaced) == Replaced)
        Q_EMIT replaced();
    if (parts & Text)
        Q_EMIT textChanged();
    if (parts & Headings)
        Q_EMIT headingsChanged();
    if (parts & Modified)
        Q_EMIT modifiedChanged();
}
