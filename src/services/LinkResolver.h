#pragma once

#include "model/FileItem.h"

#include <QString>

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

// Nothing when the target is a web address, leaves the folder or names no document in it.
std::optional<Target> resolve(const QString &target, const QString &fromPath, const FileItem &root);

} // namespace LinkResolver
