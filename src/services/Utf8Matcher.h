#pragma once

#include <QString>

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

// Finds a query in UTF-8 bytes, ignoring case exactly as QString::contains(query,
// Qt::CaseInsensitive) does: two characters match when their simple case foldings are equal.
// Each query character becomes the UTF-8 spellings of every character that folds like it ("k"
// matches k, K and the Kelvin sign; "é" matches é and É), so documents are searched without being
// decoded. A case-sensitive matcher takes each character as it is written.
class Utf8Matcher
{
public:
    explicit Utf8Matcher(QStringView query, bool caseSensitive = false);

    // False when some character of the query has too many case variants for this matcher;
    // callers then search decoded text instead.
    bool isUsable() const { return m_usable; }
    // The first match starting in [from, end), or nullptr.
    const char *find(const char *from, const char *end) const;
    // The end of the match that find() returned at `at` (spellings differ in length: "k" is one
    // byte, the Kelvin sign three).
    const char *matchEnd(const char *at, const char *end) const;

    // Every character that folds to the same character as `c` (`c` included).
    static std::vector<char32_t> caseVariants(char32_t c);

private:
    struct Spelling
    {
        std::uint8_t length = 0;
        std::array<unsigned char, 4> bytes {};
    };
    struct Unit
    {
        std::uint8_t count = 0;
        std::array<Spelling, 6> spellings {};
    };
    // The bytes allowed at one position, as up to four tests (b | mask) == value: an ASCII
    // letter in either case is one test with mask 0x20.
    struct ByteSet
    {
        bool any = true; // no constraint
        std::uint8_t count = 0;
        std::array<unsigned char, 4> masks {};
        std::array<unsigned char, 4> values {};
        bool add(unsigned char b);
    };

    bool matchesAt(const unsigned char *p, const unsigned char *end) const;
    // Bytes matched at `p`, or -1.
    std::ptrdiff_t matchLength(const unsigned char *p, const unsigned char *end) const;
    const char *findScalar(const unsigned char *p, const unsigned char *end) const;

    std::vector<Unit> m_units;
    // The bytes that may stand first and second in a match: a fast filter before matchesAt().
    ByteSet m_first;
    ByteSet m_second;
    std::array<bool, 256> m_firstTable {};
    bool m_usable = true;
};
