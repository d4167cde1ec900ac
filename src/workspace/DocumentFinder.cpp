#include "DocumentFinder.h"

#include "services/WorkerPool.h"

#include <QHash>
#include <QSemaphore>

#include <algorithm>
#include <atomic>

namespace {
Q_GLOBAL_STATIC(WorkerPool, rankingPool)
}

void DocumentFinder::setDocuments(const QStringList &paths, const QString &rootPath)
{
    m_rootPrefix = rootPath + u'/';
    m_documents.clear();
    m_documents.reserve(std::size_t(paths.size()));
    for (const QString &path : paths)
        m_documents.push_back({path, FuzzyMatcher::fold(relativePath(path))});
    // Kept in the order that breaks ties, shorter paths first: ranking then compares numbers.
    std::sort(m_documents.begin(), m_documents.end(), [](const Document &a, const Document &b) {
        return a.path.size() != b.path.size() ? a.path.size() < b.path.size() : a.path < b.path;
    });
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

    const QString folded = QString::fromStdU16String(matcher.letters());
    std::vector<qsizetype> candidates;
    if (m_hasLast && folded.startsWith(m_lastQuery)) {
        candidates = std::move(m_lastMatches);
    } else {
        candidates.resize(m_documents.size());
        for (std::size_t i = 0; i < m_documents.size(); ++i)
            candidates[i] = qsizetype(i);
    }

    struct Ranked
    {
        int score;
        qsizetype recency;
        qsizetype index;
    };
    // Scored in slices on every core; the slices are joined in their order, so the matches kept
    // for the next key stay in document order.
    const std::size_t slices
        = candidates.size() < 4096 ? 1 : std::size_t(rankingPool->maxThreadCount() + 1) * 2;
    std::vector<std::vector<Ranked>> parts(slices);
    std::atomic<std::size_t> next {0};
    const auto work = [&] {
        for (std::size_t slice = next++; slice < slices; slice = next++) {
            const std::size_t from = candidates.size() * slice / slices;
            const std::size_t to = candidates.size() * (slice + 1) / slices;
            std::vector<Ranked> &part = parts[slice];
            for (std::size_t c = from; c < to; ++c) {
                const qsizetype index = candidates[c];
                const Document &document = m_documents[std::size_t(index)];
                const int score = matcher.score(document.folded);
                if (score < 0)
                    continue;
                part.push_back({score,
                                recency.isEmpty() ? 0 : recency.value(document.path, recent.size()),
                                index});
            }
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

    std::vector<Ranked> ranked;
    std::vector<qsizetype> matches;
    for (const std::vector<Ranked> &part : parts) {
        for (const Ranked &r : part) {
            ranked.push_back(r);
            matches.push_back(r.index);
        }
    }
    m_lastQuery = folded;
    m_lastMatches = std::move(matches);
    m_hasLast = true;

    std::sort(ranked.begin(), ranked.end(), [](const Ranked &a, const Ranked &b) {
        if (a.score != b.score)
            return a.score > b.score;
        if (a.recency != b.recency)
            return a.recency < b.recency;
        return a.index < b.index;
    });
    found.reserve(ranked.size());
    for (const Ranked &r : ranked)
        found.push_back(r.index);
    return found;
}
