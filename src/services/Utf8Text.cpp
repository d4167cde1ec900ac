#include "Utf8Text.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace Utf8Text {

namespace {

inline bool isContinuation(unsigned char b)
{
    return (b & 0xC0) == 0x80;
}

inline bool isAsciiLineEnd(unsigned char b)
{
    return b >= 0x0A && b <= 0x0D;
}

// Length of the line end starting at `p`, or 0.
inline std::size_t lineEndLength(const unsigned char *p, const unsigned char *end)
{
    if (isAsciiLineEnd(*p))
        return 1;
    if (*p == 0xC2 && end - p >= 2 && p[1] == 0x85)
        return 2;
    if (*p == 0xE2 && end - p >= 3 && p[1] == 0x80 && (p[2] == 0xA8 || p[2] == 0xA9))
        return 3;
    return 0;
}

} // namespace

bool isValid(const char *begin, const char *end)
{
    auto p = reinterpret_cast<const unsigned char *>(begin);
    const auto e = reinterpret_cast<const unsigned char *>(end);
    while (p < e) {
#if defined(__SSE2__)
        // Runs of ASCII go 16 bytes at a time.
        while (e - p >= 16) {
            const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i *>(p));
            const int high = _mm_movemask_epi8(v);
            if (high != 0) {
                p += __builtin_ctz(unsigned(high)); // straight to the first non-ASCII byte
                break;
            }
            p += 16;
        }
        if (p >= e)
            break;
#endif
        const unsigned char b = *p;
        if (b < 0x80) {
            ++p;
            continue;
        }
        std::ptrdiff_t length;
        unsigned char low = 0x80, high = 0xBF; // allowed range of the second byte
        if (b >= 0xC2 && b <= 0xDF) {
            length = 2;
        } else if (b >= 0xE0 && b <= 0xEF) {
            length = 3;
            if (b == 0xE0)
                low = 0xA0; // overlong
            else if (b == 0xED)
                high = 0x9F; // surrogates
        } else if (b >= 0xF0 && b <= 0xF4) {
            length = 4;
            if (b == 0xF0)
                low = 0x90; // overlong
            else if (b == 0xF4)
                high = 0x8F; // above U+10FFFF
        } else {
            return false;
        }
        if (e - p < length || p[1] < low || p[1] > high)
            return false;
        for (std::ptrdiff_t i = 2; i < length; ++i) {
            if (!isContinuation(p[i]))
                return false;
        }
        p += length;
    }
    return true;
}

#if defined(__SSE2__)
namespace {

// Lanes holding LF, VT, FF or CR (b - 0x0A <= 3, unsigned), as 0xFF.
inline __m128i asciiLineEnds(__m128i v)
{
    const __m128i shifted = _mm_sub_epi8(v, _mm_set1_epi8(0x0A));
    return _mm_cmpeq_epi8(_mm_min_epu8(shifted, _mm_set1_epi8(3)), shifted);
}

// Lanes holding a lead byte of NEL, U+2028 or U+2029.
inline __m128i wideLineEndLeads(__m128i v)
{
    return _mm_or_si128(_mm_cmpeq_epi8(v, _mm_set1_epi8(char(0xC2))),
                        _mm_cmpeq_epi8(v, _mm_set1_epi8(char(0xE2))));
}

} // namespace
#endif

namespace {

// The first line end in [p, e), or e.
const unsigned char *nextLineEnd(const unsigned char *p, const unsigned char *e)
{
#if defined(__SSE2__)
    while (e - p >= 16) {
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i *>(p));
        unsigned candidates
            = unsigned(_mm_movemask_epi8(_mm_or_si128(asciiLineEnds(v), wideLineEndLeads(v))));
        while (candidates) {
            const int i = __builtin_ctz(candidates);
            candidates &= candidates - 1;
            if (lineEndLength(p + i, e))
                return p + i;
        }
        p += 16;
    }
#endif
    while (p < e && !lineEndLength(p, e))
        ++p;
    return p;
}

} // namespace

const char *startOfLine(const char *from, const char *at, std::size_t &lineEnds)
{
    auto p = reinterpret_cast<const unsigned char *>(from);
    const auto e = reinterpret_cast<const unsigned char *>(at);
    // `at` lies on a character boundary, so no line end runs across it.
    for (const unsigned char *end = nextLineEnd(p, e); end < e; end = nextLineEnd(p, e)) {
        ++lineEnds;
        p = end + lineEndLength(end, e);
        if (*end == '\r' && p < e && *p == '\n')
            ++p; // a CR LF pair ends one line, as in the editor
    }
    return reinterpret_cast<const char *>(p);
}

const char *lineEnd(const char *at, const char *end)
{
    return reinterpret_cast<const char *>(nextLineEnd(
        reinterpret_cast<const unsigned char *>(at), reinterpret_cast<const unsigned char *>(end)));
}

std::size_t bomLength(const char *begin, const char *end)
{
    return end - begin >= 3 && std::memcmp(begin, "\xEF\xBB\xBF", 3) == 0 ? 3 : 0;
}

} // namespace Utf8Text
