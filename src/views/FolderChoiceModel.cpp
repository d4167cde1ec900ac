#include "FolderChoiceModel.h"

#include "workspace/StoreBinding.h"

using namespace Qt::StringLiterals;

namespace {

void collectFolders(const FileItem &folder, QStringList &out)
{
    for (const FileItem &child : folder.children()) {
        if (child.isDirectory()) {
            out.append(child.id());
            collectFolders(child, out);
        }
    }
}

} // namespace

FolderChoiceModel::FolderChoiceModel(QObject *parent) : QAbstractListModel(parent) { }

void FolderChoiceModel::setStore(WorkspaceStore *store)
{
    if (!rebindStore(m_store, store, this))
        return;
    if (store)
        connect(store, &WorkspaceStore::rootItemChanged, this, &FolderChoiceModel::update);
    update();
    Q_EMIT storeChanged();
}

void FolderChoiceModel::setItemUrl(const QUrl &url)
{
    if (m_itemUrl == url)
        return;
    m_itemUrl = url;
    update();
    Q_EMIT itemUrlChanged();
}

void FolderChoiceModel::setFilter(const QString &filter)
{
    if (m_filter == filter)
        return;
    m_filter = filter;
    update();
    Q_EMIT filterChanged();
}

void FolderChoiceModel::update()
{
    QList<std::pair<QString, QString>> rows;
    if (m_store && m_store->rootItem() && !m_itemUrl.isEmpty()) {
        const FileItem &root = *m_store->rootItem();
        QStringList folders {root.id()};
        collectFolders(root, folders);
        const QString needle = m_filter.trimmed();
        for (const QString &folder : std::as_const(folders)) {
            if (!m_store->canMoveInto(m_itemUrl, QUrl::fromLocalFile(folder)))
                continue;
            const QString shown
                = folder == root.id() ? m_store->folderName() : folder.mid(root.id().size() + 1);
            if (needle.isEmpty() || shown.contains(needle, Qt::CaseInsensitive))
                rows.append({shown, folder});
        }
    }
    beginResetModel();
    m_rows = std::move(rows);
    endResetModel();
    Q_EMIT countChanged();
}

int FolderChoiceModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_rows.size());
}

QVariant FolderChoiceModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const auto &[shown, folder] = m_rows.at(index.row());
    switch (role) {
    case Qt::DisplayRole:
    case PathRole:
        return shown;
    case UrlRole:
        return QUrl::fromLocalFile(folder);
    }
    return {};
}

QHash<int, QByteArray> FolderChoiceModel::roleNames() const
{
    return {{PathRole, "path"}, {UrlRole, "url"}};
}

QUrl FolderChoiceModel::urlAt(int row) const
{
    return row >= 0 && row < m_rows.size() ? QUrl::fromLocalFile(m_rows[row].second) : QUrl();
}
