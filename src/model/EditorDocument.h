#pragma once

#include "HeadingItem.h"

#include <QDateTime>
#include <QList>
#include <QMetaType>
#include <QString>
#include <QUrl>

// The document open in the editor: its text as last loaded or edited, and whether that text
// holds edits not yet written to disk.
class EditorDocument
{
    Q_GADGET
    Q_PROPERTY(QString id READ id CONSTANT)
    Q_PROPERTY(QUrl fileURL MEMBER fileURL CONSTANT)
    Q_PROPERTY(QString content MEMBER content CONSTANT)
    Q_PROPERTY(bool isDirty MEMBER isDirty CONSTANT)
    Q_PROPERTY(QDateTime lastModified MEMBER lastModified CONSTANT)
    Q_PROPERTY(QList<HeadingItem> headings MEMBER headings CONSTANT)
    Q_PROPERTY(int wordCount READ wordCount CONSTANT)
    Q_PROPERTY(QString formattedFileSize READ formattedFileSize CONSTANT)

public:
    QUrl fileURL;
    QString content;
    bool isDirty = false;
    // When the document was last read or saved (not the file's own modification date).
    QDateTime lastModified;
    QList<HeadingItem> headings;

    QString id() const;
    // Pieces of `content` between runs of white space or line breaks.
    int wordCount() const;
    // The on-disk size, formatted for the user's locale; "-" when it cannot be read.
    QString formattedFileSize() const;

    static int countWords(QStringView text);

    friend bool operator==(const EditorDocument &a, const EditorDocument &b)
    {
        return a.fileURL == b.fileURL && a.content == b.content && a.isDirty == b.isDirty
            && a.lastModified == b.lastModified && a.headings == b.headings;
    }
    friend bool operator!=(const EditorDocument &a, const EditorDocument &b) { return !(a == b); }
};

Q_DECLARE_METATYPE(EditorDocument)
