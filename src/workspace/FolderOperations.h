#pragma once

#include "model/FileItem.h"
#include "services/DesktopTrash.h"
#include "services/FileError.h"
#include "services/FileIdentity.h"
#include "services/LinkRewriter.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>
#include <variant>

// Renames and moves items of the folder with the links that lead to them, puts items in the
// desktop's trash, and takes the last of these back. No item ever replaces another; every
// document is written atomically, and only while it still holds what was read: one changed by
// another program meanwhile is left alone and named.
class FolderOperations
{
public:
    // A document whose links the move rewrites: where it is before and after, its text then and
    // now, and the identity of the file that text was read from.
    struct Change
    {
        QString path;
        QString newPath;
        QString text;
        QString newText;
        FileIdentity identity;
        int links = 0;
    };
    struct Plan
    {
        LinkRewriter::Move move;
        QList<Change> changes;
        int links() const;
    };
    // A move done: the documents written, as they were and as they are now.
    struct Done
    {
        LinkRewriter::Move move;
        QList<Change> written; // identity: the file as written here
        QStringList leftAlone; // changed by another program since they were read
        QStringList failed; // paths, with why, in `errors`
        QList<FileError> errors;
        int links = 0;
    };
    using Trashed = DesktopTrash::Entry;

    // The name to move `path` to, within its folder, or why it cannot be: empty, holding '/', or
    // the name of another item there. A change of case only is a rename.
    static std::optional<QString> refusal(const QString &path, const QString &newPath);
    // "untitled.md", else "untitled 2.md", "untitled 3.md", ...: the first free in `folder`.
    static QString freeName(const QString &folder, const QString &name);

    // What moving `move.from` to `move.to` rewrites: in the documents `linking` (those whose links
    // lead to the item) and in the documents the item holds.
    static Plan plan(const FileItem &root, const LinkRewriter::Move &move,
                     const QStringList &linking, bool updateLinks);
    // Moves the item, then writes the documents of the plan. The move's failure is an error and
    // changes nothing.
    static std::variant<Done, FileError> perform(const Plan &plan);
    // Puts the documents as they were where they are still as written here, then the item back.
    static Done undo(const Done &done);

    // Puts `path` in the desktop's trash; nothing when no trash can take it.
    static std::optional<Trashed> moveToTrash(const QString &path);
    // Puts a trashed item back where it was, unless another item took its place.
    static std::optional<FileError> restore(const Trashed &trashed);

private:
    static std::optional<FileError> rename(const QString &from, const QString &to);
};
