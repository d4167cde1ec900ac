#include "FuzzyMatcher.h"

#include <algorithm>
#include <vector>

namespace {

// The letters a base letter stands for when a ligature or sharp s is spelled out.
const char16_t *spelledOut(char16_t c)
{
    switch (c) {
    case u'œ':
    case u'Œ':
        return u"oe";
    case u'æ':
    case u'Æ':
        return u"ae";
    case u'ß':
    case u'ẞ':
        return u"ss";
    case u'ø':
    case u'Ø':
        return u"o";
    case u'đ':
    case u'Đ':
        return u"d";
    case u'ł':
    case u'Ł':
        return u"l";
    default:
        return nullptr;
    }
}

// The base letter of an accented one (é → e), by its canonical decomposition.
char16_t baseLetter(QChar c)
{
    if (c.unicode() < 0xC0 || c.decompositionTag() != QChar::Canonical)
        return c.unicode();
    const QString parts = c.decomposition();
    return parts.isEmpty() ? c.unicode() : baseLetter(parts.front());
}

bool isWordBreak(char16_t c)
{
    return c == u' ' || c == u'-' || c == u'_' || c == u'.' || c == u'(' || c == u'[';
}

// Scores of one aligned letter. A run keeps its first letter's start bonus, so "inst" in
// "install" outranks "i…n…s…t" scattered over words.
constexpr int letter = 16;
constexpr int nameStartBonus = 12;
constexpr int folderStartBonus = 8;
constexpr int wordStartBonus = 7;
constexpr int runBonus = 6;
constexpr int gapOpen = 3;
constexpr int gapExtend = 1;
constexpr int unreachable = -(1 << 28);

} // namespace

FuzzyMatcher::Folded FuzzyMatcher::fold(QStringView path)
{
    Folded folded;
    folded.text.reserve(std::size_t(path.size()));
    folded.starts.reserve(std::size_t(path.size()));
    const qsizetype slash = path.lastIndexOf(u'/');
    char16_t previous = u'/';
    bool previousLower = false;
    for (qsizetype i = 0; i < path.size(); ++i) {
        const QChar c = path[i];
        if (i == slash + 1)
            folded.nameStart = qsizetype(folded.text.size());
        char start = 0;
        if (previous == u'/')
            start = 2;
        else if (isWordBreak(previous) || (c.isUpper() && previousLower))
            start = 1;
        previousLower = c.isLower();
        previous = c.unicode();
        if (const char16_t *letters = spelledOut(c.unicode())) {
            for (const char16_t *l = letters; *l; ++l, start = 0) {
                folded.text.push_back(*l);
                folded.starts.push_back(start);
            }
            continue;
        }
        folded.text.push_back(QChar::toLower(baseLetter(c)));
        folded.starts.push_back(start);
    }
    return folded;
}

FuzzyMatcher::FuzzyMatcher(QStringView query)
{
    // Spaces separate words one types, not letters a path must hold.
    for (char16_t c : fold(query.trimmed()).text) {
        if (c != u' ')
            m_query.push_back(c);
    }
}

bool FuzzyMatcher::accepts(const Folded &path) const
{
    std::size_t at = 0;
    const std::size_t size = path.text.size();
    for (char16_t wanted : m_query) {
        while (at < size && path.text[at] != wanted)
            ++at;
        if (at == size)
            return false;
        ++at;
    }
    return true;
}

int FuzzyMatcher::score(const Folded &path) const
{
    if (!accepts(path))
        return -1;
    const int inName = bestAlignment(path, path.nameStart);
    if (inName > unreachable)
        return nameTier + inName;
    return std::max(0, bestAlignment(path, 0));
}

// The best alignment of the query's letters in path.text from `from` on: at each letter the best
// score of a match ending there, either running on from the previous letter or after a gap.
int FuzzyMatcher::bestAlignment(const Folded &path, qsizetype from) const
{
    const std::size_t n = path.text.size() - std::size_t(from);
    const std::size_t m = m_query.size();
    if (m == 0)
        return 0;
    if (n < m)
        return unreachable;
    const char16_t *text = path.text.data() + from;
    const char *starts = path.starts.data() + from;
    const auto bonusAt = [&](std::size_t j) {
        switch (starts[j]) {
        case 2:
            return std::size_t(from) + j == std::size_t(path.nameStart) ? nameStartBonus
                                                                        : folderStartBonus;
        case 1:
            return wordStartBonus;
        default:
            return 0;
        }
    };
    // ending[j]: best score with the current letter matched at j; runStart[j]: the bonus of the
    // run that match belongs to.
    // Kept per thread: scoring runs for thousands of paths per key.
    thread_local std::vector<int> rows;
    if (rows.size() < 4 * n)
        rows.resize(4 * n);
    int *ending = rows.data();
    int *previous = ending + n;
    int *runFirst = previous + n;
    int *previousRunFirst = runFirst + n;
    std::fill(previous, previous + n, unreachable);
    for (std::size_t i = 0; i < m; ++i) {
        int afterGap = unreachable; // best previous-letter score ending before j-1, gaps paid
        std::fill(ending, ending + n, unreachable);
        for (std::size_t j = i; j < n; ++j) {
            if (i > 0 && j >= 2) {
                const int opened
                    = previous[j - 2] == unreachable ? unreachable : previous[j - 2] - gapOpen;
                afterGap = std::max(afterGap == unreachable ? unreachable : afterGap - gapExtend,
                                    opened);
            }
            if (text[j] != m_query[i])
                continue;
            const int bonus = bonusAt(j);
            if (i == 0) {
                ending[j] = letter + bonus;
                runFirst[j] = bonus;
                continue;
            }
            int best = unreachable;
            int first = bonus;
            if (previous[j - 1] != unreachable) {
                const int carried = std::max(bonus, previousRunFirst[j - 1]);
                best = previous[j - 1] + letter + runBonus + carried;
                first = carried;
            }
            if (afterGap != unreachable && afterGap + letter + bonus > best) {
                best = afterGap + letter + bonus;
                first = bonus;
            }
            ending[j] = best;
            runFirst[j] = first;
        }
        std::swap(ending, previous);
        std::swap(runFirst, previousRunFirst);
    }
    return *std::max_element(previous, previous + n);
}
