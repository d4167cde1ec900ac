#pragma once

#include "workspace/WorkspaceStore.h"

#include <QAbstractListModel>
#include <QPointer>
#include <QtQml/qqmlregistration.h>

// The documents elsewhere in the folder whose links lead to the open one, one row each: the
// document holding it and the line it stands on. Follows the link index as it changes.
class BacklinksModel : public QAbstractListModel
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(WorkspaceStore *store READ store WRITE setStore NOTIFY storeChanged)
    Q_PROPERTY(int count READ count NOTIFY countChanged)

public:
    enum Role { NameRole = Qt::UserRole + 1, LineNumberRole, LineTextRole, UrlRole };
    Q_ENUM(Role)

    explicit BacklinksModel(QObject *parent = nullptr);

    WorkspaceStore *store() const { return m_store; }
    void setStore(WorkspaceStore *store);
    int count() const { return int(m_links.size()); }

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    // Opens the document of `row` at the line holding its link.
    Q_INVOKABLE void open(int row);

Q_SIGNALS:
    void storeChanged();
    void countChanged();

private:
    void update();

    QPointer<WorkspaceStore> m_store;
    QList<WorkspaceStore::Backlink> m_links;
};
