#include "SidebarMode.h"

QString SidebarMode::rawValue(Value mode)
{
    return mode == Explorer ? QStringLiteral("explorer") : QStringLiteral("search");
}

std::optional<SidebarMode::Value> SidebarMode::fromRawValue(QStringView raw)
{
    if (raw == u"explorer")
        return Explorer;
    if (raw == u"search")
        return Search;
    return std::nullopt;
}

QList<SidebarMode::Value> SidebarMode::allCases()
{
    return {Explorer, Search};
}
