#pragma once

#include "services/FileSystemService.h"
#include "workspace/DocumentFinder.h"
#include "workspace/WorkspaceStore.h"

#include <QAbstractListModel>
#include <QPointer>
#include <QtQml/qqmlregistration.h>

#include <vector>

// The list of "Aller au fichier...": the open folder's documents matching the typed letters,
// best first, or with nothing typed the documents opened in this window, most recent first.
// Reads the tree's own list of documents, so a new document is there at once.
class QuickOpenModel : public QAbstractListModel
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(WorkspaceStore *store READ store WRITE setStore NOTIFY storeChanged)
    Q_PROPERTY(QString query READ query WRITE setQuery NOTIFY queryChanged)
    Q_PROPERTY(int count READ count NOTIFY countChanged)
    // Only a shown panel follows the folder: reading 100,000 paths again on every change of the
    // tree while nobody looks would cost the window its frames.
    Q_PROPERTY(bool active READ isActive WRITE setActive NOTIFY activeChanged)

public:
    enum Role { NameRole = Qt::UserRole + 1, FolderRole, UrlRole, AccessibleNameRole };
    Q_ENUM(Role)

    explicit QuickOpenModel(QObject *parent = nullptr);

    WorkspaceStore *store() const { return m_store; }
    void setStore(WorkspaceStore *store);
    const QString &query() const { return m_query; }
    void setQuery(const QString &query);
    int count() const { return int(m_rows.size()); }
    bool isActive() const { return m_active; }
    void setActive(bool active);

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    // Opens the document of `row` as a click in the tree would.
    Q_INVOKABLE void open(int row);

Q_SIGNALS:
    void storeChanged();
    void queryChanged();
    void countChanged();
    void activeChanged();

private:
    void update();

    QPointer<WorkspaceStore> m_store;
    FileSystemService m_fileSystem;
    DocumentFinder m_finder;
    bool m_stale = true;
    bool m_active = false;
    QString m_query;
    std::vector<qsizetype> m_rows;
};
