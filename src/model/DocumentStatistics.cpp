#include "DocumentStatistics.h"

#include "EditorDocument.h"

#include <QTextBoundaryFinder>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace DocumentStatistics {

namespace {

// Below U+0300 no character extends the one before it (combining marks, joiners, variation
// selectors, modifiers and surrogates all lie above), so between two such characters there is
// always a cluster boundary, except inside CR LF. Such text is counted one code unit at a time;
// only the runs around other characters go through the full segmentation rules.
constexpr char16_t firstComplex = 0x300;

inline bool isSimple(char16_t c)
{
    return c < firstComplex;
}

} // namespace

qsizetype characterCount(QStringView text)
{
    const char16_t *data = text.utf16();
    const qsizetype size = text.size();
    qsizetype count = 0;
    qsizetype i = 0;
    while (i < size) {
        const char16_t c = data[i];
        if (isSimple(c)) {
            if (!(c == u'\n' && i > 0 && data[i - 1] == u'\r'))
                ++count;
            ++i;
            continue;
        }
        // A complex run starts with the character before (which the mark may extend) and ends
        // where two simple characters meet again (not CR then LF).
        qsizetype start = i;
        if (i > 0) {
            --start;
            if (!(data[start] == u'\n' && start > 0 && data[start - 1] == u'\r'))
                --count; // counted above, counted again in the run
            else
                start = i; // LF ends a cluster: nothing extends across it
        }
        qsizetype end = i + 1;
        while (end < size
               && !(isSimple(data[end]) && isSimple(data[end - 1]) && data[end - 1] != u'\r'))
            ++end;
        QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text.mid(start, end - start));
        while (finder.toNextBoundary() > 0)
            ++count;
        i = end;
    }
    return count;
}

Counts count(QStringView text)
{
    return {EditorDocument::countWords(text), characterCount(text)};
}

namespace {

// Whether the text splits at `at` for both counts: no word and no character runs across it.
bool settledAt(QStringView text, qsizetype at)
{
    if (at == 0 || at == text.size())
        return true;
    const char16_t before = text[at - 1].unicode();
    return before == u'\n' || ((before == u' ' || before == u'\t') && isSimple(text[at].unicode()));
}

} // namespace

std::optional<Span> settledSpan(QStringView text, qsizetype from, qsizetype to, qsizetype reach)
{
    // The start's two characters both lie before `from`, the end's both at `to` or after.
    qsizetype start = from - 1;
    while (start > 0 && !settledAt(text, start)) {
        if (from - start > reach)
            return std::nullopt;
        --start;
    }
    qsizetype end = to + 1;
    while (end < text.size() && !settledAt(text, end)) {
        if (end - to > reach)
            return std::nullopt;
        ++end;
    }
    return Span {std::max<qsizetype>(start, 0), std::min(end, text.size())};
}

qsizetype readingMinutes(qsizetype words)
{
    return std::max<qsizetype>(1, (words + 199) / 200);
}

QString wordsText(qsizetype words)
{
    return QString::number(words) + u" mots"_s;
}

QString charactersText(qsizetype characters)
{
    return QString::number(characters) + u" car."_s;
}

QString readingTimeText(qsizetype words)
{
    return u"~"_s + QString::number(readingMinutes(words)) + u" min de lecture"_s;
}

} // namespace DocumentStatistics
