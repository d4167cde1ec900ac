#pragma once

#include "model/FileItem.h"
#include "services/MarkdownLinks.h"

#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

// Where a link written in a document leads, inside the open folder: a Markdown document and, with
// a "#fragment", the heading to scroll to. Two forms are followed:
// - a path, relative to the document holding the link or absolute (inside the folder, or from the
//   folder's root), percent-encoded or not, in <...> or not, with or without its extension;
// - a wiki name, [[Name]], [[Name#Heading]] or [[Name|label]]: the document named Name, compared
//   without case and extension, the one nearest to the linking document's folder first (fewest
//   folders up and down between them), then the one with the shortest path.
namespace LinkResolver {

struct Target
{
    QString path; // of the document; the linking document's own for "#heading"
    QString fragment; // as written, without the '#'; empty when there is none

    friend bool operator==(const Target &, const Target &) = default;
};

// The folder's files by name, without case: for the many lookups of one document's links at
// once, where walking the tree for each would cost a walk per link.
class NameIndex
{
public:
    explicit NameIndex(const FileItem &root);
    // The files named `name` (with its extension), in tree order.
    QList<const FileItem *> named(const QString &name) const;

private:
    QHash<QString, QList<const FileItem *>> m_files;
};

// Of `paths`, the index of the one nearest to the folder of `fromPath` (fewest folders up and
// down between them), then the shortest, then the first in code-point order; -1 when none fits.
// A name written with folders ("guide/install") must end the path.
qsizetype nearestPath(const QStringList &paths, const QString &written, const QString &fromPath,
                      bool dropExtension);

// The file or folder a link, definition or picture written in the document at `fromPath` leads
// to, by the same rule as the links followed: a path leads to any entry of the tree, a wiki link
// to a document, a wiki picture to a picture. Nothing for an address, a "#heading" of the
// document itself, or a target outside the folder or missing.
std::optional<QString> resolveSpan(const QString &written, MarkdownLinks::Form form, bool picture,
                                   const QString &fromPath, const FileItem &root,
                                   const NameIndex *names = nullptr);

// Nothing when the target is a web address, leaves the folder or names no document in it.
std::optional<Target> resolve(const QString &target, const QString &fromPath, const FileItem &root,
                              const NameIndex *names = nullptr);

// A scheme other than "file:" ("https:", "mailto:", "ftp:"), in <...> or not: an address the
// desktop opens (the browser, the mail program), never a file of the folder. "javascript:" is
// code, not an address, and goes nowhere.
bool isWebAddress(const QString &target);

// The picture a picture line names, as the page writes it: a path ("img/flux.svg", "<a b.png>",
// "/img/x.png" from the folder's root), or a wiki form "[[capture.png]]", which names a file of
// the folder wherever it is, the nearest first. Nothing when it is missing or outside the folder.
std::optional<QString> resolvePicture(const QString &source, const QString &fromPath,
                                      const FileItem &root, const NameIndex *names = nullptr);

// What a document's text points at, each written once and as written: the targets of its links
// and reference definitions ("guide/install.md#linux", "<a b.md>", "[[Name|label]]") and the
// sources of its pictures standing on lines of their own (as resolvePicture takes them).
struct Written
{
    QStringList links;
    QStringList pictures;
};
Written writtenIn(const QString &text);

} // namespace LinkResolver
