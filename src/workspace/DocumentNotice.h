#pragma once

#include <QObject>

// What the bar above the editor tells about the open document.
class DocumentNotice
{
    Q_GADGET

public:
    enum Value {
        NoNotice,
        DraftFound, // unsaved edits of this file were kept: restore or ignore them
        ChangedOnDisk, // another program changed the file while it has edits here
        RemovedFromDisk, // the file is gone; a save writes it again
    };
    Q_ENUM(Value)
};
