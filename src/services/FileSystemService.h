#pragma once

#include "FileError.h"
#include "model/FileItem.h"

#include <QByteArray>
#include <QList>
#include <QSet>
#include <QString>
#include <QUrl>

// Turns a folder into the tree the sidebar shows and search walks, and creates and deletes
// files. Holds nothing but the names it skips, so any thread may use it.
class FileSystemService
{
public:
    FileSystemService();
    explicit FileSystemService(const QSet<QString> &ignoredFolderNames);

    // The eight build and tool folder names skipped wherever they appear (files of those names
    // too): ".git", ".build", ".gemini", ".claude", ".vscode", "node_modules", "dist", ".idea".
    static QSet<QString> defaultIgnoredNames();
    const QSet<QString> &ignoredFolderNames() const { return m_ignoredNames; }

    // The node of `url` with its whole subtree: hidden and ignored entries left out, folders
    // first, then names in display order. Never fails: an unreadable folder has no children.
    // Symbolic links inside the tree are files, so a link loop cannot trap the scan.
    FileItem scanDirectory(const QUrl &url) const;
    // The kept, sorted entries of one folder, each with its subtree.
    QList<FileItem> loadContents(const QString &folderPath) const;

    // `root` with the entries of `folders` read again, as a new scan would find them; the rest of
    // the tree is shared with `root`, not read. Folders outside `root` are skipped.
    FileItem rescanFolders(const FileItem &root, const QSet<QString> &folders) const;

    // Markdown, SVG and diagram files of a tree, depth first in display order.
    QList<QUrl> collectDocumentURLs(const FileItem &item) const;
    // The same documents as absolute paths, for callers that need no URL.
    QStringList collectDocumentPaths(const FileItem &item) const;
    // The Markdown documents of a tree (or the item itself), depth first in display order: those
    // whose links are read.
    static QStringList collectMarkdownPaths(const FileItem &item);

    // The file name a new document typed as `name` gets: ".md" added unless ".md" or
    // ".markdown" was typed.
    static QString newFileName(const QString &name);
    // Writes a new document titled after `name` into `folder` and returns its URL; never over an
    // existing file.
    FileResult<QUrl> createNewFile(const QUrl &folder, const QString &name) const;
    // Removes a file, or a folder with everything in it, permanently.
    std::optional<FileError> deleteItem(const QUrl &url) const;

private:
    QSet<QString> m_ignoredNames;
    QList<QByteArray> m_ignoredNamesUtf8;
};
