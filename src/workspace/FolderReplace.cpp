#include "FolderReplace.h"

#include "model/FileUrl.h"
#include "services/TextFile.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

QString occurrencesText(int occurrences)
{
    return QString::number(occurrences) + (occurrences >= 2 ? u" occurrences"_s : u" occurrence"_s);
}

QString documentsText(qsizetype documents)
{
    return QString::number(documents) + (documents >= 2 ? u" documents"_s : u" document"_s);
}

} // namespace

void FolderReplace::Done::fail(const QString &path, const FileError &error)
{
    failed.append(path);
    errors.append(error);
}

FolderReplace::Done FolderReplace::perform(const TextPattern &pattern, const QString &replacement,
                                           const QList<FileSearchResults> &results,
                                           const QString &skipped)
{
    Done done;
    for (const FileSearchResults &file : results) {
        const QString path = FileUrl::path(file.fileURL);
        const bool hasMatches
            = std::any_of(file.matches.begin(), file.matches.end(),
                          [](const SearchResult &hit) { return !hit.matchRanges.isEmpty(); });
        if (path == skipped || !hasMatches)
            continue;
        FileIdentity read;
        const FileResult<QString> text = TextFile::readUtf8(path, &read);
        if (!text.ok()) {
            done.fail(path, *text.error);
            continue;
        }
        if (read != file.identity) {
            done.leftAlone.append(path);
            continue;
        }
        Document document {path, text.value, {}, {}, 0};
        document.newText = pattern.replacedInText(document.text, replacement, &document.count);
        if (document.count == 0)
            continue;
        // The last look before writing: a save that landed since the read is kept.
        if (FileIdentity::of(path) != read) {
            done.leftAlone.append(path);
            continue;
        }
        if (std::optional<FileError> error = TextFile::writeUtf8Atomically(
                path, document.newText, TextFile::Temporary::UnnamedWherePossible,
                &document.identity)) {
            done.fail(path, *error);
            continue;
        }
        done.count += document.count;
        done.written.append(std::move(document));
    }
    return done;
}

FolderReplace::Done FolderReplace::undo(const Done &done)
{
    Done undone;
    for (const Document &document : done.written) {
        if (FileIdentity::of(document.path) != document.identity) {
            undone.leftAlone.append(document.path);
            continue;
        }
        Document back = document;
        if (std::optional<FileError> error = TextFile::writeUtf8Atomically(
                document.path, document.text, TextFile::Temporary::UnnamedWherePossible,
                &back.identity)) {
            undone.fail(document.path, *error);
            continue;
        }
        undone.count += document.count;
        undone.written.append(std::move(back));
    }
    return undone;
}

QString FolderReplace::summary(int occurrences, qsizetype documents)
{
    return u"%1 %2 dans %3."_s.arg(occurrencesText(occurrences),
                                   occurrences >= 2 ? u"remplac\u00E9es"_s : u"remplac\u00E9e"_s,
                                   documentsText(documents));
}

QString FolderReplace::question(int occurrences, qsizetype documents)
{
    return u"Remplacer %1 dans %2 ?"_s.arg(occurrencesText(occurrences), documentsText(documents));
}
