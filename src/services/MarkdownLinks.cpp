#include "MarkdownLinks.h"

#include <QRegularExpression>

#include <cstring>

using namespace Qt::StringLiterals;

namespace MarkdownLinks {

namespace {

char16_t at(QStringView line, qsizetype i)
{
    return line[i].unicode();
}

char16_t at(QByteArrayView line, qsizetype i)
{
    return uchar(line[i]);
}

// Spaces and tabs before the first other character, tabs to the next multiple of four.
template<typename Line> qsizetype indentOf(Line line, qsizetype *first = nullptr)
{
    qsizetype width = 0;
    qsizetype i = 0;
    for (; i < line.size(); ++i) {
        const char16_t c = at(line, i);
        if (c == u' ')
            ++width;
        else if (c == u'\t')
            width += 4 - width % 4;
        else
            break;
    }
    if (first)
        *first = i;
    return width;
}

template<typename Line> bool isBlankLine(Line line)
{
    for (qsizetype i = 0; i < line.size(); ++i) {
        const char16_t c = at(line, i);
        if (c != u' ' && c != u'\t' && c != u'\r' && c != 0x0c && c != 0x0b)
            return false;
    }
    return true;
}

// "```" or "~~~" (three or more) after at most three spaces: the fence's character and length,
// and whether only spaces follow it.
struct Fence
{
    char16_t c = 0;
    qsizetype length = 0;
    bool bare = false;
    bool backtickAfter = false;
};

template<typename Line> Fence fenceOf(Line line)
{
    qsizetype i = 0;
    if (indentOf(line, &i) > 3 || i >= line.size())
        return {};
    const char16_t c = at(line, i);
    if (c != u'`' && c != u'~')
        return {};
    qsizetype end = i;
    while (end < line.size() && at(line, end) == c)
        ++end;
    if (end - i < 3)
        return {};
    Fence fence {c, end - i, true, false};
    for (qsizetype j = end; j < line.size(); ++j) {
        const char16_t after = at(line, j);
        if (after != u' ' && after != u'\t' && after != u'\r')
            fence.bare = false;
        if (after == u'`')
            fence.backtickAfter = true;
    }
    return fence;
}

template<typename Line> bool isListItem(Line line)
{
    qsizetype i = 0;
    indentOf(line, &i);
    if (i >= line.size())
        return false;
    const char16_t c = at(line, i);
    qsizetype next = i + 1;
    if (c >= u'0' && c <= u'9') {
        while (next < line.size() && next - i < 10 && at(line, next) >= u'0'
               && at(line, next) <= u'9')
            ++next;
        if (next >= line.size() || (at(line, next) != u'.' && at(line, next) != u')'))
            return false;
        ++next;
    } else if (c != u'-' && c != u'*' && c != u'+') {
        return false;
    }
    return next >= line.size() || at(line, next) == u' ' || at(line, next) == u'\t'
        || at(line, next) == u'\r';
}

// "<img" in any case, looked for by hand: a case-blind search of a string is many times slower.
template<typename Line> bool hasImgTag(Line line)
{
    for (qsizetype i = line.indexOf(u'<'); i >= 0 && i + 4 <= line.size();
         i = line.indexOf(u'<', i + 1)) {
        if ((at(line, i + 1) | 0x20) == u'i' && (at(line, i + 2) | 0x20) == u'm'
            && (at(line, i + 3) | 0x20) == u'g')
            return true;
    }
    return false;
}

// Whether a line of bytes holds "](", "[[" or "]:", without which no link, wiki link or
// definition stands on it.
bool hasLinkMarks(QByteArrayView line)
{
    const char *data = line.data();
    const char *const end = data + line.size();
    for (const char *p = static_cast<const char *>(std::memchr(data, ']', size_t(end - data)));
         p && p + 1 < end;
         p = static_cast<const char *>(std::memchr(p + 1, ']', size_t(end - p - 1)))) {
        if (p[1] == '(' || p[1] == ']' || p[1] == ':')
            return true;
    }
    return false;
}

// Where code blocks stand, line after line: fenced blocks, and indented blocks outside lists.
class CodeBlocks
{
public:
    template<typename Line> bool isCode(Line line)
    {
        const bool blank = isBlankLine(line);
        bool code = true;
        if (m_fenceLength > 0) {
            const Fence fence = fenceOf(line);
            if (fence.c == m_fence && fence.length >= m_fenceLength && fence.bare)
                m_fenceLength = 0;
        } else if (const Fence fence = fenceOf(line);
                   fence.length > 0 && !(fence.c == u'`' && fence.backtickAfter)) {
            m_fence = fence.c;
            m_fenceLength = fence.length;
        } else if (!blank && indentOf(line) >= 4
                   && (m_indentedCode || (m_previousBlank && !m_inList))) {
            m_indentedCode = true;
        } else {
            code = false;
            if (!blank) {
                m_indentedCode = false;
                if (isListItem(line))
                    m_inList = true;
                else if (m_previousBlank && indentOf(line) == 0)
                    m_inList = false;
            }
        }
        m_previousBlank = blank;
        return code;
    }

private:
    char16_t m_fence = 0;
    qsizetype m_fenceLength = 0;
    bool m_previousBlank = true;
    bool m_indentedCode = false;
    bool m_inList = false;
};

// The ranges of inline code on a line: a run of backticks up to the next run of the same length.
QList<std::pair<qsizetype, qsizetype>> codeSpans(QStringView line)
{
    QList<std::pair<qsizetype, qsizetype>> spans;
    qsizetype i = 0;
    while ((i = line.indexOf(u'`', i)) >= 0) {
        qsizetype run = i;
        while (run < line.size() && line[run] == u'`')
            ++run;
        const qsizetype length = run - i;
        qsizetype j = run;
        qsizetype close = -1;
        while ((j = line.indexOf(u'`', j)) >= 0) {
            qsizetype end = j;
            while (end < line.size() && line[end] == u'`')
                ++end;
            if (end - j == length) {
                close = end;
                break;
            }
            j = end;
        }
        if (close < 0) {
            i = run;
            continue;
        }
        spans.append({i, close});
        i = close;
    }
    return spans;
}

// Where the destination of an inline link that starts at `from` ends: "<...>", or up to a space
// or the ')' that closes the link, parentheses inside it balanced.
qsizetype destinationEnd(QStringView line, qsizetype from)
{
    if (from < line.size() && line[from] == u'<') {
        const qsizetype close = line.indexOf(u'>', from);
        return close < 0 ? -1 : close + 1;
    }
    int depth = 0;
    qsizetype i = from;
    for (; i < line.size(); ++i) {
        const QChar c = line[i];
        if (c == u'\\') {
            ++i;
        } else if (c == u'(') {
            ++depth;
        } else if (c == u')') {
            if (depth == 0)
                break;
            --depth;
        } else if (c.isSpace()) {
            break;
        }
    }
    return i;
}

// The '[' that the ']' at `close` ends, nested brackets counted.
qsizetype openingBracket(QStringView line, qsizetype close)
{
    int depth = 0;
    for (qsizetype i = close - 1; i >= 0; --i) {
        if (i > 0 && line[i - 1] == u'\\')
            continue;
        if (line[i] == u']')
            ++depth;
        else if (line[i] == u'[' && depth-- == 0)
            return i;
    }
    return -1;
}

void scanLine(QStringView line, qsizetype offset, int number, QList<Span> &out)
{
    const QList<std::pair<qsizetype, qsizetype>> code
        = line.contains(u'`') ? codeSpans(line) : QList<std::pair<qsizetype, qsizetype>>();
    const auto inCode = [&code](qsizetype at) {
        for (const auto &[start, end] : code) {
            if (at >= start && at < end)
                return true;
        }
        return false;
    };
    const qsizetype first = out.size();
    const auto add = [&](Form form, bool picture, qsizetype start, qsizetype length) {
        if (length > 0 && !inCode(start))
            out.append({form, picture, number, offset + start, length});
    };

    // A reference definition takes the whole line; a footnote ("[^1]: ...") is not one.
    static const QRegularExpression definition(
        uR"re(^ {0,3}\[(?!\^)(?:[^\]\\]|\\.)+\]:[ \t]*(<[^>]*>|\S+))re"_s);
    qsizetype lead = 0;
    if (indentOf(line, &lead) <= 3 && lead < line.size() && line[lead] == u'['
        && line.contains(u"]:"_s)) {
        const QRegularExpressionMatch match = definition.match(line);
        if (match.hasMatch()) {
            add(Form::Definition, false, match.capturedStart(1), match.capturedLength(1));
            return;
        }
    }

    // Searched character by character: a search for a two-character string costs many times more.
    const auto find = [line](char16_t a, char16_t b, qsizetype from) {
        for (qsizetype i = line.indexOf(QChar(a), from); i >= 0 && i + 1 < line.size();
             i = line.indexOf(QChar(a), i + 1)) {
            if (line[i + 1] == b)
                return i;
        }
        return qsizetype(-1);
    };
    for (qsizetype i = 0; (i = find(u'[', u'[', i)) >= 0;) {
        const qsizetype close = find(u']', u']', i + 2);
        if (close < 0)
            break;
        const QStringView inner = line.mid(i + 2, close - i - 2);
        if (!inner.contains(u'[') && !inner.contains(u']') && !inCode(i)) {
            const bool picture = i > 0 && line[i - 1] == u'!';
            add(Form::Wiki, picture, i + 2, inner.size());
            i = close + 2;
        } else {
            i += 2;
        }
    }

    for (qsizetype i = 0; (i = find(u']', u'(', i)) >= 0; ++i) {
        if (inCode(i))
            continue;
        const qsizetype open = openingBracket(line, i);
        if (open < 0)
            continue;
        qsizetype start = i + 2;
        while (start < line.size() && (line[start] == u' ' || line[start] == u'\t'))
            ++start;
        const qsizetype end = destinationEnd(line, start);
        if (end < 0)
            continue;
        const bool picture = open > 0 && line[open - 1] == u'!';
        // "[[a]](b)" is read once, as the link.
        for (qsizetype k = out.size() - 1; k >= first; --k) {
            if (out[k].form == Form::Wiki && out[k].start >= offset + open
                && out[k].start < offset + i)
                out.removeAt(k);
        }
        add(Form::Inline, picture, start, end - start);
    }

    if (hasImgTag(line)) {
        static const QRegularExpression html(
            uR"re(<img\b[^>]*?\bsrc\s*=\s*(?:"([^"]*)"|'([^']*)'))re"_s,
            QRegularExpression::CaseInsensitiveOption);
        for (QRegularExpressionMatchIterator it = html.globalMatch(line); it.hasNext();) {
            const QRegularExpressionMatch match = it.next();
            const int group = match.hasCaptured(1) ? 1 : 2;
            if (!inCode(match.capturedStart()))
                add(Form::Html, true, match.capturedStart(group), match.capturedLength(group));
        }
    }
    std::sort(out.begin() + first, out.end(),
              [](const Span &a, const Span &b) { return a.start < b.start; });
}

} // namespace

QList<Span> scan(QStringView text)
{
    QList<Span> spans;
    CodeBlocks blocks;
    int number = 0;
    qsizetype offset = 0;
    while (offset <= text.size()) {
        qsizetype end = text.indexOf(u'\n', offset);
        if (end < 0)
            end = text.size();
        QStringView line = text.mid(offset, end - offset);
        if (line.endsWith(u'\r'))
            line.chop(1);
        // Most lines hold no link at all, and pass without a closer look.
        if (!blocks.isCode(line) && (line.contains(u'[') || hasImgTag(line)))
            scanLine(line, offset, number, spans);
        offset = end + 1;
        ++number;
    }
    return spans;
}

void scanUtf8(QByteArrayView text,
              const std::function<void(int, QStringView, const QList<Span> &)> &found)
{
    CodeBlocks blocks;
    QList<Span> spans;
    int number = 0;
    const char *const data = text.data();
    const qsizetype size = text.size();
    qsizetype offset = 0;
    while (offset <= size) {
        const void *newline = std::memchr(data + offset, '\n', size_t(size - offset));
        const qsizetype end = newline ? static_cast<const char *>(newline) - data : size;
        QByteArrayView line(data + offset, end - offset);
        if (line.endsWith('\r'))
            line.chop(1);
        if (!blocks.isCode(line)) {
            if (hasLinkMarks(line) || hasImgTag(line)) {
                const QString decoded = QString::fromUtf8(line);
                spans.clear();
                scanLine(decoded, 0, number, spans);
                if (!spans.isEmpty())
                    found(number, decoded, spans);
            }
        }
        offset = end + 1;
        ++number;
    }
}

QStringView lineAt(QStringView text, qsizetype position)
{
    const qsizetype start = position <= 0 ? 0 : text.lastIndexOf(u'\n', position - 1) + 1;
    qsizetype end = text.indexOf(u'\n', position);
    if (end < 0)
        end = text.size();
    QStringView line = text.mid(start, end - start);
    if (line.endsWith(u'\r'))
        line.chop(1);
    return line;
}

} // namespace MarkdownLinks
