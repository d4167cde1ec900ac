#pragma once

#include "workspace/WorkspaceStore.h"

#include <QObject>
#include <QPointer>
#include <QtQml/qqmlregistration.h>

#include <optional>

// What the editor header shows of the open document: its name, its path in the folder and its
// statistics. The statistics are the store's, which a large document's edits keep up to date
// without counting it again; they are read once per change of the text, never per frame.
class EditorHeaderModel : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(WorkspaceStore *store READ store WRITE setStore NOTIFY storeChanged)
    Q_PROPERTY(bool hasDocument READ hasDocument NOTIFY changed)
    Q_PROPERTY(QString fileName READ fileName NOTIFY changed)
    // Empty when no folder is open.
    Q_PROPERTY(QString relativePath READ relativePath NOTIFY changed)
    Q_PROPERTY(bool isDirty READ isDirty NOTIFY changed)
    Q_PROPERTY(QString wordsText READ wordsText NOTIFY statisticsChanged)
    Q_PROPERTY(QString charactersText READ charactersText NOTIFY statisticsChanged)
    Q_PROPERTY(QString readingTimeText READ readingTimeText NOTIFY statisticsChanged)

public:
    explicit EditorHeaderModel(QObject *parent = nullptr);

    WorkspaceStore *store() const { return m_store; }
    void setStore(WorkspaceStore *store);
    bool hasDocument() const { return m_hasDocument; }
    QString fileName() const { return m_fileName; }
    QString relativePath() const { return m_relativePath; }
    bool isDirty() const { return m_isDirty; }
    QString wordsText() const { return m_wordsText; }
    QString charactersText() const { return m_charactersText; }
    QString readingTimeText() const { return m_readingTimeText; }

    // The file's path with every occurrence of the folder's path and a slash removed: a plain
    // text replacement, not anchored at the start.
    static QString relativePath(const QString &filePath, const QString &folderPath);

Q_SIGNALS:
    void storeChanged();
    void changed();
    void statisticsChanged();

private:
    // The file's name, place and modified flag.
    void update();
    // The statistics of the text.
    void count();

    QPointer<WorkspaceStore> m_store;
    bool m_hasDocument = false;
    QString m_fileName;
    QString m_relativePath;
    bool m_isDirty = false;
    QString m_wordsText;
    QString m_charactersText;
    QString m_readingTimeText;
};
