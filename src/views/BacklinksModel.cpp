#include "BacklinksModel.h"

#include "workspace/StoreBinding.h"

using namespace Qt::StringLiterals;

BacklinksModel::BacklinksModel(QObject *parent) : QAbstractListModel(parent) { }

void BacklinksModel::setStore(WorkspaceStore *store)
{
    if (!rebindStore(m_store, store, this))
        return;
    if (store)
        connect(store, &WorkspaceStore::backlinksChanged, this, &BacklinksModel::update);
    update();
    Q_EMIT storeChanged();
}

void BacklinksModel::update()
{
    QList<WorkspaceStore::Backlink> links
        = m_store ? m_store->backlinks() : QList<WorkspaceStore::Backlink>();
    const bool same
        = std::equal(links.begin(), links.end(), m_links.begin(), m_links.end(),
                     [](const auto &a, const auto &b) {
                         return a.path == b.path && a.line == b.line && a.lineText == b.lineText;
                     });
    if (same)
        return;
    beginResetModel();
    m_links = std::move(links);
    endResetModel();
    Q_EMIT countChanged();
}

int BacklinksModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_links.size());
}

QVariant BacklinksModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const WorkspaceStore::Backlink &link = m_links.at(index.row());
    switch (role) {
    case Qt::DisplayRole:
    case NameRole:
        return link.path.section(u'/', -1);
    case LineNumberRole:
        return link.line + 1;
    case LineTextRole:
        return link.lineText;
    case UrlRole:
        return QUrl::fromLocalFile(link.path);
    }
    return {};
}

QHash<int, QByteArray> BacklinksModel::roleNames() const
{
    return {{NameRole, "name"},
            {LineNumberRole, "lineNumber"},
            {LineTextRole, "lineText"},
            {UrlRole, "url"}};
}

void BacklinksModel::open(int row)
{
    if (m_store && row >= 0 && row < m_links.size())
        m_store->openFileAtLine(QUrl::fromLocalFile(m_links[row].path), m_links[row].line);
}
