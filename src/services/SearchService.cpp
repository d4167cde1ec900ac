#include "SearchService.h"

#include "FileReader.h"
#include "NameCollator.h"
#include "TextFile.h"
#include "Utf8Matcher.h"
#include "Utf8Text.h"
#include "WorkerPool.h"
#include "model/FileUrl.h"

#include <QFile>
#include <QSemaphore>

#include <algorithm>
#include <cerrno>
#include <cstring>
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
};

QString trimSpacesAndTabs(QStringView line)
{
    qsizetype begin = 0;
    qsizetype end = line.size();
    while (begin < end && (line[begin] == u' ' || line[begin] == u'\t'))
        ++begin;
    while (end > begin && (line[end - 1] == u' ' || line[end - 1] == u'\t'))
        --end;
    return line.mid(begin, end - begin).toString();
}

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

// The lines of UTF-8 bytes holding a match, one hit per line.
std::vector<Hit> lineHitsInBytes(const Utf8Matcher &matcher, const char *begin, const char *end)
{
    std::vector<Hit> hits;
    const char *textBegin = begin + Utf8Text::bomLength(begin, end);
    const char *match = matcher.find(textBegin, end);
    if (!match || !Utf8Text::isValid(begin, end))
        return hits; // text that is not valid UTF-8 counts as empty
    std::size_t lineEndsBefore = 0;
    const char *counted = textBegin;
    while (match) {
        const char *start = Utf8Text::startOfLine(counted, match, lineEndsBefore);
        const char *stop = Utf8Text::lineEnd(match, end);
        counted = stop;
        // Spaces and tabs are single bytes, so trimming the bytes trims the text.
        const char *first = start;
        const char *last = stop;
        while (first < last && (*first == ' ' || *first == '\t'))
            ++first;
        while (last > first && (last[-1] == ' ' || last[-1] == '\t'))
            --last;
        hits.push_back({int(lineEndsBefore + 1), decodeLine(first, last)});
        match = stop < end ? matcher.find(stop, end) : nullptr;
    }
    return hits;
}

// The same, on decoded text: the reference the byte search is held to.
std::vector<Hit> lineHitsInText(const QString &query, const QByteArray &bytes)
{
    std::vector<Hit> hits;
    std::optional<QString> decoded = TextFile::decodeUtf8(bytes);
    if (!decoded)
        return hits;
    QStringView text(*decoded);
    if (text.startsWith(QChar(0xFEFF)))
        text = text.mid(1);
    if (!text.contains(query, Qt::CaseInsensitive))
        return hits;
    int lineNumber = 1;
    qsizetype start = 0;
    for (qsizetype i = 0; i <= text.size(); ++i) {
        if (i < text.size() && !SearchService::isLineEnd(text[i]))
            continue;
        const QStringView line = text.mid(start, i - start);
        if (line.contains(query, Qt::CaseInsensitive))
            hits.push_back({lineNumber, trimSpacesAndTabs(line)});
        ++lineNumber;
        if (i + 1 < text.size() && text[i] == u'\r' && text[i + 1] == u'\n')
            ++i; // one line end
        start = i + 1;
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
    FileSearch(const QString &query, const QUrl &rootURL, SearchService::Engine engine)
        : m_query(query),
          m_rootPrefix(FileUrl::path(rootURL) + u'/'),
          // A query holding a line end can match no single line: only names can match then.
          m_linesCanMatch(std::none_of(query.begin(), query.end(), SearchService::isLineEnd)),
          m_matcher(query),
          m_bytes(engine == SearchService::Engine::Bytes && m_matcher.isUsable())
    { }

    std::optional<FileSearchResults> operator()(const QString &path, FileReader &reader) const
    {
        const QString fileName = path.mid(path.lastIndexOf(u'/') + 1);
        const bool nameMatches = fileName.contains(m_query, Qt::CaseInsensitive);

        std::vector<Hit> hits;
        if (m_linesCanMatch) {
            if (const std::optional<std::string_view> text = reader.read(path)) {
                const char *begin = text->data();
                hits = m_bytes
                    ? lineHitsInBytes(m_matcher, begin, begin + text->size())
                    : lineHitsInText(m_query,
                                     QByteArray::fromRawData(begin, qsizetype(text->size())));
            }
        }
        if (hits.empty() && !nameMatches)
            return std::nullopt;
        if (hits.empty())
            hits.push_back({1, fileName}); // found by its name alone

        FileSearchResults results;
        results.fileURL = QUrl::fromLocalFile(path);
        results.fileName = fileName;
        results.relativePath = QString(path).remove(m_rootPrefix, Qt::CaseSensitive);
        results.matches.reserve(qsizetype(hits.size()));
        for (Hit &hit : hits)
            results.matches.append({SearchResult::newId(), results.fileURL, fileName,
                                    results.relativePath, hit.lineNumber,
                                    std::move(hit.lineContent), m_query});
        return results;
    }

private:
    const QString m_query;
    const QString m_rootPrefix;
    const bool m_linesCanMatch;
    const Utf8Matcher m_matcher;
    const bool m_bytes;
};

} // namespace

SearchService::SearchService(Engine engine) : m_engine(engine) { }

bool SearchService::isLineEnd(QChar c)
{
    const char16_t u = c.unicode();
    return (u >= 0x0A && u <= 0x0D) || u == 0x85 || u == 0x2028 || u == 0x2029;
}

QList<FileSearchResults> SearchService::search(const QString &rawQuery, const FileItem &root,
                                               const QUrl &rootURL,
                                               const std::atomic_bool *cancelled) const
{
    const QString query = rawQuery.trimmed();
    if (query.isEmpty())
        return {};

    const QStringList paths = m_fileSystemService.collectDocumentPaths(root);
    const FileSearch searchFile(query, rootURL, m_engine);

    // One worker per core takes the next files from a shared counter (no task per file), a few
    // at a time so that neighbours in one folder go to one reader.
    constexpr qsizetype run = 8;
    std::atomic<qsizetype> next {0};
    const auto work = [&](std::vector<FileOutcome> &found) {
        FileReader reader;
        for (qsizetype first = next.fetch_add(run); first < paths.size();
             first = next.fetch_add(run)) {
            for (qsizetype i = first; i < std::min(first + run, paths.size()); ++i) {
                if (cancelled && cancelled->load(std::memory_order_relaxed))
                    return;
                if (std::optional<FileSearchResults> results = searchFile(paths.at(i), reader))
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
