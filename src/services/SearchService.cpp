#include "SearchService.h"

#include "FileReader.h"
#include "NameCollator.h"
#include "TextFile.h"
#include "TextPattern.h"
#include "Utf8Text.h"
#include "WorkerPool.h"
#include "model/FileUrl.h"

#include <QFile>
#include <QSemaphore>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <memory>
#include <optional>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

Q_GLOBAL_STATIC(WorkerPool, searchPool)

struct Hit
{
    int lineNumber;
    QString lineContent;
    int firstRange; // in the file's ranges
    int rangeCount;
    int indent;
};

// The matches of a file's hits, one after the other.
using Ranges = std::vector<std::pair<int, int>>;

// A line's text. QString::fromUtf8 drops a byte-order mark at the start, but inside a document
// U+FEFF is a character of the line like any other.
QString decodeLine(const char *begin, const char *end)
{
    qsizetype marks = 0;
    while (Utf8Text::bomLength(begin, end)) {
        begin += 3;
        ++marks;
    }
    if (marks == 0)
        return QString::fromUtf8(begin, end - begin);
    return QString(marks, QChar(0xFEFF)) + QString::fromUtf8(begin, end - begin);
}

// The matches found in a decoded line, turned into UTF-8 byte offsets as the byte search gives.
void appendInBytes(QStringView line, const QList<std::pair<int, int>> &found, Ranges &ranges)
{
    qsizetype at = 0;
    int bytes = 0;
    const auto toBytes = [&](int offset) {
        for (; at < offset; ++at) {
            const char16_t c = line[at].unicode();
            // A surrogate pair is four bytes, two for each half.
            bytes += c < 0x80 ? 1 : c < 0x800 ? 2 : QChar::isSurrogate(c) ? 2 : 3;
        }
        return bytes;
    };
    for (const auto &[start, end] : found) {
        const int first = toBytes(start);
        ranges.emplace_back(first, toBytes(end));
    }
}

// The line with spaces and tabs trimmed at both ends, and how many went from its start.
std::pair<QString, int> trimmedLine(QStringView line)
{
    qsizetype begin = 0;
    qsizetype end = line.size();
    while (begin < end && (line[begin] == u' ' || line[begin] == u'\t'))
        ++begin;
    while (end > begin && (line[end - 1] == u' ' || line[end - 1] == u'\t'))
        --end;
    return {line.mid(begin, end - begin).toString(), int(begin)};
}

// The lines of UTF-8 bytes holding a match, one hit per line.
std::vector<Hit> lineHitsInBytes(const TextPattern &pattern, const char *begin, const char *end,
                                 Ranges &ranges)
{
    std::vector<Hit> hits;
    const char *textBegin = begin + Utf8Text::bomLength(begin, end);
    const char *matchEnd = nullptr;
    const char *match = pattern.findInBytes(textBegin, textBegin, end, &matchEnd);
    if (!match || !Utf8Text::isValid(begin, end))
        return hits; // text that is not valid UTF-8 counts as empty
    std::size_t lineEndsBefore = 0;
    const char *counted = textBegin;
    while (match) {
        const char *start = Utf8Text::startOfLine(counted, match, lineEndsBefore);
        const char *stop = Utf8Text::lineEnd(match, end);
        counted = stop;
        Hit hit {int(lineEndsBefore + 1), {}, int(ranges.size()), 0, 0};
        // Every match of the line, in bytes from its start. The search goes on from each match's
        // end: the next one is in this line or starts the next hit.
        do {
            ranges.emplace_back(int(match - start), int(matchEnd - start));
            match = matchEnd < end ? pattern.findInBytes(textBegin, matchEnd, end, &matchEnd)
                                   : nullptr;
        } while (match && match < stop);
        // Spaces and tabs are single bytes, so trimming the bytes trims the text.
        const char *first = start;
        const char *last = stop;
        while (first < last && (*first == ' ' || *first == '\t'))
            ++first;
        while (last > first && (last[-1] == ' ' || last[-1] == '\t'))
            --last;
        hit.rangeCount = int(ranges.size()) - hit.firstRange;
        hit.lineContent = decodeLine(first, last);
        hit.indent = int(first - start);
        hits.push_back(std::move(hit));
    }
    return hits;
}

// The same on decoded text, where an expression is matched; for a plain query, the reference the
// byte search is held to.
std::vector<Hit> lineHitsInText(const TextPattern &pattern, const QByteArray &bytes, Ranges &ranges)
{
    std::vector<Hit> hits;
    std::optional<QString> decoded = TextFile::decodeUtf8(bytes);
    if (!decoded)
        return hits;
    QStringView text(*decoded);
    if (text.startsWith(QChar(0xFEFF)))
        text = text.mid(1);
    int lineNumber = 1;
    qsizetype counted = 0;
    qsizetype from = 0;
    qsizetype start = 0;
    qsizetype end = 0;
    while (pattern.nextCandidateLine(text, from, start, end)) {
        for (qsizetype i = counted; i < start; ++i) {
            if (!SearchService::isLineEnd(text[i]))
                continue;
            if (text[i] == u'\r' && i + 1 < text.size() && text[i + 1] == u'\n')
                ++i; // one line end
            ++lineNumber;
        }
        counted = end;
        const QStringView line = text.mid(start, end - start);
        const QList<std::pair<int, int>> found = pattern.matchesIn(line);
        if (!found.isEmpty()) {
            auto [content, indent] = trimmedLine(line);
            hits.push_back(
                {lineNumber, std::move(content), int(ranges.size()), int(found.size()), indent});
            appendInBytes(line, found, ranges);
        }
    }
    return hits;
}

struct FileOutcome
{
    qsizetype index; // position in tree order
    FileSearchResults results;
};

// The search of one query in one file.
class FileSearch
{
public:
    FileSearch(const TextPattern &pattern, const QUrl &rootURL, SearchService::Engine engine)
        : m_pattern(pattern),
          m_rootPrefix(FileUrl::path(rootURL) + u'/'),
          // A query holding a line end can match no single line: only names can match then.
          m_linesCanMatch(pattern.options().regularExpression
                          || std::none_of(pattern.query().begin(), pattern.query().end(),
                                          SearchService::isLineEnd)),
          m_bytes(engine == SearchService::Engine::Bytes && pattern.searchesBytes())
    { }

    // `ranges` is the worker's buffer, kept from file to file.
    std::optional<FileSearchResults> operator()(const QString &path, FileReader &reader,
                                                Ranges &ranges) const
    {
        const QString fileName = path.mid(path.lastIndexOf(u'/') + 1);
        const bool nameMatches = m_pattern.matches(fileName);

        std::vector<Hit> hits;
        ranges.clear();
        FileIdentity identity;
        if (m_linesCanMatch) {
            if (const std::optional<std::string_view> text = reader.read(path)) {
                const char *begin = text->data();
                hits = m_bytes
                    ? lineHitsInBytes(m_pattern, begin, begin + text->size(), ranges)
                    : lineHitsInText(
                        m_pattern, QByteArray::fromRawData(begin, qsizetype(text->size())), ranges);
                identity = reader.identity();
            }
        }
        if (hits.empty() && !nameMatches)
            return std::nullopt;
        if (hits.empty())
            hits.push_back({1, fileName, 0, 0, 0}); // found by its name alone

        FileSearchResults results;
        results.fileURL = QUrl::fromLocalFile(path);
        results.fileName = fileName;
        results.relativePath = QString(path).remove(m_rootPrefix, Qt::CaseSensitive);
        results.identity = identity;
        results.matches.reserve(qsizetype(hits.size()));
        for (Hit &hit : hits)
            results.matches.append({SearchResult::newId(), results.fileURL, fileName,
                                    results.relativePath, hit.lineNumber,
                                    std::move(hit.lineContent), m_pattern.query(), hit.firstRange,
                                    hit.rangeCount, hit.indent});
        results.matchRanges = QList<std::pair<int, int>>(ranges.begin(), ranges.end());
        return results;
    }

private:
    const TextPattern &m_pattern;
    const QString m_rootPrefix;
    const bool m_linesCanMatch;
    const bool m_bytes;
};

} // namespace

SearchService::SearchService(Engine engine) : m_engine(engine) { }

TextPattern SearchService::pattern(const QString &query, SearchOptions options)
{
    // Spaces around a plain query are typing, not meaning; an expression is taken as written.
    return TextPattern(options.regularExpression ? query : query.trimmed(), options);
}

bool SearchService::isLineEnd(QChar c)
{
    const char16_t u = c.unicode();
    return (u >= 0x0A && u <= 0x0D) || u == 0x85 || u == 0x2028 || u == 0x2029;
}

QList<FileSearchResults> SearchService::search(const QString &rawQuery, const FileItem &root,
                                               const QUrl &rootURL,
                                               const std::atomic_bool *cancelled,
                                               SearchOptions options) const
{
    const TextPattern pattern = SearchService::pattern(rawQuery, options);
    if (pattern.query().isEmpty() || !pattern.isValid())
        return {};

    const QStringList paths = m_fileSystemService.collectDocumentPaths(root);
    const FileSearch searchFile(pattern, rootURL, m_engine);

    // One worker per core takes the next files from a shared counter (no task per file), a few
    // at a time so that neighbours in one folder go to one reader.
    constexpr qsizetype run = 8;
    std::atomic<qsizetype> next {0};
    const auto work = [&](std::vector<FileOutcome> &found) {
        FileReader reader;
        Ranges ranges;
        for (qsizetype first = next.fetch_add(run); first < paths.size();
             first = next.fetch_add(run)) {
            for (qsizetype i = first; i < std::min(first + run, paths.size()); ++i) {
                if (cancelled && cancelled->load(std::memory_order_relaxed))
                    return;
                if (std::optional<FileSearchResults> results
                    = searchFile(paths.at(i), reader, ranges))
                    found.push_back({i, std::move(*results)});
            }
        }
    };
    const int helpers = int(std::min<qsizetype>(searchPool->maxThreadCount(), paths.size() / 64));
    std::vector<std::vector<FileOutcome>> found(std::size_t(helpers) + 1);
    QSemaphore finished;
    for (int h = 1; h <= helpers; ++h) {
        searchPool->start([&work, &found, &finished, h] {
            work(found[std::size_t(h)]);
            finished.release();
        });
    }
    work(found[0]);
    finished.acquire(helpers);

    std::vector<FileOutcome> all;
    for (std::vector<FileOutcome> &part : found)
        std::move(part.begin(), part.end(), std::back_inserter(all));
    // Files are ordered by name; files of the same name keep their tree order.
    const NameCollator collator;
    std::vector<std::pair<QCollatorSortKey, std::size_t>> keys;
    keys.reserve(all.size());
    for (std::size_t i = 0; i < all.size(); ++i)
        keys.emplace_back(collator.sortKey(all[i].results.fileName), i);
    std::sort(keys.begin(), keys.end(), [&all](const auto &a, const auto &b) {
        const int order = a.first.compare(b.first);
        return order != 0 ? order < 0 : all[a.second].index < all[b.second].index;
    });
    QList<FileSearchResults> results;
    results.reserve(qsizetype(all.size()));
    for (const auto &key : keys)
        results.append(std::move(all[key.second].results));
    return results;
}
