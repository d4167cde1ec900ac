#pragma once

#include "model/FileItem.h"
#include "services/LinkResolver.h"

#include <QString>

// Rewrites the links of a document so that they still lead where they led once a file or a
// folder of the tree has moved (renamed, or put in another folder), each written as it was:
// relative or from the folder's root, with or without its extension, "#fragment" and "?query"
// kept, "<...>" and percent-encoding kept. A wiki link keeps its heading and alias; its name
// changes with a rename, and after a move it grows the fewest folders that lead to the right
// document. The document's own relative links follow it when it moved itself. Nothing else
// changes: not a link that led elsewhere, nothing inside code, no other byte.
namespace LinkRewriter {

struct Move
{
    QString from; // the item's path before
    QString to; // and after
    bool isFolder = false;

    // Where `path` is once the item moved: itself, or below it.
    QString apply(const QString &path) const;
};

struct Result
{
    QString text;
    int links = 0; // how many were rewritten
};

// `text` is the document that lived at `documentPath` before the move; `root` and `names` are the
// tree as it was before the move.
Result rewrite(const QString &text, const QString &documentPath, const Move &move,
               const FileItem &root, const LinkResolver::NameIndex &names);

} // namespace LinkRewriter
