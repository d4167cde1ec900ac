#pragma once

#include <QString>

#include <optional>

// The desktop's trash, as file managers share it (the freedesktop.org trash): an item on the
// home folder's file system goes to $XDG_DATA_HOME/Trash, one on another file system to the
// trash at the top of that file system. The item is renamed into "files/", never copied, and its
// original place is written first in "info/NAME.trashinfo", so any file manager can put it back.
namespace DesktopTrash {

struct Entry
{
    QString original; // where the item was
    QString file; // where it is in the trash
    QString info; // its record
};

// Nothing when no trash on the item's file system can take it.
std::optional<Entry> put(const QString &path);
// Back where it was, unless another item took that place; the record goes.
bool restore(const Entry &entry);

} // namespace DesktopTrash
