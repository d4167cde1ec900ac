#include "EditorHeaderModel.h"

#include "model/DocumentStatistics.h"
#include "model/FileUrl.h"
#include "workspace/StoreBinding.h"

using namespace Qt::StringLiterals;

EditorHeaderModel::EditorHeaderModel(QObject *parent) : QObject(parent) { }

void EditorHeaderModel::setStore(WorkspaceStore *store)
{
    if (!rebindStore(m_store, store, this))
        return;
    if (store) {
        // Each part of the header follows its own announcement: a key re-counts, a save
        // re-reads the flag, neither recomputes the rest.
        connect(store, &WorkspaceStore::documentReplaced, this, &EditorHeaderModel::update);
        connect(store, &WorkspaceStore::documentModifiedChanged, this, &EditorHeaderModel::update);
        connect(store, &WorkspaceStore::rootURLChanged, this, &EditorHeaderModel::update);
        // A renamed or moved document keeps its text; its name and place change.
        connect(store, &WorkspaceStore::selectedFileURLChanged, this, &EditorHeaderModel::update);
        connect(store, &WorkspaceStore::documentTextChanged, this, &EditorHeaderModel::count);
    }
    update();
    count();
    Q_EMIT storeChanged();
}

QString EditorHeaderModel::relativePath(const QString &filePath, const QString &folderPath)
{
    return QString(filePath).remove(folderPath + u'/', Qt::CaseSensitive);
}

void EditorHeaderModel::update()
{
    const std::optional<EditorDocument> &document
        = m_store ? m_store->currentDocument() : std::nullopt;
    const bool hasDocument = document.has_value();
    const QString path = document ? FileUrl::path(document->fileURL) : QString();
    const QString fileName = document ? FileUrl::lastPathComponent(document->fileURL) : QString();
    const QUrl root = m_store ? m_store->rootURL() : QUrl();
    const QString relative
        = document && !root.isEmpty() ? relativePath(path, FileUrl::path(root)) : QString();
    const bool isDirty = document && document->isDirty;
    if (hasDocument != m_hasDocument || fileName != m_fileName || relative != m_relativePath
        || isDirty != m_isDirty) {
        m_hasDocument = hasDocument;
        m_fileName = fileName;
        m_relativePath = relative;
        m_isDirty = isDirty;
        Q_EMIT changed();
    }
}

void EditorHeaderModel::count()
{
    const DocumentStatistics::Counts counts
        = m_store ? m_store->documentStatistics() : DocumentStatistics::Counts();
    m_wordsText = DocumentStatistics::wordsText(counts.words);
    m_charactersText = DocumentStatistics::charactersText(counts.characters);
    m_readingTimeText = DocumentStatistics::readingTimeText(counts.words);
    Q_EMIT statisticsChanged();
}
