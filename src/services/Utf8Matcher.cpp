#include "Utf8Matcher.h"

#include <QChar>
#include <QHash>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace {

// For each folded character, the other characters that fold to it. Made once from Qt's own
// folding table, so the byte search agrees with QString's case-insensitive search.
const QHash<char32_t, std::vector<char32_t>> &foldedFrom()
{
    static const QHash<char32_t, std::vector<char32_t>> table = [] {
        QHash<char32_t, std::vector<char32_t>> map;
        for (char32_t c = 0; c <= 0x10FFFF; ++c) {
            if (QChar::isSurrogate(c))
                continue;
            const char32_t folded = QChar::toCaseFolded(c);
            if (folded != c)
                map[folded].push_back(c);
        }
        return map;
    }();
    return table;
}

int encodeUtf8(char32_t c, unsigned char *out)
{
    if (c < 0x80) {
        out[0] = static_cast<unsigned char>(c);
        return 1;
    }
    if (c < 0x800) {
        out[0] = static_cast<unsigned char>(0xC0 | (c >> 6));
        out[1] = static_cast<unsigned char>(0x80 | (c & 0x3F));
        return 2;
    }
    if (c < 0x10000) {
        out[0] = static_cast<unsigned char>(0xE0 | (c >> 12));
        out[1] = static_cast<unsigned char>(0x80 | ((c >> 6) & 0x3F));
        out[2] = static_cast<unsigned char>(0x80 | (c & 0x3F));
        return 3;
    }
    out[0] = static_cast<unsigned char>(0xF0 | (c >> 18));
    out[1] = static_cast<unsigned char>(0x80 | ((c >> 12) & 0x3F));
    out[2] = static_cast<unsigned char>(0x80 | ((c >> 6) & 0x3F));
    out[3] = static_cast<unsigned char>(0x80 | (c & 0x3F));
    return 4;
}

} // namespace

bool Utf8Matcher::ByteSet::add(unsigned char b)
{
    const bool letter = (b | 0x20) >= 'a' && (b | 0x20) <= 'z';
    for (std::uint8_t i = 0; i < count; ++i) {
        if ((b | masks[i]) == values[i])
            return true;
        // The other case of a letter already in the set: one test covers both.
        if (letter && masks[i] == 0 && (values[i] ^ 0x20) == b) {
            masks[i] = 0x20;
            values[i] = b | 0x20;
            return true;
        }
    }
    if (count == values.size())
        return false;
    masks[count] = 0;
    values[count] = b;
    ++count;
    any = false;
    return true;
}

std::vector<char32_t> Utf8Matcher::caseVariants(char32_t c)
{
    const char32_t folded = QChar::toCaseFolded(c);
    std::vector<char32_t> variants {folded};
    const auto others = foldedFrom().constFind(folded);
    if (others != foldedFrom().cend())
        variants.insert(variants.end(), others->begin(), others->end());
    return variants;
}

Utf8Matcher::Utf8Matcher(QStringView query, bool caseSensitive)
{
    for (const char32_t c : query.toUcs4()) {
        Unit unit;
        for (const char32_t variant : caseSensitive ? std::vector<char32_t> {c} : caseVariants(c)) {
            if (unit.count == unit.spellings.size()) {
                m_usable = false;
                return;
            }
            Spelling &spelling = unit.spellings[unit.count++];
            spelling.length = std::uint8_t(encodeUtf8(variant, spelling.bytes.data()));
        }
        m_units.push_back(unit);
    }
    if (m_units.empty())
        return;

    // Filter bytes: every spelling's first byte; then its second byte, or, for one-byte
    // spellings, the first bytes of the next character. A set too large to test quickly stays
    // unconstrained.
    bool firstOk = true;
    for (std::uint8_t i = 0; i < m_units[0].count; ++i) {
        const Spelling &spelling = m_units[0].spellings[i];
        m_firstTable[spelling.bytes[0]] = true;
        firstOk = m_first.add(spelling.bytes[0]) && firstOk;
    }
    if (!firstOk)
        m_first = ByteSet();

    bool secondOk = true;
    for (std::uint8_t i = 0; i < m_units[0].count && secondOk; ++i) {
        const Spelling &spelling = m_units[0].spellings[i];
        if (spelling.length >= 2) {
            secondOk = m_second.add(spelling.bytes[1]);
        } else if (m_units.size() >= 2) {
            for (std::uint8_t j = 0; j < m_units[1].count && secondOk; ++j)
                secondOk = m_second.add(m_units[1].spellings[j].bytes[0]);
        } else {
            secondOk = false;
        }
    }
    if (!secondOk)
        m_second = ByteSet();
}

// Inlined into the search loop, which calls it at every candidate position.
[[gnu::always_inline]] inline std::ptrdiff_t
Utf8Matcher::matchLength(const unsigned char *p, const unsigned char *end) const
{
    const unsigned char *const start = p;
    for (const Unit &unit : m_units) {
        bool matched = false;
        for (std::uint8_t i = 0; i < unit.count; ++i) {
            const Spelling &s = unit.spellings[i];
            if (end - p >= s.length && p[0] == s.bytes[0]
                && (s.length == 1
                    || std::equal(s.bytes.begin() + 1, s.bytes.begin() + s.length, p + 1))) {
                p += s.length;
                matched = true;
                break;
            }
        }
        if (!matched)
            return -1;
    }
    return p - start;
}

[[gnu::always_inline]] inline bool Utf8Matcher::matchesAt(const unsigned char *p,
                                                          const unsigned char *end) const
{
    return matchLength(p, end) >= 0;
}

const char *Utf8Matcher::matchEnd(const char *at, const char *end) const
{
    const auto p = reinterpret_cast<const unsigned char *>(at);
    return at + matchLength(p, reinterpret_cast<const unsigned char *>(end));
}

const char *Utf8Matcher::findScalar(const unsigned char *p, const unsigned char *end) const
{
    for (; p < end; ++p) {
        if (m_firstTable[*p] && matchesAt(p, end))
            return reinterpret_cast<const char *>(p);
    }
    return nullptr;
}

const char *Utf8Matcher::find(const char *from, const char *end) const
{
    auto p = reinterpret_cast<const unsigned char *>(from);
    const auto e = reinterpret_cast<const unsigned char *>(end);
    if (m_units.empty())
        return from;
#if defined(__SSE2__)
    if (!m_first.any) {
        struct Tests
        {
            int count = 0;
            __m128i masks[4];
            __m128i values[4];
            explicit Tests(const ByteSet &set)
            {
                for (; count < set.count; ++count) {
                    masks[count] = _mm_set1_epi8(char(set.masks[count]));
                    values[count] = _mm_set1_epi8(char(set.values[count]));
                }
            }
            __m128i operator()(__m128i v) const
            {
                __m128i hits = _mm_cmpeq_epi8(_mm_or_si128(v, masks[0]), values[0]);
                for (int i = 1; i < count; ++i)
                    hits = _mm_or_si128(hits, _mm_cmpeq_epi8(_mm_or_si128(v, masks[i]), values[i]));
                return hits;
            }
        };
        const Tests first(m_first);
        const Tests second(m_second);
        const bool useSecond = !m_second.any;
        // 16 candidate positions at a time: the first byte must fit, and the second one too.
        while (e - p >= 17) {
            __m128i hits = first(_mm_loadu_si128(reinterpret_cast<const __m128i *>(p)));
            if (useSecond)
                hits = _mm_and_si128(
                    hits, second(_mm_loadu_si128(reinterpret_cast<const __m128i *>(p + 1))));
            unsigned mask = unsigned(_mm_movemask_epi8(hits));
            while (mask) {
                const int i = __builtin_ctz(mask);
                mask &= mask - 1;
                if (matchesAt(p + i, e))
                    return reinterpret_cast<const char *>(p + i);
            }
            p += 16;
        }
    }
#endif
    return findScalar(p, e);
}
