#include "DocumentFinder.h"

#include "services/WorkerPool.h"

#include <QHash>
#include <QSemaphore>

#include <algorithm>
#include <atomic>
#include <cstdint>

namespace {
Q_GLOBAL_STATIC(WorkerPool, rankingPool)
}

void DocumentFinder::setDocuments(const QStringList &paths, const QString &rootPath)
{
    m_rootPrefix = rootPath + u'/';
    m_documents.clear();
    m_documents.reserve(std::size_t(paths.size()));
    for (const QString &path : paths)
        m_documents.push_back({path, 0, 0, 0});
    // Kept in the order that breaks ties, shorter paths first: ranking then compares numbers.
    std::sort(m_documents.begin(), m_documents.end(), [](const Document &a, const Document &b) {
        return a.path.size() != b.path.size() ? a.path.size() < b.path.size() : a.path < b.path;
    });
    m_texts.clear();
    m_starts.clear();
    for (Document &document : m_documents) {
        const FuzzyMatcher::Folded folded = FuzzyMatcher::fold(relativePath(document.path));
        document.at = m_texts.size();
        document.length = folded.text.size();
        document.nameStart = folded.nameStart;
        m_texts += folded.text;
        m_starts += folded.starts;
    }
    m_paths = QSet<QString>(paths.begin(), paths.end());
    m_hasLast = false;
}

QString DocumentFinder::relativePath(const QString &path) const
{
    return path.startsWith(m_rootPrefix) ? path.mid(m_rootPrefix.size()) : path;
}

QStringList DocumentFinder::find(const QString &query, const QStringList &recent)
{
    QStringList found;
    for (qsizetype index : rank(query, recent))
        found.append(path(index));
    return found;
}

std::vector<qsizetype> DocumentFinder::rank(const QString &query, const QStringList &recent)
{
    const FuzzyMatcher matcher(query);
    QHash<QString, qsizetype> recency;
    for (qsizetype i = 0; i < recent.size(); ++i)
        recency.insert(recent.at(i), i);

    std::vector<qsizetype> found;
    if (matcher.isEmpty()) {
        QHash<QString, qsizetype> indexOf;
        for (const QString &path : recent) {
            if (m_paths.contains(path))
                indexOf.insert(path, -1);
        }
        for (std::size_t i = 0; i < m_documents.size() && !indexOf.isEmpty(); ++i) {
            const auto at = indexOf.find(m_documents[i].path);
            if (at != indexOf.end())
                *at = qsizetype(i);
        }
        for (const QString &path : recent) {
            if (indexOf.value(path, -1) >= 0)
                found.push_back(indexOf.take(path));
        }
        m_hasLast = false;
        return found;
    }

    const QString letters = QString::fromStdU16String(matcher.letters());
    std::vector<qsizetype> candidates;
    if (m_hasLast && letters.startsWith(m_lastQuery)) {
        candidates = std::move(m_lastMatches);
    } else {
        candidates.resize(m_documents.size());
        for (std::size_t i = 0; i < m_documents.size(); ++i)
            candidates[i] = qsizetype(i);
    }

    // Each match as one number that sorts in the list's order: the score (higher first), then
    // how recently it was opened, then its place in the list (shorter paths first).
    // (A folder holds far fewer than 2^24 documents.)
    constexpr std::uint64_t indexMask = (std::uint64_t(1) << 24) - 1;
    const auto key = [](int score, qsizetype age, qsizetype index) {
        const std::uint64_t flipped
            = std::uint64_t(std::clamp((1 << 23) - score, 0, (1 << 24) - 1));
        return flipped << 40 | std::uint64_t(std::min<qsizetype>(age, 0xFFFF)) << 24
            | std::uint64_t(index);
    };
    // Scored and sorted in slices on every core, then merged. The slices' matches are joined in
    // their order, so the matches kept for the next key stay in document order.
    const std::size_t slices
        = candidates.size() < 4096 ? 1 : std::size_t(rankingPool->maxThreadCount() + 1) * 2;
    std::vector<std::vector<std::uint64_t>> parts(slices);
    std::vector<std::vector<qsizetype>> orders(slices);
    std::atomic<std::size_t> next {0};
    const auto work = [&] {
        for (std::size_t slice = next++; slice < slices; slice = next++) {
            const std::size_t from = candidates.size() * slice / slices;
            const std::size_t to = candidates.size() * (slice + 1) / slices;
            std::vector<std::uint64_t> &part = parts[slice];
            part.reserve(to - from);
            for (std::size_t c = from; c < to; ++c) {
                const qsizetype index = candidates[c];
                const Document &document = m_documents[std::size_t(index)];
                const int score = matcher.score(folded(document));
                if (score < 0)
                    continue;
                part.push_back(
                    key(score, recency.isEmpty() ? 0 : recency.value(document.path, recent.size()),
                        index));
            }
            std::vector<qsizetype> &order = orders[slice];
            order.reserve(part.size());
            for (const std::uint64_t k : part)
                order.push_back(qsizetype(k & indexMask));
            std::sort(part.begin(), part.end());
        }
    };
    const int helpers = slices > 1 ? rankingPool->maxThreadCount() : 0;
    QSemaphore finished;
    for (int h = 0; h < helpers; ++h) {
        rankingPool->start([&work, &finished] {
            work();
            finished.release();
        });
    }
    work();
    finished.acquire(helpers);

    std::vector<qsizetype> matches;
    for (const std::vector<qsizetype> &order : orders)
        matches.insert(matches.end(), order.begin(), order.end());
    m_lastQuery = letters;
    m_lastMatches = std::move(matches);
    m_hasLast = true;

    // Sorted slices merged two by two.
    while (parts.size() > 1) {
        std::vector<std::vector<std::uint64_t>> merged;
        for (std::size_t i = 0; i + 1 < parts.size(); i += 2) {
            std::vector<std::uint64_t> both(parts[i].size() + parts[i + 1].size());
            std::merge(parts[i].begin(), parts[i].end(), parts[i + 1].begin(), parts[i + 1].end(),
                       both.begin());
            merged.push_back(std::move(both));
        }
        if (parts.size() % 2 == 1)
            merged.push_back(std::move(parts.back()));
        parts = std::move(merged);
    }
    const std::vector<std::uint64_t> &ranked = parts.front();
    found.reserve(ranked.size());
    for (const std::uint64_t k : ranked)
        found.push_back(qsizetype(k & indexMask));
    return found;
}
