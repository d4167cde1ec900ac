#include "LinkFacts.h"

#include "model/FileUrl.h"
#include "services/LinkResolver.h"

#include <QImageReader>
#include <QJsonArray>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

// Typing is read again once it pauses: the facts follow the text without running per key.
constexpr int typingPauseMs = 400;

QJsonValue pictureFacts(const QString &path)
{
    QImageReader reader(path);
    QSize size = reader.size(); // from the file's header, without decoding the picture
    // The browser turns photos as their camera said; so does their box.
    if (reader.transformation().testFlag(QImageIOHandler::TransformationRotate90))
        size.transpose();
    QJsonObject facts {{u"path"_s, path}};
    if (size.isValid() && !size.isEmpty()) {
        facts.insert(u"width"_s, size.width());
        facts.insert(u"height"_s, size.height());
    }
    return facts;
}

} // namespace

LinkFacts::LinkFacts(QObject *parent) : QObject(parent)
{
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &LinkFacts::start);
}

void LinkFacts::setStore(WorkspaceStore *store)
{
    if (m_store)
        m_store->disconnect(this);
    m_store = store;
    if (!store)
        return;
    connect(store, &WorkspaceStore::documentReplaced, this, &LinkFacts::restart);
    connect(store, &WorkspaceStore::rootItemChanged, this, &LinkFacts::restart);
    connect(store, &WorkspaceStore::documentTextChanged, this, [this] { schedule(typingPauseMs); });
    schedule(0);
}

void LinkFacts::resend()
{
    m_pageReady = true;
    m_sentPath.clear();
    m_sent = {};
    schedule(0);
}

void LinkFacts::schedule(int delayMs)
{
    if (!m_pageReady)
        return;
    if (!m_timer.isActive() || delayMs < m_timer.remainingTime())
        m_timer.start(delayMs);
}

void LinkFacts::restart()
{
    m_run.supersede();
    schedule(0);
}

void LinkFacts::start()
{
    if (!m_store || !m_store->currentDocument() || !m_store->rootItem())
        return;
    // One run at a time while typing: a change meanwhile starts another once this one ends.
    if (m_run.isRunning()) {
        schedule(typingPauseMs);
        return;
    }
    const EditorDocument &document = *m_store->currentDocument();
    const QString path = FileUrl::path(document.fileURL);
    // The text and the tree are shared, not copied, with the worker.
    m_run.start([text = document.content, path, root = *m_store->rootItem()](
                    const std::atomic_bool &) { return compute(text, path, root); },
                [this, path](const QJsonObject &facts) { publish(path, facts); });
}

void LinkFacts::publish(const QString &documentPath, const QJsonObject &facts)
{
    // Facts already sent are not sent again.
    if (documentPath == m_sentPath && facts == m_sent)
        return;
    m_sentPath = documentPath;
    m_sent = facts;
    Q_EMIT factsChanged(facts, m_sentPath);
}

QJsonObject LinkFacts::compute(const QString &text, const QString &documentPath,
                               const FileItem &root)
{
    const LinkResolver::Written written = LinkResolver::writtenIn(text);
    // Wiki names are looked up in an index once there are several of them.
    const auto wiki = [](const QString &target) { return target.startsWith(u"[["_s); };
    std::unique_ptr<LinkResolver::NameIndex> names;
    if (std::count_if(written.links.begin(), written.links.end(), wiki)
            + std::count_if(written.pictures.begin(), written.pictures.end(), wiki)
        > 1)
        names = std::make_unique<LinkResolver::NameIndex>(root);

    QJsonArray missing;
    for (const QString &target : written.links) {
        if (!LinkResolver::isWebAddress(target)
            && !LinkResolver::resolve(target, documentPath, root, names.get()))
            missing.append(target);
    }
    QJsonObject pictures;
    QHash<QString, QJsonValue> read; // a file shown many times is read once
    for (const QString &source : written.pictures) {
        const std::optional<QString> path
            = LinkResolver::resolvePicture(source, documentPath, root, names.get());
        if (path && !read.contains(*path))
            read.insert(*path, pictureFacts(*path));
        pictures.insert(source, path ? read.value(*path) : QJsonValue());
    }
    return {{u"missing"_s, missing}, {u"pictures"_s, pictures}};
}
