#pragma once

#include "FileIdentity.h"

#include <QString>

#include <cstddef>
#include <memory>
#include <optional>
#include <string_view>

// Reads whole files for one worker thread. The buffer is kept from file to file (it grows to the
// largest document), and files are opened relative to their folder, which stays open while the
// next files come from it too. Only regular files are read: a link to a device or a named pipe
// among the documents is skipped, and never blocks the reader.
class FileReader
{
public:
    FileReader() = default;
    ~FileReader();
    FileReader(const FileReader &) = delete;
    FileReader &operator=(const FileReader &) = delete;

    // The file's bytes, valid until the next read; nothing when it cannot be read.
    std::optional<std::string_view> read(const QString &path);
    // The file the last read() read, as it was when opened.
    const FileIdentity &identity() const { return m_identity; }

private:
    void reserve(std::size_t capacity);

    std::unique_ptr<char[]> m_buffer;
    std::size_t m_capacity = 0;
    QString m_folder;
    int m_folderFd = -1;
    FileIdentity m_identity;
};
