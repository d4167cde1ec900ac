#pragma once

#include "workspace/WorkspaceStore.h"

#include <QJSEngine>
#include <QQmlEngine>

// Shows QML the application's one store as the singleton `WorkspaceStore`. QML gets the
// instance from create(), so it never constructs a second store of its own.
struct WorkspaceStoreForeign
{
    Q_GADGET
    QML_FOREIGN(WorkspaceStore)
    QML_NAMED_ELEMENT(WorkspaceStore)
    QML_SINGLETON

public:
    static WorkspaceStore *create(QQmlEngine *, QJSEngine *)
    {
        WorkspaceStore *store = WorkspaceStore::shared();
        QJSEngine::setObjectOwnership(store, QJSEngine::CppOwnership);
        return store;
    }
};

// The sidebar's modes, for QML: SidebarMode.Explorer and SidebarMode.Search.
namespace SidebarModeForeign {
Q_NAMESPACE
QML_FOREIGN_NAMESPACE(SidebarMode)
QML_NAMED_ELEMENT(SidebarMode)
} // namespace SidebarModeForeign

// What the bar above the editor tells, for QML: DocumentNotice.DraftFound and the others.
namespace DocumentNoticeForeign {
Q_NAMESPACE
QML_FOREIGN_NAMESPACE(DocumentNotice)
QML_NAMED_ELEMENT(DocumentNotice)
} // namespace DocumentNoticeForeign
