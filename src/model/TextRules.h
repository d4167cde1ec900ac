#pragma once

#include <QString>

#include <algorithm>

namespace TextRules {

// Nothing but spaces and tabs (a line break is something): a blank query searches nothing, a
// blank name creates nothing.
inline bool isBlank(const QString &text)
{
    return std::all_of(text.begin(), text.end(), [](QChar c) { return c == u' ' || c == u'\t'; });
}

} // namespace TextRules
