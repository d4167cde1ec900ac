#include "QuickOpenModel.h"

#include "model/FileUrl.h"
#include "workspace/StoreBinding.h"

using namespace Qt::StringLiterals;

QuickOpenModel::QuickOpenModel(QObject *parent) : QAbstractListModel(parent) { }

void QuickOpenModel::setStore(WorkspaceStore *store)
{
    if (!rebindStore(m_store, store, this))
        return;
    if (store) {
        // The tree changed: its documents are read again when next asked for, not per change.
        connect(store, &WorkspaceStore::rootItemChanged, this, [this] {
            m_stale = true;
            update();
        });
        connect(store, &WorkspaceStore::historyChanged, this, [this] {
            if (m_query.trimmed().isEmpty())
                update();
        });
    }
    m_stale = true;
    update();
    Q_EMIT storeChanged();
}

void QuickOpenModel::setQuery(const QString &query)
{
    if (query == m_query)
        return;
    m_query = query;
    Q_EMIT queryChanged();
    update();
}

void QuickOpenModel::setActive(bool active)
{
    if (active == m_active)
        return;
    m_active = active;
    Q_EMIT activeChanged();
    update();
}

void QuickOpenModel::update()
{
    if (!m_active)
        return;
    if (m_stale) {
        const bool hasRoot = m_store && m_store->rootItem();
        m_finder.setDocuments(hasRoot ? m_fileSystem.collectDocumentPaths(*m_store->rootItem())
                                      : QStringList(),
                              hasRoot ? FileUrl::path(m_store->rootURL()) : QString());
        m_stale = false;
    }
    std::vector<qsizetype> rows = m_store ? m_finder.rank(m_query, m_store->recentDocumentPaths())
                                          : std::vector<qsizetype>();
    if (rows == m_rows)
        return;
    const bool countChanges = rows.size() != m_rows.size();
    beginResetModel();
    m_rows = std::move(rows);
    endResetModel();
    if (countChanges)
        Q_EMIT countChanged();
}

int QuickOpenModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_rows.size());
}

QVariant QuickOpenModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const QString &path = m_finder.path(m_rows[std::size_t(index.row())]);
    const QString relative = m_finder.relativePath(path);
    const qsizetype slash = relative.lastIndexOf(u'/');
    const QString name = relative.mid(slash + 1);
    const QString folder = slash < 0 ? QString() : relative.left(slash);
    switch (role) {
    case Qt::DisplayRole:
    case NameRole:
        return name;
    case FolderRole:
        return folder;
    case UrlRole:
        return QUrl::fromLocalFile(path);
    case AccessibleNameRole:
        return folder.isEmpty() ? name : name + u", "_s + folder;
    }
    return {};
}

QHash<int, QByteArray> QuickOpenModel::roleNames() const
{
    return {{NameRole, "name"},
            {FolderRole, "folder"},
            {UrlRole, "url"},
            {AccessibleNameRole, "accessibleName"}};
}

void QuickOpenModel::open(int row)
{
    if (row < 0 || row >= count() || !m_store)
        return;
    m_store->openFile(QUrl::fromLocalFile(m_finder.path(m_rows[std::size_t(row)])));
}
