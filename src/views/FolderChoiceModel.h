#pragma once

#include "workspace/WorkspaceStore.h"

#include <QAbstractListModel>
#include <QPointer>
#include <QtQml/qqmlregistration.h>

// The folders of the open folder an item may move to, the open folder itself first, filtered by
// what is typed: "Déplacer vers" from the keyboard and for screen readers.
class FolderChoiceModel : public QAbstractListModel
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(WorkspaceStore *store READ store WRITE setStore NOTIFY storeChanged)
    Q_PROPERTY(QUrl itemUrl READ itemUrl WRITE setItemUrl NOTIFY itemUrlChanged)
    Q_PROPERTY(QString filter READ filter WRITE setFilter NOTIFY filterChanged)
    Q_PROPERTY(int count READ count NOTIFY countChanged)

public:
    enum Role { PathRole = Qt::UserRole + 1, UrlRole };
    Q_ENUM(Role)

    explicit FolderChoiceModel(QObject *parent = nullptr);

    WorkspaceStore *store() const { return m_store; }
    void setStore(WorkspaceStore *store);
    QUrl itemUrl() const { return m_itemUrl; }
    void setItemUrl(const QUrl &url);
    QString filter() const { return m_filter; }
    void setFilter(const QString &filter);
    int count() const { return int(m_rows.size()); }

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    Q_INVOKABLE QUrl urlAt(int row) const;

Q_SIGNALS:
    void storeChanged();
    void itemUrlChanged();
    void filterChanged();
    void countChanged();

private:
    void update();

    QPointer<WorkspaceStore> m_store;
    QUrl m_itemUrl;
    QString m_filter;
    // The path shown (from the open folder; its name for itself) and the folder's path.
    QList<std::pair<QString, QString>> m_rows;
};
