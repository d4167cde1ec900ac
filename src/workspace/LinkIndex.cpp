#include "LinkIndex.h"

#include "model/FileKind.h"
#include "services/LinkResolver.h"
#include "services/WorkerPool.h"

#include <QFile>
#include <QtConcurrent/QtConcurrentMap>

#include <algorithm>

namespace {

Q_GLOBAL_STATIC(WorkerPool, indexPool)

void collectDocuments(const FileItem &folder, QStringList &out)
{
    for (const FileItem &child : folder.children()) {
        if (child.isDirectory())
            collectDocuments(child, out);
        else if (FileKind::isMarkdown(child.name()))
            out.append(child.id());
    }
}

QList<LinkIndex::Link> readLinks(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const QString text = QString::fromUtf8(file.readAll());
    QList<LinkIndex::Link> links;
    const QList<MarkdownLinks::Span> spans = MarkdownLinks::scan(text);
    links.reserve(spans.size());
    for (const MarkdownLinks::Span &span : spans) {
        links.append({text.mid(span.start, span.length),
                      MarkdownLinks::lineAt(text, span.start).trimmed().left(300).toString(),
                      span.form, span.picture, span.line});
    }
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
    }
    m_root = root;
    m_rootChanged = true;
    m_pending.unite(changed);
    if (!m_root) {
        m_run.supersede();
        m_snapshot = std::make_shared<const Snapshot>();
        m_pending.clear();
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
    m_run.supersede();
    const std::atomic_bool replaced = false;
    m_snapshot = build(*m_root, *m_snapshot, std::exchange(m_pending, {}),
                       std::exchange(m_readAll, false), replaced);
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
    m_run.start(
        [root = *m_root, previous = m_snapshot, reread = std::exchange(m_pending, {}),
         readAll = std::exchange(m_readAll, false)](const std::atomic_bool &replaced) {
            return build(root, *previous, reread, readAll, replaced);
        },
        [this](const std::shared_ptr<const Snapshot> &snapshot) {
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
    QStringList documents;
    collectDocuments(root, documents);
    QStringList toRead;
    for (const QString &path : std::as_const(documents)) {
        const auto known = previous.written.constFind(path);
        if (readAll || known == previous.written.cend() || reread.contains(path))
            toRead.append(path);
        else
            snapshot->written.insert(path, *known);
    }
    // Read in parallel, in chunks of documents, as a search pass does.
    constexpr qsizetype chunk = 64;
    QList<std::pair<qsizetype, qsizetype>> ranges;
    for (qsizetype i = 0; i < toRead.size(); i += chunk)
        ranges.append({i, std::min(toRead.size(), i + chunk)});
    QList<QList<QList<Link>>> read(ranges.size());
    QtConcurrent::blockingMap(indexPool(), ranges,
                              [&](const std::pair<qsizetype, qsizetype> &range) {
                                  if (replaced)
                                      return;
                                  QList<QList<Link>> &out = read[(range.first) / chunk];
                                  out.reserve(range.second - range.first);
                                  for (qsizetype i = range.first; i < range.second; ++i)
                                      out.append(readLinks(toRead[i]));
                              });
    if (replaced)
        return snapshot;
    for (qsizetype r = 0; r < ranges.size(); ++r) {
        for (qsizetype i = ranges[r].first; i < ranges[r].second; ++i)
            snapshot->written.insert(toRead[i], read[r][i - ranges[r].first]);
    }

    const LinkResolver::NameIndex names(root);
    for (auto it = snapshot->written.cbegin(); it != snapshot->written.cend(); ++it) {
        for (qsizetype i = 0; i < it->size(); ++i) {
            const Link &link = it->at(i);
            if (const std::optional<QString> target = LinkResolver::resolveSpan(
                    link.target, link.form, link.picture, it.key(), root, &names))
                snapshot->incoming[*target].append({it.key(), i});
        }
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

QStringList LinkIndex::documentsLinkingTo(const QString &path) const
{
    QStringList documents;
    for (const auto &[from, link] : linksTo(path)) {
        if (documents.isEmpty() || documents.last() != from)
            documents.append(from);
    }
    return documents;
}
