#include "FileItem.h"

#include "FileKind.h"
#include "FileUrl.h"

#include <algorithm>

FileItem::FileItem(const QString &id, const QUrl &url, const QString &name, bool isDirectory,
                   std::optional<QList<FileItem>> children)
    : m_id(id), m_name(name), m_url(url), m_isDirectory(isDirectory)
{
    setChildren(std::move(children));
}

FileItem FileItem::scannedFile(const QString &path, const QString &name)
{
    FileItem item;
    item.m_id = path;
    item.m_name = name;
    return item;
}

FileItem FileItem::scannedFolder(const QString &path, const QString &name, QList<FileItem> children)
{
    FileItem item;
    item.m_id = path;
    item.m_name = name;
    item.m_isDirectory = true;
    item.m_hasChildren = true;
    item.m_children = std::move(children);
    item.m_markdownCount = countMarkdown(item.m_children);
    return item;
}

int FileItem::countMarkdown(const QList<FileItem> &children)
{
    int count = 0;
    for (const FileItem &child : children)
        count += child.markdownFileCount();
    return count;
}

QUrl FileItem::url() const
{
    if (!m_url.isEmpty())
        return m_url;
    return FileUrl::fromPath(m_id, m_isDirectory);
}

void FileItem::setChildren(std::optional<QList<FileItem>> children)
{
    m_hasChildren = children.has_value();
    m_children = children ? std::move(*children) : QList<FileItem>();
    m_markdownCount = countMarkdown(m_children);
}

bool FileItem::isMarkdown() const
{
    return FileKind::isMarkdown(m_name);
}

bool FileItem::isSvgOrDiagram() const
{
    return FileKind::isSvgOrDiagram(m_name);
}

int FileItem::markdownFileCount() const
{
    if (!m_isDirectory)
        return isMarkdown() ? 1 : 0;
    return m_markdownCount;
}

bool operator==(const FileItem &a, const FileItem &b)
{
    if (a.m_children.constData() == b.m_children.constData() && a.m_id == b.m_id
        && a.m_url == b.m_url && a.m_name == b.m_name && a.m_isDirectory == b.m_isDirectory
        && a.m_hasChildren == b.m_hasChildren && a.m_children.size() == b.m_children.size())
        return true; // same shared subtree
    return a.m_id == b.m_id && a.url() == b.url() && a.m_name == b.m_name
        && a.m_isDirectory == b.m_isDirectory && a.m_hasChildren == b.m_hasChildren
        && a.m_children == b.m_children;
}

size_t qHash(const FileItem &item, size_t seed) noexcept
{
    QtPrivate::QHashCombine combine;
    seed = combine(seed, item.id());
    seed = combine(seed, item.url());
    seed = combine(seed, item.name());
    seed = combine(seed, item.isDirectory());
    seed = combine(seed, item.hasChildren() ? 1 : 0);
    if (item.hasChildren()) {
        seed = combine(seed, item.children().size());
        for (const FileItem &child : item.children())
            seed = combine(seed, qHash(child, 0));
    }
    return seed;
}

const FileItem *FileItem::descendant(QStringView path) const
{
    if (path == m_id)
        return this;
    if (path.size() <= m_id.size() + 1 || !path.startsWith(m_id) || path[m_id.size()] != u'/')
        return nullptr;
    const FileItem *node = this;
    for (const QStringView name : path.mid(m_id.size() + 1).split(u'/')) {
        const auto found
            = std::find_if(node->m_children.begin(), node->m_children.end(),
                           [name](const FileItem &child) { return child.name() == name; });
        if (found == node->m_children.end())
            return nullptr;
        node = &*found;
    }
    return node;
}
