#pragma once

#include <QString>
#include <QtGlobal>

struct stat;

// Which file a path names and which version of it: device, inode, size and modification time
// to the nanosecond. Two equal identities mean nobody wrote the file in between; a program that
// saves by renaming a new file over the old one gives it a new inode.
struct FileIdentity
{
    quint64 device = 0;
    quint64 inode = 0;
    qint64 size = -1; // -1: nothing there
    qint64 modifiedNs = 0;

    bool exists() const { return size >= 0; }

    // Of the file `path` names, links followed; an identity that does not exist when nothing is
    // there.
    static FileIdentity of(const QString &path);
    static FileIdentity fromStat(const struct stat &st);

    friend bool operator==(const FileIdentity &, const FileIdentity &) = default;
};
