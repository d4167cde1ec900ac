#pragma once

#include "model/HeadingItem.h"
#include "workspace/WorkspaceStore.h"

#include <QAbstractListModel>
#include <QDateTime>
#include <QLocale>
#include <QPointer>
#include <QtQml/qqmlregistration.h>

// The open document's headings for the outline column, and the facts shown below them. The list
// is reset when the page reports headings, which it does only when they change; typing touches
// neither the list nor the facts.
class OutlineModel : public QAbstractListModel
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(WorkspaceStore *store READ store WRITE setStore NOTIFY storeChanged)
    Q_PROPERTY(int count READ count NOTIFY headingsChanged)
    Q_PROPERTY(bool hasDocument READ hasDocument NOTIFY documentChanged)
    Q_PROPERTY(QString sizeText READ sizeText NOTIFY documentChanged) // "Taille : 2 kB"
    Q_PROPERTY(QString modifiedText READ modifiedText NOTIFY documentChanged) // "Modifié le : ..."

public:
    enum Role { HeadingIdRole = Qt::UserRole + 1, TextRole, LevelRole, TagRole, IndentationRole };
    Q_ENUM(Role)

    explicit OutlineModel(QObject *parent = nullptr);

    WorkspaceStore *store() const { return m_store; }
    void setStore(WorkspaceStore *store);
    int count() const { return int(m_headings.size()); }
    bool hasDocument() const { return m_hasDocument; }
    QString sizeText() const { return m_sizeText; }
    QString modifiedText() const { return m_modifiedText; }

    // Two spaces per level below 1; none for level 1 or less.
    static QString indentation(int level);
    // "H2"
    static QString tag(int level);
    // The date in a medium style and the time in the short style of `locale`.
    static QString mediumDateTime(const QDateTime &dateTime,
                                  const QLocale &locale = QLocale::system());

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    // Asks the editor page to scroll to the heading of `row`.
    Q_INVOKABLE void scrollTo(int row);

Q_SIGNALS:
    void storeChanged();
    void headingsChanged();
    void documentChanged();

private:
    void updateHeadings();
    void updateFacts();

    QPointer<WorkspaceStore> m_store;
    QList<HeadingItem> m_headings;
    bool m_hasDocument = false;
    QString m_sizeText;
    QString m_modifiedText;
};
