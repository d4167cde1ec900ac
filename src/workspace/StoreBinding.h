#pragma once

#include "workspace/WorkspaceStore.h"

#include <QPointer>

// Points a view model's `current` store at `store`, dropping every connection `receiver` had to
// the previous one. False when it already was that store: nothing to do then.
inline bool rebindStore(QPointer<WorkspaceStore> &current, WorkspaceStore *store, QObject *receiver)
{
    if (store == current)
        return false;
    if (current)
        current->disconnect(receiver);
    current = store;
    return true;
}
