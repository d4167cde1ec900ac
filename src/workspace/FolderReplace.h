#pragma once

#include "model/FileSearchResults.h"
#include "services/FileError.h"
#include "services/FileIdentity.h"
#include "services/TextPattern.h"

#include <QList>
#include <QString>
#include <QStringList>

// Replaces the matches a search found in the documents of the folder, and takes that back. Each
// document is read again and written atomically, and only while it is still the file the search
// read: one changed by another program meanwhile is left alone and named. Nothing but the matches
// changes: line ends, byte-order mark and final newline stay.
class FolderReplace
{
public:
    struct Document
    {
        QString path;
        QString text; // before
        QString newText;
        FileIdentity identity; // of the file as written here
        int count = 0;
    };
    struct Done
    {
        QList<Document> written;
        QStringList leftAlone; // changed by another program since they were read
        QStringList failed; // paths, with why, in `errors`
        QList<FileError> errors;
        int count = 0; // occurrences replaced

        void fail(const QString &path, const FileError &error);
    };

    // Replaces in each document of `results` that holds matches, except `skipped` (the open
    // document, whose text is replaced in the editor).
    static Done perform(const TextPattern &pattern, const QString &replacement,
                        const QList<FileSearchResults> &results, const QString &skipped);
    // Puts back the documents still as `done` wrote them.
    static Done undo(const Done &done);

    // "3 occurrences remplacées dans 2 documents."
    static QString summary(int occurrences, qsizetype documents);
    // "Remplacer 3 occurrences dans 2 documents ?"
    static QString question(int occurrences, qsizetype documents);
};
