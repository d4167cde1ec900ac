#include "TextFile.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStringDecoder>

#include <cerrno>

namespace TextFile {

std::optional<QString> decodeUtf8(QByteArrayView bytes)
{
    // Stateless, so a sequence cut off at the end of the file counts as an error.
    QStringDecoder decoder(QStringDecoder::Utf8,
                           QStringDecoder::Flag::ConvertInitialBom
                               | QStringDecoder::Flag::Stateless);
    QString text = decoder.decode(bytes);
    if (decoder.hasError())
        return std::nullopt;
    return text;
}

FileResult<QString> readUtf8(const QString &path)
{
    const QFileInfo info(path);
    if (info.isDir())
        return {{}, FileError::fromErrno(EISDIR, path)};
    // Opening a named pipe would wait for a writer forever.
    if (info.exists() && !info.isFile())
        return {{}, FileError::notRegularFile(path)};
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {{}, FileError::fromDevice(file, path)};
    const QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError)
        return {{}, FileError::fromDevice(file, path)};
    std::optional<QString> text = decodeUtf8(bytes);
    if (!text)
        return {{}, FileError::invalidUtf8(path)};
    return {std::move(*text), std::nullopt};
}

std::optional<FileError> writeUtf8Atomically(const QString &path, const QString &text)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return FileError::fromDevice(file, path);
    const QByteArray bytes = text.toUtf8();
    if (file.write(bytes) != bytes.size() || !file.commit())
        return FileError::fromDevice(file, path);
    return std::nullopt;
}

} // namespace TextFile
