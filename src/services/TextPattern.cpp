#include "TextPattern.h"

#include "SearchService.h"

#include <QChar>

using namespace Qt::StringLiterals;

namespace {

// The code point that ends just before `at`, never reading before `begin`; 0 when none.
char32_t utf8Before(const char *begin, const char *at)
{
    const char *p = at;
    while (p > begin && at - p < 4 && (static_cast<unsigned char>(p[-1]) & 0xC0) == 0x80)
        --p;
    if (p == begin)
        return 0;
    --p;
    const QString decoded = QString::fromUtf8(p, at - p);
    return decoded.isEmpty() ? 0 : decoded.toUcs4().value(0);
}

// The code point that starts at `at`; 0 at `end`.
char32_t utf8At(const char *at, const char *end)
{
    if (at >= end)
        return 0;
    const auto lead = static_cast<unsigned char>(*at);
    const qsizetype length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    const QString decoded = QString::fromUtf8(at, std::min<qsizetype>(length, end - at));
    return decoded.isEmpty() ? 0 : decoded.toUcs4().value(0);
}

char32_t codePointBefore(QStringView text, qsizetype at)
{
    if (at <= 0)
        return 0;
    if (at >= 2 && text[at - 1].isLowSurrogate() && text[at - 2].isHighSurrogate())
        return QChar::surrogateToUcs4(text[at - 2], text[at - 1]);
    return text[at - 1].unicode();
}

char32_t codePointAt(QStringView text, qsizetype at)
{
    if (at >= text.size())
        return 0;
    if (at + 1 < text.size() && text[at].isHighSurrogate() && text[at + 1].isLowSurrogate())
        return QChar::surrogateToUcs4(text[at], text[at + 1]);
    return text[at].unicode();
}

} // namespace

TextPattern::TextPattern(const QString &query, SearchOptions options)
    : m_query(query), m_options(options), m_bytes(query, options.caseSensitive)
{
    if (options.regularExpression) {
        // Whole words: no letter, digit, mark or underscore on either side of the match.
        const QString pattern = options.wholeWord
            ? u"(?<![\\p{L}\\p{N}\\p{M}_])(?:"_s + query + u")(?![\\p{L}\\p{N}\\p{M}_])"_s
            : query;
        QRegularExpression::PatternOptions flags = QRegularExpression::UseUnicodePropertiesOption;
        if (!options.caseSensitive)
            flags |= QRegularExpression::CaseInsensitiveOption;
        m_expression = QRegularExpression(pattern, flags);
        // Over a whole text, every line end the search knows ends a line for ^, $ and "."
        m_acrossLines = QRegularExpression(u"(*ANY)"_s + pattern,
                                           flags | QRegularExpression::MultilineOption);
        m_valid = m_expression.isValid() && m_acrossLines.isValid();
        if (m_valid) {
            m_expression.optimize();
            m_acrossLines.optimize();
        }
        return;
    }
    m_bytesUsable = m_bytes.isUsable();
}

bool TextPattern::isWordCharacter(char32_t c)
{
    return c == U'_' || QChar::isLetterOrNumber(c) || QChar::isMark(c);
}

bool TextPattern::isWholeWord(QStringView line, qsizetype start, qsizetype end) const
{
    return !isWordCharacter(codePointBefore(line, start))
        && !isWordCharacter(codePointAt(line, end));
}

std::optional<std::pair<qsizetype, qsizetype>>
TextPattern::findIn(QStringView line, qsizetype from, QRegularExpressionMatch *match) const
{
    if (!m_valid || m_query.isEmpty())
        return std::nullopt;
    if (m_options.regularExpression) {
        while (from <= line.size()) {
            QRegularExpressionMatch found = m_expression.match(line, from);
            if (!found.hasMatch())
                return std::nullopt;
            if (found.capturedLength() > 0) {
                const std::pair<qsizetype, qsizetype> range {found.capturedStart(),
                                                             found.capturedEnd()};
                if (match)
                    *match = std::move(found);
                return range;
            }
            from = found.capturedEnd() + 1; // an empty match is no match
        }
        return std::nullopt;
    }
    const Qt::CaseSensitivity cs
        = m_options.caseSensitive ? Qt::CaseSensitive : Qt::CaseInsensitive;
    for (;;) {
        const qsizetype start = line.indexOf(m_query, from, cs);
        if (start < 0)
            return std::nullopt;
        const qsizetype end = start + m_query.size();
        if (!m_options.wholeWord || isWholeWord(line, start, end))
            return std::pair {start, end};
        from = start + 1;
    }
}

bool TextPattern::matches(QStringView text) const
{
    return findIn(text, 0, nullptr).has_value();
}

QList<std::pair<int, int>> TextPattern::matchesIn(QStringView line) const
{
    QList<std::pair<int, int>> ranges;
    qsizetype from = 0;
    while (const auto found = findIn(line, from, nullptr)) {
        ranges.append({int(found->first), int(found->second)});
        from = found->second;
    }
    return ranges;
}

QString TextPattern::replacedIn(QStringView line, const QString &replacement, int *count) const
{
    QString out;
    qsizetype copied = 0;
    QRegularExpressionMatch match;
    while (const auto found = findIn(line, copied, &match)) {
        out += line.mid(copied, found->first - copied);
        if (!m_options.regularExpression) {
            out += replacement;
        } else {
            for (qsizetype i = 0; i < replacement.size(); ++i) {
                const QChar next = i + 1 < replacement.size() ? replacement[i + 1] : QChar();
                if (replacement[i] == u'$' && next == u'&') {
                    out += match.capturedView(0);
                    ++i;
                } else if (replacement[i] == u'$' && next >= u'1' && next <= u'9'
                           && next.digitValue() <= m_expression.captureCount()) {
                    out += match.capturedView(next.digitValue());
                    ++i;
                } else {
                    out += replacement[i];
                }
            }
        }
        copied = found->second;
        ++*count;
    }
    if (copied == 0)
        return line.toString();
    out += line.mid(copied);
    return out;
}

bool TextPattern::nextCandidateLine(QStringView text, qsizetype &from, qsizetype &start,
                                    qsizetype &end) const
{
    if (!m_valid || m_query.isEmpty() || from > text.size())
        return false;
    if (m_options.regularExpression) {
        const QRegularExpressionMatch found = m_acrossLines.match(text, from);
        if (!found.hasMatch())
            return false;
        start = found.capturedStart();
    } else {
        const auto found = findIn(text, from, nullptr);
        if (!found)
            return false;
        start = found->first;
    }
    while (start > from && !SearchService::isLineEnd(text[start - 1]))
        --start;
    end = start;
    while (end < text.size() && !SearchService::isLineEnd(text[end]))
        ++end;
    // Past a CR LF pair at once; past the text when the line is its last.
    from = end + (end + 1 < text.size() && text[end] == u'\r' && text[end + 1] == u'\n' ? 2 : 1);
    return true;
}

QString TextPattern::replacedInText(QStringView text, const QString &replacement, int *count) const
{
    QString out;
    qsizetype copied = 0;
    qsizetype from = text.startsWith(QChar(0xFEFF)) ? 1 : 0;
    qsizetype start = 0;
    qsizetype end = 0;
    while (nextCandidateLine(text, from, start, end)) {
        int replaced = 0;
        const QString line = replacedIn(text.mid(start, end - start), replacement, &replaced);
        if (replaced > 0) {
            out += text.mid(copied, start - copied);
            out += line;
            copied = end;
            *count += replaced;
        }
    }
    if (copied == 0)
        return text.toString();
    out += text.mid(copied);
    return out;
}

const char *TextPattern::findInBytes(const char *begin, const char *from, const char *end,
                                     const char **matchEnd) const
{
    while (from < end) {
        const char *at = m_bytes.find(from, end);
        if (!at)
            return nullptr;
        const char *stop = m_bytes.matchEnd(at, end);
        if (!m_options.wholeWord
            || (!isWordCharacter(utf8Before(begin, at)) && !isWordCharacter(utf8At(stop, end)))) {
            *matchEnd = stop;
            return at;
        }
        // The next character start: continuation bytes never start a match.
        from = at + 1;
    }
    return nullptr;
}
