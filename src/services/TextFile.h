#pragma once

#include "FileError.h"
#include "FileIdentity.h"

#include <QByteArrayView>
#include <QString>

#include <optional>

// Whole-file UTF-8 text, byte for byte: a byte-order mark is kept as U+FEFF and every line
// ending stays as it is, so writing back text that was read gives back the same bytes.
namespace TextFile {

// Fails on bytes that are not valid UTF-8. `identity`, when given, receives the identity of the
// file the bytes came from.
FileResult<QString> readUtf8(const QString &path, FileIdentity *identity = nullptr);
// Decodes without dropping a byte-order mark; nothing when the bytes are not valid UTF-8.
std::optional<QString> decodeUtf8(QByteArrayView bytes);
// Where the new text waits until it replaces the target: in an unnamed file where the file system
// has them (a crash leaves nothing), else in a hidden file beside the target.
enum class Temporary { UnnamedWherePossible, Hidden };

// Writes through a temporary file that replaces the target only once every byte of it is on the
// disk, so a failed or interrupted write leaves the old file whole. Symbolic links are followed,
// and the replaced file's permissions kept. Hidden temporaries of this file that an interrupted
// save left beside it are removed. `written`, when given, receives the new file's identity.
std::optional<FileError> writeUtf8Atomically(const QString &path, const QString &text,
                                             Temporary temporary = Temporary::UnnamedWherePossible,
                                             FileIdentity *written = nullptr);
// What writeUtf8IfUnchanged() did: wrote, left alone a file another program changed, or failed.
struct GuardedWrite
{
    bool changedElsewhere = false;
    std::optional<FileError> error;

    bool written() const { return !changedElsewhere && !error; }
};
// The same, only while the file is still the one `expected` names: a rewrite of many documents
// never writes over another program's save.
GuardedWrite writeUtf8IfUnchanged(const QString &path, const QString &text,
                                  const FileIdentity &expected, FileIdentity *written = nullptr);
std::optional<FileError> writeAtomically(const QString &path, QByteArrayView bytes,
                                         Temporary temporary = Temporary::UnnamedWherePossible,
                                         FileIdentity *written = nullptr);

} // namespace TextFile
