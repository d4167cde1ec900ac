#pragma once

#include <QList>
#include <QMetaType>
#include <QString>

#include <optional>

// What the sidebar shows: the folder tree or the search panel.
class SidebarMode
{
    Q_GADGET

public:
    enum Value { Explorer, Search };
    Q_ENUM(Value)

    static QString rawValue(Value mode);
    // Exactly "explorer" or "search" (case-sensitive); anything else yields nothing.
    static std::optional<Value> fromRawValue(QStringView raw);
    static QList<Value> allCases();
};
