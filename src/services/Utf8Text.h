#pragma once

#include <cstddef>

// Byte-level helpers over UTF-8 text, for scanning many documents without decoding them.
// A line ends at each of LF, VT, FF, CR, NEL (U+0085), U+2028 and U+2029; a CR LF pair is one
// line end, as the editor counts lines.
namespace Utf8Text {

// Strict validity, as a strict decoder sees it: no overlong forms, no encoded surrogates, nothing
// above U+10FFFF, no sequence cut short.
bool isValid(const char *begin, const char *end);
// Counts the line ends in [from, at) into `lineEnds` and returns the start of the line holding
// `at`: just past the last of those line ends, or `from`. `at` must lie on a character boundary.
const char *startOfLine(const char *from, const char *at, std::size_t &lineEnds);
// The first line end at or after `at`, or `end`.
const char *lineEnd(const char *at, const char *end);
// Length of the byte-order mark at `begin`, or 0.
std::size_t bomLength(const char *begin, const char *end);

} // namespace Utf8Text
