#pragma once

#include <QHashFunctions>
#include <QList>
#include <QMetaType>
#include <QString>
#include <QUrl>

#include <optional>

// One node of the workspace tree: a file, or a folder with its kept entries in display order.
// Copies are cheap: strings and the children list are implicitly shared, so copying a tree of
// 100,000 nodes copies one node.
class FileItem
{
    Q_GADGET
    Q_PROPERTY(QString id READ id CONSTANT)
    Q_PROPERTY(QUrl url READ url CONSTANT)
    Q_PROPERTY(QString name READ name CONSTANT)
    Q_PROPERTY(bool isDirectory READ isDirectory CONSTANT)
    Q_PROPERTY(bool isMarkdown READ isMarkdown CONSTANT)
    Q_PROPERTY(bool isSvgOrDiagram READ isSvgOrDiagram CONSTANT)
    Q_PROPERTY(int markdownFileCount READ markdownFileCount CONSTANT)

public:
    FileItem() = default;
    FileItem(const QString &id, const QUrl &url, const QString &name, bool isDirectory,
             std::optional<QList<FileItem>> children = std::nullopt);

    // Nodes made by a scan: the URL is derived from the path (a folder's URL ends with a slash)
    // only when someone asks for it, which keeps scanning a large tree cheap.
    static FileItem scannedFile(const QString &path, const QString &name);
    static FileItem scannedFolder(const QString &path, const QString &name,
                                  QList<FileItem> children);

    const QString &id() const { return m_id; }
    QUrl url() const;
    const QString &name() const { return m_name; }
    bool isDirectory() const { return m_isDirectory; }
    bool hasChildren() const { return m_hasChildren; }
    // Empty for a file; see hasChildren() for the difference between absent and empty.
    const QList<FileItem> &children() const { return m_children; }
    void setChildren(std::optional<QList<FileItem>> children);

    // The node at `path` below this one (this one for its own path), looked up along the path
    // rather than by walking the tree; null when the tree holds none.
    const FileItem *descendant(QStringView path) const;

    bool isMarkdown() const;
    bool isSvgOrDiagram() const;
    int markdownFileCount() const;

    friend bool operator==(const FileItem &a, const FileItem &b);
    friend bool operator!=(const FileItem &a, const FileItem &b) { return !(a == b); }

private:
    QString m_id;
    QString m_name;
    QUrl m_url; // empty when derived from m_id
    QList<FileItem> m_children;
    bool m_isDirectory = false;
    bool m_hasChildren = false;
    // A folder's count, summed once when its children are set: views ask for it per row.
    int m_markdownCount = 0;

    static int countMarkdown(const QList<FileItem> &children);
};

size_t qHash(const FileItem &item, size_t seed = 0) noexcept;

Q_DECLARE_METATYPE(FileItem)
