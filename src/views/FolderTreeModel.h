#pragma once

#include "model/FileItem.h"
#include "workspace/WorkspaceStore.h"

#include <QAbstractListModel>
#include <QPointer>
#include <QSet>
#include <QtQml/qqmlregistration.h>

#include <vector>

// The visible rows of the workspace tree, flattened for a virtualised list: the root's entries
// and, below every expanded folder, its entries, each with its depth. Expansion is kept by item
// id, so it survives a rescan; expanding or collapsing a folder inserts or removes just its rows.
// Made by the tree view, so the expanded set lives as long as that view.
class FolderTreeModel : public QAbstractListModel
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(WorkspaceStore *store READ store WRITE setStore NOTIFY storeChanged)
    Q_PROPERTY(int count READ count NOTIFY countChanged)
    // A folder is open but nothing in it is shown.
    Q_PROPERTY(bool isEmptyFolder READ isEmptyFolder NOTIFY countChanged)
    Q_PROPERTY(int selectedRow READ selectedRow NOTIFY selectedRowChanged)

public:
    enum Role {
        IdRole = Qt::UserRole + 1,
        NameRole,
        UrlRole,
        IsDirectoryRole,
        DepthRole,
        IsExpandedRole,
        IsSelectedRole,
        BadgeCountRole,
        SymbolRole,
        KindRole,
    };
    Q_ENUM(Role)
    // What an entry is, which its symbol and the symbol's colour follow.
    enum Kind { Folder, Markdown, Diagram, OtherFile };
    Q_ENUM(Kind)

    explicit FolderTreeModel(QObject *parent = nullptr);

    WorkspaceStore *store() const { return m_store; }
    void setStore(WorkspaceStore *store);
    int count() const { return int(m_rows.size()); }
    bool isEmptyFolder() const;
    int selectedRow() const;
    const QSet<QString> &expandedFolderIds() const { return m_expanded; }

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    // A click: a folder opens or closes, a file opens in the editor.
    Q_INVOKABLE void activate(int row);
    Q_INVOKABLE void toggle(int row);
    Q_INVOKABLE void expand(int row);
    Q_INVOKABLE void collapse(int row);
    // The row of the folder holding `row`, or -1 at the top level.
    Q_INVOKABLE int parentRow(int row) const;
    Q_INVOKABLE bool isExpanded(int row) const;

Q_SIGNALS:
    void storeChanged();
    void countChanged();
    void selectedRowChanged();

private:
    struct Row
    {
        FileItem item;
        int depth;
    };

    void rootItemChanged();
    void selectionChanged();
    // The rows below `item` that an expanded folder shows, depth first.
    void appendVisible(const FileItem &item, int depth, std::vector<Row> &rows) const;
    std::vector<Row> visibleRows() const;
    void replaceRows(const std::vector<Row> &rows);
    int rowOf(const QString &id) const;
    static Kind kindOf(const FileItem &item);

    QPointer<WorkspaceStore> m_store;
    std::optional<FileItem> m_root;
    std::vector<Row> m_rows;
    QSet<QString> m_expanded;
    QString m_selectedPath;
    // The folder whose tree this model last opened the root's folders of.
    QString m_openedRoot;
};
