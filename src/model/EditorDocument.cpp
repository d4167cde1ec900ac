#include "EditorDocument.h"

#include "FileUrl.h"

#include <QFileInfo>
#include <QLocale>

QString EditorDocument::id() const
{
    return FileUrl::path(fileURL);
}

int EditorDocument::countWords(QStringView text)
{
    int count = 0;
    bool inWord = false;
    for (const QChar c : text) {
        // Every white-space and line-break character lies in the BMP, so code units suffice.
        const bool space = c.isSpace();
        if (!space && !inWord)
            ++count;
        inWord = !space;
    }
    return count;
}

int EditorDocument::wordCount() const
{
    return countWords(content);
}

QString EditorDocument::formattedFileSize() const
{
    const QFileInfo info(FileUrl::path(fileURL));
    if (!info.exists())
        return QStringLiteral("-");
    return QLocale::system().formattedDataSize(info.size(), 1, QLocale::DataSizeSIFormat);
}
