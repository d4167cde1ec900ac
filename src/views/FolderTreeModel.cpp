#include "FolderTreeModel.h"

#include "model/FileUrl.h"
#include "workspace/StoreBinding.h"

#include <algorithm>

using namespace Qt::StringLiterals;

FolderTreeModel::FolderTreeModel(QObject *parent) : QAbstractListModel(parent) { }

void FolderTreeModel::setStore(WorkspaceStore *store)
{
    if (!rebindStore(m_store, store, this))
        return;
    if (store) {
        connect(store, &WorkspaceStore::rootItemChanged, this, &FolderTreeModel::rootItemChanged);
        connect(store, &WorkspaceStore::selectedFileURLChanged, this,
                &FolderTreeModel::selectionChanged);
    }
    m_selectedPath = store ? FileUrl::path(store->selectedFileURL()) : QString();
    m_root.reset();
    // A new tree view shows the root's folders open.
    m_openedRoot.clear();
    rootItemChanged();
    Q_EMIT storeChanged();
}

bool FolderTreeModel::isEmptyFolder() const
{
    return m_root && m_root->children().isEmpty();
}

int FolderTreeModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_rows.size());
}

QVariant FolderTreeModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return {};
    const Row &row = m_rows[std::size_t(index.row())];
    const FileItem &item = row.item;
    switch (role) {
    case IdRole:
        return item.id();
    case Qt::DisplayRole:
    case NameRole:
        return item.name();
    case UrlRole:
        return item.url();
    case IsDirectoryRole:
        return item.isDirectory();
    case DepthRole:
        return row.depth;
    case IsExpandedRole:
        return item.isDirectory() && m_expanded.contains(item.id());
    case IsSelectedRole:
        return !item.isDirectory() && item.id() == m_selectedPath;
    case BadgeCountRole:
        return item.isDirectory() ? item.markdownFileCount() : 0;
    case SymbolRole:
        switch (kindOf(item)) {
        case Folder:
            return u"folder.fill"_s;
        case Markdown:
            return u"doc.text.fill"_s;
        case Diagram:
            return u"chart.bar.doc.horizontal"_s;
        case OtherFile:
            return u"doc"_s;
        }
        return {};
    case KindRole:
        return int(kindOf(item));
    default:
        return {};
    }
}

QHash<int, QByteArray> FolderTreeModel::roleNames() const
{
    return {{IdRole, "itemId"},
            {NameRole, "name"},
            {UrlRole, "url"},
            {IsDirectoryRole, "isDirectory"},
            {DepthRole, "depth"},
            {IsExpandedRole, "isExpanded"},
            {IsSelectedRole, "isSelected"},
            {BadgeCountRole, "badgeCount"},
            {SymbolRole, "symbol"},
            {KindRole, "kind"}};
}

FolderTreeModel::Kind FolderTreeModel::kindOf(const FileItem &item)
{
    if (item.isDirectory())
        return Folder;
    if (item.isMarkdown())
        return Markdown;
    return item.isSvgOrDiagram() ? Diagram : OtherFile;
}

void FolderTreeModel::activate(int row)
{
    if (row < 0 || row >= count())
        return;
    const FileItem &item = m_rows[std::size_t(row)].item;
    if (item.isDirectory())
        toggle(row);
    else if (m_store)
        m_store->openFile(item.url());
}

void FolderTreeModel::toggle(int row)
{
    if (isExpanded(row))
        collapse(row);
    else
        expand(row);
}

bool FolderTreeModel::isExpanded(int row) const
{
    return row >= 0 && row < count() && m_expanded.contains(m_rows[std::size_t(row)].item.id());
}

void FolderTreeModel::expand(int row)
{
    if (row < 0 || row >= count())
        return;
    const Row &folder = m_rows[std::size_t(row)];
    if (!folder.item.isDirectory() || m_expanded.contains(folder.item.id()))
        return;
    m_expanded.insert(folder.item.id());
    std::vector<Row> shown;
    for (const FileItem &child : folder.item.children())
        appendVisible(child, folder.depth + 1, shown);
    const QModelIndex changed = index(row);
    if (!shown.empty()) {
        beginInsertRows({}, row + 1, row + int(shown.size()));
        m_rows.insert(m_rows.begin() + row + 1, std::make_move_iterator(shown.begin()),
                      std::make_move_iterator(shown.end()));
        endInsertRows();
        Q_EMIT countChanged();
        Q_EMIT selectedRowChanged();
    }
    Q_EMIT dataChanged(changed, changed, {IsExpandedRole});
}

void FolderTreeModel::collapse(int row)
{
    if (row < 0 || row >= count())
        return;
    const Row &folder = m_rows[std::size_t(row)];
    if (!m_expanded.remove(folder.item.id()))
        return;
    const int depth = folder.depth;
    std::size_t end = std::size_t(row) + 1;
    while (end < m_rows.size() && m_rows[end].depth > depth)
        ++end;
    const QModelIndex changed = index(row);
    if (end > std::size_t(row) + 1) {
        beginRemoveRows({}, row + 1, int(end) - 1);
        m_rows.erase(m_rows.begin() + row + 1, m_rows.begin() + std::ptrdiff_t(end));
        endRemoveRows();
        Q_EMIT countChanged();
        Q_EMIT selectedRowChanged();
    }
    Q_EMIT dataChanged(changed, changed, {IsExpandedRole});
}

int FolderTreeModel::parentRow(int row) const
{
    if (row < 0 || row >= count())
        return -1;
    const int depth = m_rows[std::size_t(row)].depth;
    for (int r = row - 1; r >= 0; --r) {
        if (m_rows[std::size_t(r)].depth < depth)
            return r;
    }
    return -1;
}

int FolderTreeModel::selectedRow() const
{
    return m_selectedPath.isEmpty() ? -1 : rowOf(m_selectedPath);
}

int FolderTreeModel::rowOf(const QString &id) const
{
    for (std::size_t r = 0; r < m_rows.size(); ++r) {
        if (m_rows[r].item.id() == id)
            return int(r);
    }
    return -1;
}

void FolderTreeModel::appendVisible(const FileItem &item, int depth, std::vector<Row> &rows) const
{
    rows.push_back({item, depth});
    if (item.isDirectory() && m_expanded.contains(item.id())) {
        for (const FileItem &child : item.children())
            appendVisible(child, depth + 1, rows);
    }
}

std::vector<FolderTreeModel::Row> FolderTreeModel::visibleRows() const
{
    std::vector<Row> rows;
    if (m_root) {
        for (const FileItem &child : m_root->children())
            appendVisible(child, 0, rows);
    }
    return rows;
}

namespace {

// Whether the tree holds the folder `id`, looked up along its path: a rescan of a large tree
// must not walk all of it to keep a few expanded folders.
bool holdsFolder(const FileItem &root, const QString &id)
{
    const FileItem *node = root.descendant(id);
    return node && node != &root && node->isDirectory();
}

} // namespace

void FolderTreeModel::rootItemChanged()
{
    const std::optional<FileItem> &root = m_store ? m_store->rootItem() : std::nullopt;
    // The tree of another folder than the one last shown opens its root's folders; the same
    // folder opened again keeps the ones the person closed.
    const bool newFolder = root && root->id() != m_openedRoot;
    // The store announces equal trees too; an unchanged tree changes no row.
    if (root == m_root && !newFolder)
        return;
    const bool wasEmpty = isEmptyFolder();
    m_root = root;
    if (m_root) {
        m_expanded.removeIf([this](const QString &id) { return !holdsFolder(*m_root, id); });
        if (newFolder) {
            m_openedRoot = m_root->id();
            for (const FileItem &child : m_root->children()) {
                if (child.isDirectory())
                    m_expanded.insert(child.id());
            }
        }
    } else {
        m_expanded.clear();
    }
    replaceRows(visibleRows());
    if (wasEmpty != isEmptyFolder())
        Q_EMIT countChanged();
}

// Keeps the rows a rescan did not touch: only the stretch between the unchanged first and last
// rows is removed and inserted, so the list keeps its place and its delegates.
void FolderTreeModel::replaceRows(const std::vector<Row> &rows)
{
    const std::size_t oldSize = m_rows.size();
    const std::size_t newSize = rows.size();
    std::size_t head = 0;
    while (head < oldSize && head < newSize && m_rows[head].item.id() == rows[head].item.id()
           && m_rows[head].depth == rows[head].depth)
        ++head;
    std::size_t tail = 0;
    while (tail < oldSize - head && tail < newSize - head
           && m_rows[oldSize - 1 - tail].item.id() == rows[newSize - 1 - tail].item.id()
           && m_rows[oldSize - 1 - tail].depth == rows[newSize - 1 - tail].depth)
        ++tail;

    const int firstChanged = int(head);
    const std::size_t oldMiddle = oldSize - head - tail;
    const std::size_t newMiddle = newSize - head - tail;
    if (oldMiddle > 0) {
        beginRemoveRows({}, firstChanged, firstChanged + int(oldMiddle) - 1);
        m_rows.erase(m_rows.begin() + std::ptrdiff_t(head),
                     m_rows.begin() + std::ptrdiff_t(head + oldMiddle));
        endRemoveRows();
    }
    if (newMiddle > 0) {
        beginInsertRows({}, firstChanged, firstChanged + int(newMiddle) - 1);
        m_rows.insert(m_rows.begin() + std::ptrdiff_t(head), rows.begin() + std::ptrdiff_t(head),
                      rows.begin() + std::ptrdiff_t(head + newMiddle));
        endInsertRows();
    }
    // Rows kept in place take the new items: a folder's badge may have changed.
    for (std::size_t r = 0; r < m_rows.size(); ++r)
        m_rows[r].item = rows[r].item;
    if (!m_rows.empty())
        Q_EMIT dataChanged(index(0), index(int(m_rows.size()) - 1),
                           {BadgeCountRole, IsExpandedRole, UrlRole});
    if (oldMiddle > 0 || newMiddle > 0)
        Q_EMIT countChanged();
    Q_EMIT selectedRowChanged();
}

void FolderTreeModel::selectionChanged()
{
    const QString path = m_store ? FileUrl::path(m_store->selectedFileURL()) : QString();
    if (path == m_selectedPath)
        return;
    const int before = rowOf(m_selectedPath);
    m_selectedPath = path;
    const int after = rowOf(m_selectedPath);
    for (const int row : {before, after}) {
        if (row >= 0)
            Q_EMIT dataChanged(index(row), index(row), {IsSelectedRole});
    }
    Q_EMIT selectedRowChanged();
}
