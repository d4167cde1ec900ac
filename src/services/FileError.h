#pragma once

#include <QString>

#include <optional>

class QFileDevice;

// A failed file-system operation: the system's error code and text, and the item concerned,
// described to the user as a readable French sentence.
class FileError
{
public:
    enum class Kind { System, InvalidUtf8, NotRegularFile, ReadOnlyFile };

    static FileError fromErrno(int code, const QString &path);
    // Recovers the error code behind a QFile or QSaveFile failure from its error text.
    static FileError fromDevice(const QFileDevice &device, const QString &path);
    static FileError invalidUtf8(const QString &path);
    // A named pipe, socket or device: nothing to read as a document.
    static FileError notRegularFile(const QString &path);
    // A file whose permissions forbid writing it, though its folder would allow replacing it.
    static FileError readOnlyFile(const QString &path);

    Kind kind() const { return m_kind; }
    int code() const { return m_code; } // errno, 0 when unknown
    const QString &path() const { return m_path; }
    const QString &systemText() const { return m_systemText; }
    QString localizedDescription() const;

private:
    FileError(Kind kind, int code, const QString &path, const QString &systemText);

    Kind m_kind = Kind::System;
    int m_code = 0;
    QString m_path;
    QString m_systemText;
};

// The outcome of a file operation that yields a value.
template<typename T> struct FileResult
{
    T value;
    std::optional<FileError> error;

    bool ok() const { return !error.has_value(); }
};
