#include "FuzzyMatcher.h"

#include <algorithm>
#include <array>
#include <vector>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

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

// The first place of `c` in text[at, size), or `size`: eight units at a time, as most paths are
// scanned and rejected here.
std::size_t findUnit(const char16_t *text, std::size_t at, std::size_t size, char16_t c)
{
#if defined(__SSE2__)
    const __m128i wanted = _mm_set1_epi16(short(c));
    for (; at + 8 <= size; at += 8) {
        const __m128i units = _mm_loadu_si128(reinterpret_cast<const __m128i *>(text + at));
        const unsigned mask = unsigned(_mm_movemask_epi8(_mm_cmpeq_epi16(units, wanted)));
        if (mask != 0)
            return at + std::size_t(__builtin_ctz(mask)) / 2;
    }
#endif
    while (at < size && text[at] != c)
        ++at;
    return at;
}

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

int FuzzyMatcher::score(View path) const
{
    // Each alignment first checks that the letters are there at all.
    const int inName = bestAlignment(path, path.nameStart);
    if (inName > unreachable / 2)
        return nameTier + inName;
    const int anywhere = bestAlignment(path, 0);
    return anywhere > unreachable / 2 ? std::max(0, anywhere) : -1;
}

// The best alignment of the query's letters in path.text from `from` on: at each letter the best
// score of a match ending there, either running on from the previous letter or after a gap.
int FuzzyMatcher::bestAlignment(View path, qsizetype from) const
{
    const std::size_t m = m_query.size();
    if (m == 0)
        return 0;
    // Only the stretch from the first letter's first place to the last letter's last place can
    // hold a match, and only if the letters are there in order; the scores do not depend on where
    // the stretch starts.
    const std::size_t size = path.text.size();
    // earliest[i], latest[i]: the first and last places the i-th letter can take in a match
    // (from the stretch's start); each row of the table only looks between them.
    // On the stack for a query as one types it; a long pasted one takes the heap.
    std::array<std::size_t, 32> earliestShort;
    std::array<std::size_t, 32> latestShort;
    std::vector<std::size_t> earliestLong;
    std::vector<std::size_t> latestLong;
    if (m > earliestShort.size()) {
        earliestLong.resize(m);
        latestLong.resize(m);
    }
    std::size_t *earliest = m > earliestShort.size() ? earliestLong.data() : earliestShort.data();
    std::size_t *latest = m > latestShort.size() ? latestLong.data() : latestShort.data();
    std::size_t at = std::size_t(from);
    for (std::size_t i = 0; i < m; ++i) {
        at = findUnit(path.text.data(), at, size, m_query[i]);
        if (at == size)
            return unreachable;
        earliest[i] = at++;
    }
    at = size;
    for (std::size_t i = m; i-- > 0;) {
        while (path.text[at - 1] != m_query[i])
            --at;
        latest[i] = --at;
    }
    const std::size_t begin = earliest[0];
    const std::size_t last = latest[m - 1] + 1;
    for (std::size_t i = 0; i < m; ++i) {
        earliest[i] -= begin;
        latest[i] -= begin;
    }
    const std::size_t n = last - begin;
    const char16_t *text = path.text.data() + begin;
    const char *starts = path.starts.data() + begin;
    const auto bonusAt = [&](std::size_t j) {
        switch (starts[j]) {
        case 2:
            return begin + j == std::size_t(path.nameStart) ? nameStartBonus : folderStartBonus;
        case 1:
            return wordStartBonus;
        default:
            return 0;
        }
    };
    if (m == 1) {
        // One letter: its best place.
        int best = unreachable;
        for (std::size_t j = 0; j < n; ++j) {
            if (text[j] == m_query[0])
                best = std::max(best, letter + bonusAt(j));
        }
        return best;
    }
    // ending[j]: best score with the current letter matched at j; runFirst[j]: the bonus of the
    // run that match belongs to.
    // Kept per thread: scoring runs for thousands of paths per key.
    thread_local std::vector<int> rows;
    if (rows.size() < 4 * n)
        rows.resize(4 * n);
    int *ending = rows.data();
    int *previous = ending + n;
    int *runFirst = previous + n;
    int *previousRunFirst = runFirst + n;
    // Scores below `unreachable / 2` stand for no match: sums of them stay far below any real
    // score, so the loop needs no test for them.
    std::fill(previous, previous + n, unreachable);
    for (std::size_t j = 0; j <= latest[0]; ++j) {
        if (text[j] == m_query[0]) {
            const int bonus = bonusAt(j);
            previous[j] = letter + bonus;
            previousRunFirst[j] = bonus;
        }
    }
    for (std::size_t i = 1; i < m; ++i) {
        int afterGap = unreachable; // best previous-letter score ending before j-1, gaps paid
        std::fill(ending, ending + n, unreachable);
        const char16_t wanted = m_query[i];
        std::size_t j = earliest[i - 1] + 1;
        if (j < 2 && j <= latest[i]) {
            // j == 1: nothing before the previous letter's place to open a gap from.
            if (text[j] == wanted) {
                const int bonus = bonusAt(j);
                const int carried = std::max(bonus, previousRunFirst[0]);
                ending[j] = previous[0] + letter + runBonus + carried;
                runFirst[j] = carried;
            }
            ++j;
        }
        for (; j <= latest[i]; ++j) {
            afterGap = std::max(afterGap - gapExtend, previous[j - 2] - gapOpen);
            if (text[j] != wanted)
                continue;
            const int bonus = bonusAt(j);
            const int carried = std::max(bonus, previousRunFirst[j - 1]);
            const int run = previous[j - 1] + letter + runBonus + carried;
            const int gap = afterGap + letter + bonus;
            ending[j] = std::max(run, gap);
            runFirst[j] = gap > run ? bonus : carried;
        }
        std::swap(ending, previous);
        std::swap(runFirst, previousRunFirst);
    }
    return *std::max_element(previous, previous + n);
}
