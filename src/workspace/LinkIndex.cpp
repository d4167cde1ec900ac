#include "LinkIndex.h"

#include "model/FileKind.h"
#include "services/FileReader.h"
#include "services/FileSystemService.h"
#include "services/LinkResolver.h"

#include <QFile>
#include <QThread>
#include <QThreadPool>
#include <QtConcurrent/QtConcurrentMap>

#include <algorithm>

namespace {

// Every core: the thread that hands the work over only waits for it.
class IndexPool : public QThreadPool
{
public:
    IndexPool() { setMaxThreadCount(std::max(2, QThread::idealThreadCount())); }
};
Q_GLOBAL_STATIC(IndexPool, indexPool)

QList<LinkIndex::Link> readLinks(const QString &path, FileReader &reader)
{
    const std::optional<std::string_view> read = reader.read(path);
    if (!read)
        return {};
    const QByteArrayView bytes(read->data(), qsizetype(read->size()));
    QList<LinkIndex::Link> links;
    qint64 lineStart = 0;
    int lineNumber = 0;
    MarkdownLinks::scanUtf8(
        bytes, [&](int line, QStringView text, const QList<MarkdownLinks::Span> &spans) {
            // Lines are found in order: the start of this one follows from the last one found.
            for (; lineNumber < line; ++lineNumber)
                lineStart = bytes.indexOf('\n', lineStart) + 1;
            for (const MarkdownLinks::Span &span : spans) {
                const QStringView target = text.mid(span.start, span.length);
                if (target.startsWith(u'#'))
                    continue;
                QString written = target.toString();
                // An address has a scheme: most targets have no ':' and need no closer look.
                if (target.contains(u':') && LinkResolver::isWebAddress(written))
                    continue;
                links.append({std::move(written), lineStart, span.form, span.picture, line});
            }
        });
    return links;
}

bool leadsBelow(const QString &target, const QString &path)
{
    return target.size() > path.size() && target.startsWith(path) && target[path.size()] == u'/';
}

} // namespace

LinkIndex::LinkIndex(QObject *parent)
    : QObject(parent), m_snapshot(std::make_shared<const Snapshot>())
{ }

void LinkIndex::update(const std::optional<FileItem> &root, const QSet<QString> &changed)
{
    const bool otherFolder = !root || !m_root || root->id() != m_root->id();
    if (otherFolder) {
        m_readAll = true;
        m_run.supersede();
        m_reading.clear();
    }
    m_root = root;
    m_rootChanged = true;
    m_pending.unite(changed);
    if (!m_root) {
        m_run.supersede();
        m_snapshot = std::make_shared<const Snapshot>();
        m_pending.clear();
        m_reading.clear();
        m_rootChanged = false;
        Q_EMIT this->changed();
        return;
    }
    if (!m_run.isRunning())
        start();
}

void LinkIndex::rereadAll()
{
    m_readAll = true;
    if (m_root && !m_run.isRunning())
        start();
}

void LinkIndex::waitUntilCurrent()
{
    if (!m_root || isCurrent())
        return;
    // The run under way is replaced: what it was to read is read here.
    m_run.supersede();
    m_pending.unite(std::exchange(m_reading, {}));
    const std::atomic_bool replaced = false;
    m_snapshot
        = build(*m_root, *m_snapshot, std::exchange(m_pending, {}),
                std::exchange(m_readAll, false) || std::exchange(m_readingAll, false), replaced);
    m_rootChanged = false;
    Q_EMIT changed();
}

void LinkIndex::documentSaved(const QString &path)
{
    if (!m_root || !FileKind::isMarkdown(path.section(u'/', -1)))
        return;
    m_pending.insert(path);
    if (!m_run.isRunning())
        start();
}

// One build at a time; what changes meanwhile is read by the next one.
void LinkIndex::start()
{
    if (!m_root || (m_pending.isEmpty() && !m_rootChanged && !m_readAll))
        return;
    m_reading = std::exchange(m_pending, {});
    m_readingAll = std::exchange(m_readAll, false);
    m_run.start(
        [root = *m_root, previous = m_snapshot, reread = m_reading,
         readAll = m_readingAll](const std::atomic_bool &replaced) {
            return build(root, *previous, reread, readAll, replaced);
        },
        [this](const std::shared_ptr<const Snapshot> &snapshot) {
            m_reading.clear();
            m_readingAll = false;
            m_snapshot = snapshot;
            Q_EMIT changed();
            start();
        });
    m_rootChanged = false;
}

std::shared_ptr<const LinkIndex::Snapshot>
LinkIndex::build(const FileItem &root, const Snapshot &previous, const QSet<QString> &reread,
                 bool readAll, const std::atomic_bool &replaced)
{
    auto snapshot = std::make_shared<Snapshot>();
    const QStringList documents = FileSystemService::collectMarkdownPaths(root);
    // Each chunk of documents is read (when it must be) and its links resolved on one thread;
    // documents of a chunk mostly share a folder, and a link written alike there leads alike.
    constexpr qsizetype chunk = 64;
    struct Chunk
    {
        qsizetype first;
        qsizetype last;
        QList<QList<Link>> links;
        QList<std::pair<QString, Incoming>> incoming;
    };
    QList<Chunk> chunks;
    for (qsizetype i = 0; i < documents.size(); i += chunk)
        chunks.append({i, std::min(documents.size(), i + chunk), {}, {}});
    const LinkResolver::NameIndex names(root);
    QtConcurrent::blockingMap(indexPool(), chunks, [&](Chunk &part) {
        if (replaced)
            return;
        // Where each target leads from the folder of the documents at hand.
        QHash<QString, std::pair<int, std::optional<QString>>> resolved;
        QString resolvedFolder;
        FileReader reader;
        part.links.reserve(part.last - part.first);
        for (qsizetype i = part.first; i < part.last; ++i) {
            const QString &path = documents[i];
            const auto known = previous.written.constFind(path);
            part.links.append(readAll || known == previous.written.cend() || reread.contains(path)
                                  ? readLinks(path, reader)
                                  : *known);
            const QStringView folder = QStringView(path).left(path.lastIndexOf(u'/'));
            if (folder != resolvedFolder) {
                resolved.clear();
                resolvedFolder = folder.toString();
            }
            const QList<Link> &links = part.links.last();
            for (qsizetype l = 0; l < links.size(); ++l) {
                const Link &link = links[l];
                const int kind = int(link.form) * 2 + link.picture;
                auto found = resolved.find(link.target);
                if (found == resolved.end() || found->first != kind)
                    found = resolved.insert(
                        link.target,
                        {kind,
                         LinkResolver::resolveSpan(link.target, link.form, link.picture, path, root,
                                                   &names)});
                if (found->second)
                    part.incoming.append({*found->second, {path, l}});
            }
        }
    });
    if (replaced)
        return snapshot;
    // Targets written alike share one string: a folder's documents often link to the same few.
    QSet<QString> targets;
    snapshot->written.reserve(documents.size());
    for (Chunk &part : chunks) {
        for (qsizetype i = part.first; i < part.last; ++i) {
            QList<Link> &links = part.links[i - part.first];
            for (Link &link : links)
                link.target = *targets.insert(link.target);
            snapshot->written.insert(documents[i], std::move(links));
        }
        for (auto &[target, incoming] : part.incoming)
            snapshot->incoming[target].append(std::move(incoming));
    }
    return snapshot;
}

QList<std::pair<QString, LinkIndex::Link>> LinkIndex::linksTo(const QString &path) const
{
    QList<std::pair<QString, Link>> links;
    const auto add = [&](const QList<Incoming> &incoming) {
        for (const Incoming &link : incoming)
            links.append({link.from, m_snapshot->written.value(link.from).at(link.index)});
    };
    add(m_snapshot->incoming.value(path));
    if (m_root && m_root->descendant(path) && m_root->descendant(path)->isDirectory()) {
        for (auto it = m_snapshot->incoming.cbegin(); it != m_snapshot->incoming.cend(); ++it) {
            if (leadsBelow(it.key(), path))
                add(*it);
        }
    }
    std::stable_sort(links.begin(), links.end(), [](const auto &a, const auto &b) {
        return a.first != b.first ? a.first < b.first : a.second.line < b.second.line;
    });
    return links;
}

QString LinkIndex::lineText(const QString &path, const Link &link)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || !file.seek(link.lineStart))
        return {};
    return QString::fromUtf8(file.readLine(4096)).trimmed();
}

QStringList LinkIndex::documentsLinkingTo(const QString &path) const
{
    QStringList documents;
    for (const auto &[from, link] : linksTo(path)) {
        if (documents.isEmpty() || documents.last() != from)
            documents.append(from);
    }
    return documents;
}
