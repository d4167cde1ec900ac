#include "FolderReplace.h"

#include "model/FileUrl.h"
#include "services/TextFile.h"

#include <QtConcurrent/QtConcurrentMap>

#include <optional>

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
    // What happened to one document.
    struct Outcome
    {
        QString path;
        std::optional<Document> written;
        bool leftAlone = false;
        std::optional<FileError> error;
    };
    QList<FileSearchResults> listed;
    for (const FileSearchResults &file : results) {
        if (!file.matchRanges.isEmpty() && FileUrl::path(file.fileURL) != skipped)
            listed.append(file);
    }
    // Several at a time: most of a write is waiting for the disk to confirm it.
    const QList<Outcome> outcomes = QtConcurrent::blockingMapped(
        listed, [&pattern, &replacement](const FileSearchResults &file) {
            Outcome outcome {FileUrl::path(file.fileURL), std::nullopt, false, std::nullopt};
            FileIdentity read;
            const FileResult<QString> text = TextFile::readUtf8(outcome.path, &read);
            if (!text.ok()) {
                outcome.error = text.error;
                return outcome;
            }
            if (read != file.identity) {
                outcome.leftAlone = true;
                return outcome;
            }
            Document document {outcome.path, text.value, {}, {}, 0};
            document.newText = pattern.replacedInText(document.text, replacement, &document.count);
            if (document.count == 0)
                return outcome;
            // Checked again just before writing: a save that landed since the read is kept.
            const TextFile::GuardedWrite write = TextFile::writeUtf8IfUnchanged(
                outcome.path, document.newText, read, &document.identity);
            outcome.leftAlone = write.changedElsewhere;
            outcome.error = write.error;
            if (write.written())
                outcome.written = std::move(document);
            return outcome;
        });
    Done done;
    for (const Outcome &outcome : outcomes) {
        if (outcome.leftAlone)
            done.leftAlone.append(outcome.path);
        else if (outcome.error)
            done.fail(outcome.path, *outcome.error);
        else if (outcome.written) {
            done.count += outcome.written->count;
            done.written.append(*outcome.written);
        }
    }
    return done;
}

FolderReplace::Done FolderReplace::undo(const Done &done)
{
    Done undone;
    for (const Document &document : done.written) {
        Document back = document;
        const TextFile::GuardedWrite write = TextFile::writeUtf8IfUnchanged(
            document.path, document.text, document.identity, &back.identity);
        if (write.changedElsewhere) {
            undone.leftAlone.append(document.path);
        } else if (write.error) {
            undone.fail(document.path, *write.error);
        } else {
            undone.count += document.count;
            undone.written.append(std::move(back));
        }
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
