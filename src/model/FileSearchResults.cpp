#include "FileSearchResults.h"

#include "FileUrl.h"

QString FileSearchResults::id() const
{
    return FileUrl::path(fileURL);
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
