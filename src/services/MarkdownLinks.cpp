#include "MarkdownLinks.h"

#include <QRegularExpression>

using namespace Qt::StringLiterals;

namespace MarkdownLinks {

namespace {

qsizetype indentOf(QStringView line)
{
    qsizetype width = 0;
    for (const QChar c : line) {
        if (c == u' ')
            ++width;
        else if (c == u'\t')
            width += 4 - width % 4;
        else
            break;
    }
    return width;
}

bool isBlankLine(QStringView line)
{
    return line.trimmed().isEmpty();
}

// "```" or "~~~" (three or more) after at most three spaces: the fence's character and length.
std::pair<QChar, qsizetype> fenceOf(QStringView line)
{
    const QStringView text = line.trimmed();
    if (indentOf(line) > 3 || text.size() < 3 || (text[0] != u'`' && text[0] != u'~'))
        return {QChar(), 0};
    qsizetype length = 0;
    while (length < text.size() && text[length] == text[0])
        ++length;
    if (length < 3)
        return {QChar(), 0};
    return {text[0], length};
}

bool isListItem(QStringView line)
{
    static const QRegularExpression item(u"^\\s*(?:[-*+]|\\d{1,9}[.)])(?:\\s|$)"_s);
    return item.match(line).hasMatch();
}

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
    if (const QRegularExpressionMatch match = definition.match(line); match.hasMatch()) {
        add(Form::Definition, false, match.capturedStart(1), match.capturedLength(1));
        return;
    }

    for (qsizetype i = 0; (i = line.indexOf(u"[["_s, i)) >= 0;) {
        const qsizetype close = line.indexOf(u"]]"_s, i + 2);
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

    for (qsizetype i = 0; (i = line.indexOf(u"]("_s, i)) >= 0; ++i) {
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

    if (line.contains(u"<img"_s, Qt::CaseInsensitive)) {
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
    QChar fence;
    qsizetype fenceLength = 0;
    bool previousBlank = true;
    bool indentedCode = false;
    bool inList = false;
    int number = 0;
    qsizetype offset = 0;
    while (offset <= text.size()) {
        qsizetype end = text.indexOf(u'\n', offset);
        if (end < 0)
            end = text.size();
        QStringView line = text.mid(offset, end - offset);
        if (line.endsWith(u'\r'))
            line.chop(1);

        const bool blank = isBlankLine(line);
        if (fenceLength > 0) {
            const auto [c, length] = fenceOf(line);
            if (c == fence && length >= fenceLength && line.trimmed().size() == length)
                fenceLength = 0;
        } else if (const auto [c, length] = fenceOf(line);
                   length > 0 && !(c == u'`' && line.mid(line.indexOf(c) + length).contains(c))) {
            fence = c;
            fenceLength = length;
        } else if (!blank && indentOf(line) >= 4 && (indentedCode || (previousBlank && !inList))) {
            indentedCode = true;
        } else {
            if (!blank) {
                indentedCode = false;
                if (isListItem(line))
                    inList = true;
                else if (previousBlank && indentOf(line) == 0)
                    inList = false;
            }
            // Most lines hold no link at all, and pass without a closer look.
            if (line.contains(u'[') || line.contains(u"<img"_s, Qt::CaseInsensitive))
                scanLine(line, offset, number, spans);
        }
        previousBlank = blank;
        offset = end + 1;
        ++number;
    }
    return spans;
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
