#include "FolderOperations.h"

#include "services/FileSystemService.h"
#include "services/TextFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstdio>
#include <fcntl.h>

using namespace Qt::StringLiterals;

namespace {

bool sameFile(const QString &a, const QString &b)
{
    const FileIdentity first = FileIdentity::of(a);
    const FileIdentity second = FileIdentity::of(b);
    return first.exists() && first.device == second.device && first.inode == second.inode;
}

} // namespace

int FolderOperations::Plan::links() const
{
    int count = 0;
    for (const Change &change : changes)
        count += change.links;
    return count;
}

std::optional<QString> FolderOperations::refusal(const QString &path, const QString &newPath)
{
    const QString name = newPath.section(u'/', -1);
    if (name.trimmed().isEmpty() || name == u"."_s || name == u".."_s)
        return u"Ce nom ne convient pas."_s;
    if (newPath.section(u'/', 0, -2).isEmpty())
        return u"Ce nom ne convient pas."_s;
    if (QFileInfo::exists(newPath) && !sameFile(path, newPath))
        return u"\u00AB\u00A0%1\u00A0\u00BB existe d\u00E9j\u00E0 dans ce dossier."_s.arg(name);
    return std::nullopt;
}

QString FolderOperations::freeName(const QString &folder, const QString &name)
{
    if (!QFileInfo::exists(folder + u'/' + name))
        return name;
    const qsizetype dot = name.lastIndexOf(u'.');
    const QString stem = dot > 0 ? name.left(dot) : name;
    const QString extension = dot > 0 ? name.mid(dot) : QString();
    for (int n = 2;; ++n) {
        const QString candidate = u"%1 %2%3"_s.arg(stem).arg(n).arg(extension);
        if (!QFileInfo::exists(folder + u'/' + candidate))
            return candidate;
    }
}

FolderOperations::Plan FolderOperations::plan(const FileItem &root, const LinkRewriter::Move &move,
                                              const QStringList &linking, bool updateLinks)
{
    Plan plan {move, {}};
    if (!updateLinks)
        return plan;
    QStringList documents = linking;
    if (const FileItem *item = root.descendant(move.from))
        documents += FileSystemService::collectMarkdownPaths(*item);
    documents.removeDuplicates();
    const LinkResolver::NameIndex names(root);
    for (const QString &path : std::as_const(documents)) {
        FileIdentity identity;
        const FileResult<QString> read = TextFile::readUtf8(path, &identity);
        if (read.error)
            continue;
        const LinkRewriter::Result result
            = LinkRewriter::rewrite(read.value, path, move, root, names);
        if (result.links > 0)
            plan.changes.append(
                {path, move.apply(path), read.value, result.text, identity, result.links});
    }
    return plan;
}

std::optional<FileError> FolderOperations::rename(const QString &from, const QString &to)
{
    const QByteArray source = QFile::encodeName(from);
    const QByteArray target = QFile::encodeName(to);
    // Never over another item; a change of case only is the same item on a file system that
    // ignores case.
    if (::renameat2(AT_FDCWD, source.constData(), AT_FDCWD, target.constData(), RENAME_NOREPLACE)
        == 0)
        return std::nullopt;
    if (errno == EEXIST && sameFile(from, to)
        && ::rename(source.constData(), target.constData()) == 0)
        return std::nullopt;
    if (errno == EINVAL || errno == ENOSYS) {
        if (QFileInfo::exists(to) && !sameFile(from, to))
            return FileError::fromErrno(EEXIST, to);
        if (::rename(source.constData(), target.constData()) == 0)
            return std::nullopt;
    }
    return FileError::fromErrno(errno, from);
}

std::variant<FolderOperations::Done, FileError> FolderOperations::perform(const Plan &plan)
{
    QDir().mkpath(plan.move.to.section(u'/', 0, -2));
    if (std::optional<FileError> error = rename(plan.move.from, plan.move.to))
        return *error;
    Done done {plan.move, {}, {}, {}, {}, 0};
    for (const Change &change : plan.changes) {
        // The rename keeps a file's identity: a different one was written by another program.
        FileIdentity written;
        const TextFile::GuardedWrite write = TextFile::writeUtf8IfUnchanged(
            change.newPath, change.newText, change.identity, &written);
        if (write.changedElsewhere) {
            done.leftAlone.append(change.newPath);
            continue;
        }
        if (write.error) {
            done.failed.append(change.newPath);
            done.errors.append(*write.error);
            continue;
        }
        Change kept = change;
        kept.identity = written;
        done.written.append(kept);
        done.links += change.links;
    }
    return done;
}

FolderOperations::Done FolderOperations::undo(const Done &done)
{
    Done undone {{done.move.to, done.move.from, done.move.isFolder}, {}, {}, {}, {}, 0};
    for (const Change &change : done.written) {
        const TextFile::GuardedWrite write
            = TextFile::writeUtf8IfUnchanged(change.newPath, change.text, change.identity);
        if (write.changedElsewhere) {
            undone.leftAlone.append(change.newPath);
            continue;
        }
        if (write.error) {
            undone.failed.append(change.newPath);
            undone.errors.append(*write.error);
            continue;
        }
        undone.written.append(change);
        undone.links += change.links;
    }
    if (std::optional<FileError> error = rename(done.move.to, done.move.from)) {
        undone.failed.append(done.move.to);
        undone.errors.append(*error);
    }
    return undone;
}

std::optional<FolderOperations::Trashed> FolderOperations::moveToTrash(const QString &path)
{
    return DesktopTrash::put(path);
}

std::optional<FileError> FolderOperations::restore(const Trashed &trashed)
{
    if (!DesktopTrash::restore(trashed))
        return FileError::fromErrno(QFileInfo::exists(trashed.original) ? EEXIST : errno,
                                    trashed.original);
    return std::nullopt;
}
