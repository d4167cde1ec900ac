#include "FileSearchResults.h"

#include "FileUrl.h"

#include <QStringView>

#include <algorithm>

QString FileSearchResults::id() const
{
    return FileUrl::path(fileURL);
}

QList<std::pair<int, int>> FileSearchResults::rangesOf(const SearchResult &hit) const
{
    // The line is kept trimmed of spaces and tabs, one byte and one unit each, so offsets in the
    // indent or past the text's end are the same in both counts. The ranges come in order: one
    // walk over the text converts them all.
    const QStringView text(hit.lineContent);
    QList<std::pair<int, int>> units;
    units.reserve(hit.rangeCount);
    qsizetype at = 0; // in the text
    int bytes = hit.indent; // before `at`, from the line's start
    const auto toUnits = [&](int offset) {
        if (offset <= hit.indent)
            return offset;
        while (at < text.size() && bytes < offset) {
            const char16_t c = text[at].unicode();
            if (QChar::isHighSurrogate(c) && at + 1 < text.size()) {
                bytes += 4;
                at += 2;
            } else {
                bytes += c < 0x80 ? 1 : c < 0x800 ? 2 : 3;
                ++at;
            }
        }
        return int(hit.indent + at) + std::max(0, offset - bytes);
    };
    for (const auto &[start, end] : matchRanges.mid(hit.firstRange, hit.rangeCount)) {
        const int first = toUnits(start);
        units.append({first, toUnits(end)});
    }
    return units;
}

size_t qHash(const FileSearchResults &r, size_t seed) noexcept
{
    QtPrivate::QHashCombine combine;
    seed = combine(seed, r.fileURL);
    seed = combine(seed, r.fileName);
    seed = combine(seed, r.relativePath);
    seed = combine(seed, r.matches.size());
    for (const SearchResult &hit : r.matches)
        seed = combine(seed, qHash(hit, 0));
    return seed;
}
