#pragma once

#include "Utf8Matcher.h"
#include "model/SearchOptions.h"

#include <QList>
#include <QRegularExpression>
#include <QString>

#include <optional>
#include <utility>

// What a search looks for, with its options: a plain query (with or without regard to case, as a
// whole word or anywhere) or a regular expression. It finds matches in decoded text, line by line,
// and, for a plain query, in UTF-8 bytes without decoding them. Matches never overlap and are
// never empty. A line is what lies between two line ends (a CR LF pair is one line end).
class TextPattern
{
public:
    TextPattern(const QString &query, SearchOptions options);

    // False for an expression that does not compile.
    bool isValid() const { return m_valid; }
    const QString &query() const { return m_query; }
    const SearchOptions &options() const { return m_options; }

    // Whether the text holds a match (a file's name).
    bool matches(QStringView text) const;
    // Every match within one line, as [start, end) offsets.
    QList<std::pair<int, int>> matchesIn(QStringView line) const;
    // The line with every match replaced. With an expression, "$1"…"$9" stand for its groups and
    // "$&" for the whole match; without, the replacement is taken as written.
    QString replacedIn(QStringView line, const QString &replacement, int *count) const;
    // The text with the matches of each of its lines replaced; a leading byte-order mark and every
    // line end stay as they are.
    QString replacedInText(QStringView text, const QString &replacement, int *count) const;

    // The next line from `from` (a line's start) on that may hold a match, found fast, as
    // [start, end); `from` moves to the start of the line after it. False when there is none.
    // The line must then be checked with matchesIn(): an expression may match across a line end.
    bool nextCandidateLine(QStringView text, qsizetype &from, qsizetype &start,
                           qsizetype &end) const;

    // Whether plain bytes can be searched (no expression, and a query the byte matcher takes).
    bool searchesBytes() const { return m_bytesUsable; }
    // The first match in [from, end), its end in `matchEnd`. The whole-word test looks no further
    // than `begin` and `end`.
    const char *findInBytes(const char *begin, const char *from, const char *end,
                            const char **matchEnd) const;

    static bool isWordCharacter(char32_t c);

private:
    // The first match at or after `from` within `line`, as [start, end).
    std::optional<std::pair<qsizetype, qsizetype>> findIn(QStringView line, qsizetype from,
                                                          QRegularExpressionMatch *match) const;
    bool isWholeWord(QStringView line, qsizetype start, qsizetype end) const;

    QString m_query;
    SearchOptions m_options;
    bool m_valid = true;
    QRegularExpression m_expression; // line by line
    QRegularExpression m_acrossLines; // the same over a whole text, ^ and $ at every line end
    Utf8Matcher m_bytes;
    bool m_bytesUsable = false;
};
