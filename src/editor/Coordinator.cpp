#include "Coordinator.h"

#include "EditorScripts.h"
#include "LocalFileGuard.h"
#include "model/FileUrl.h"
#include "model/HeadingItem.h"
#include "services/LinkResolver.h"
#include "workspace/StoreBinding.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QJSValue>
#include <QJsonArray>
#include <QJsonObject>
#include <QJsonValue>

#include <cmath>

using namespace Qt::StringLiterals;

Coordinator::Coordinator(QObject *parent) : QObject(parent)
{
    // Facts are worked out only once the page has loaded (navigationFinished).
    connect(&m_linkFacts, &LinkFacts::factsChanged, this,
            [this](const QJsonObject &facts, const QString &documentPath) {
                Q_EMIT scriptRequested(EditorScripts::linkFactsCall(facts, documentPath), false);
            });
}

void Coordinator::setStore(WorkspaceStore *store)
{
    if (!rebindStore(m_store, store, this))
        return;
    m_linkFacts.setStore(store);
    if (store) {
        connect(store, &WorkspaceStore::currentDocumentChanged, this, &Coordinator::update);
        // Requests towards the page: each value is one call, sent once.
        connect(store, &WorkspaceStore::headingScrollRequest, this, [this](const QString &id) {
            Q_EMIT scriptRequested(EditorScripts::scrollCall(id), false);
        });
        connect(store, &WorkspaceStore::showSourceChanged, this, [this] {
            if (m_pageLoaded)
                Q_EMIT scriptRequested(EditorScripts::showSourceCall(m_store->showSource()), false);
        });
        connect(store, &WorkspaceStore::rootURLChanged, this, [this] {
            if (m_pageLoaded)
                Q_EMIT scriptRequested(EditorScripts::folderCall(FileUrl::path(m_store->rootURL())),
                                       false);
        });
        connect(store, &WorkspaceStore::historyPositionRequest, this,
                [this] { Q_EMIT scriptRequested(EditorScripts::positionCall(), false); });
        connect(store, &WorkspaceStore::snippetInsertRequest, this, [this](const QString &snippet) {
            Q_EMIT scriptRequested(EditorScripts::insertCall(snippet), false);
        });
        connect(store, &WorkspaceStore::documentTextReplaced, this,
                &Coordinator::documentTextReplaced);
        // A renamed or moved document stays in the page, under its new path.
        connect(store, &WorkspaceStore::documentRelocated, this,
                [this](const QUrl &from, const QUrl &to) {
                    if (m_currentLoadedURL != from)
                        return;
                    m_currentLoadedURL = to;
                    m_relocatedFrom = FileUrl::path(from);
                    if (m_pageLoaded)
                        Q_EMIT scriptRequested(EditorScripts::pathCall(FileUrl::path(to)), false);
                });
        connect(store, &WorkspaceStore::lineRevealRequest, this,
                [this](int line) { Q_EMIT scriptRequested(EditorScripts::lineCall(line), false); });
        connect(store, &WorkspaceStore::matchRevealRequest, this,
                [this](int line, int from, int to) {
                    Q_EMIT scriptRequested(EditorScripts::matchCall(line, from, to), false);
                });
        // The page's text reaches the store before the save: its messages keep their order.
        connect(store, &WorkspaceStore::saveRequest, this,
                [this] { Q_EMIT saveScriptRequested(EditorScripts::saveCall()); });
    }
    Q_EMIT storeChanged();
}

// Connected here, not through a QML handler: a message carries the whole text, and a trip through
// the script engine would copy it twice more.
void Coordinator::setBridge(EditorBridge *bridge)
{
    if (bridge == m_bridge)
        return;
    if (m_bridge)
        m_bridge->disconnect(this);
    m_bridge = bridge;
    if (bridge)
        connect(bridge, &EditorBridge::messageReceived, this, &Coordinator::receiveMessage);
    Q_EMIT bridgeChanged();
}

void Coordinator::setDark(bool dark)
{
    if (dark == m_isDark && m_parentIsDark)
        return;
    m_isDark = dark;
    Q_EMIT isDarkChanged();
    if (m_parentIsDark)
        update();
}

void Coordinator::componentComplete()
{
    m_parentIsDark = m_isDark;
    update();
}

QString Coordinator::resourceDirectory()
{
    const QString executableDir = QCoreApplication::applicationDirPath();
    const QString installed = QDir::cleanPath(executableDir + u"/../share/pagewell"_s);
    return QFileInfo(installed).isDir() ? installed : executableDir;
}

QUrl Coordinator::locatePage(const QString &resourceDirectory)
{
    if (resourceDirectory.isEmpty())
        return {};
    for (const QString &relative : {u"web/editor.html"_s, u"Resources/web/editor.html"_s}) {
        const QString path = resourceDirectory + u'/' + relative;
        if (QFileInfo(path).isFile())
            return QUrl::fromLocalFile(path);
    }
    return QUrl::fromLocalFile(resourceDirectory + u"/web/editor.html"_s);
}

QUrl Coordinator::pageUrl() const
{
    if (!m_pageUrl)
        m_pageUrl = locatePage(resourceDirectory());
    return *m_pageUrl;
}

void Coordinator::setPageUrl(const QUrl &url)
{
    m_pageUrl = url;
    Q_EMIT pageUrlChanged();
}

bool Coordinator::allowsNavigation(const QUrl &url) const
{
    return !url.isEmpty() && url.adjusted(QUrl::RemoveFragment) == pageUrl();
}

bool Coordinator::opensOutside(const QUrl &url)
{
    return LinkResolver::isWebAddress(url.toString());
}

void Coordinator::update()
{
    if (!m_parentIsDark)
        return; // still being made
    if (!m_lastColorScheme || *m_lastColorScheme != m_isDark) {
        m_lastColorScheme = m_isDark;
        Q_EMIT scriptRequested(EditorScripts::themeCall(m_isDark), false);
    }
    if (!m_store)
        return;
    const std::optional<EditorDocument> &document = m_store->currentDocument();
    if (!document || document->fileURL == m_currentLoadedURL)
        return;
    m_currentLoadedURL = document->fileURL;
    m_relocatedFrom.clear();
    if (!m_pageLoaded)
        return;
    m_isInternalUpdate = true;
    m_awaitingText = false;
    Q_EMIT scriptRequested(
        EditorScripts::contentCall(document->content, FileUrl::path(document->fileURL)), true);
}

void Coordinator::documentTextReplaced()
{
    const std::optional<EditorDocument> &document = m_store->currentDocument();
    // A page holding another file gets the whole document from the update step instead.
    if (!m_pageLoaded || !document || document->fileURL != m_currentLoadedURL)
        return;
    m_isInternalUpdate = true;
    m_awaitingText = false;
    Q_EMIT scriptRequested(EditorScripts::replaceCall(document->content), true);
}

void Coordinator::navigationFinished()
{
    // The appearance the view was made with, not the current one: a change since then was
    // already recorded by the update step, which sends no second theme call.
    const bool dark = m_parentIsDark.value_or(m_isDark);
    m_pageLoaded = true;
    m_awaitingText = false;
    m_linkFacts.resend();
    if (m_store && !m_store->rootURL().isEmpty())
        Q_EMIT scriptRequested(EditorScripts::folderCall(FileUrl::path(m_store->rootURL())), false);
    // Before the text, so the page draws it once, as chosen.
    if (m_store && m_store->showSource())
        Q_EMIT scriptRequested(EditorScripts::showSourceCall(true), false);
    const std::optional<EditorDocument> &document
        = m_store ? m_store->currentDocument() : std::nullopt;
    if (!document) {
        Q_EMIT scriptRequested(EditorScripts::startCall(dark), false);
        return;
    }
    m_currentLoadedURL = document->fileURL;
    Q_EMIT scriptRequested(
        EditorScripts::startCall(document->content, FileUrl::path(document->fileURL), dark), false);
}

void Coordinator::guardProfile(QQuickWebEngineProfile *profile)
{
    // The profile outlives this view, which goes when no document is open: the guard is its.
    if (!profile || profile->property("pagewellGuarded").toBool())
        return;
    profile->setProperty("pagewellGuarded", true);
    const QString pageFolder = QFileInfo(pageUrl().toLocalFile()).path();
    QPointer<WorkspaceStore> store = m_store;
    profile->setUrlRequestInterceptor(new LocalFileGuard(
        pageFolder, [store] { return store ? FileUrl::path(store->rootURL()) : QString(); },
        profile));
}

void Coordinator::focusPage()
{
    Q_EMIT scriptRequested(EditorScripts::focusCall(), false);
}

void Coordinator::saveCallFinished(bool handled)
{
    if (!handled && m_store)
        m_store->saveCurrentDocument();
}

void Coordinator::contentCallFinished()
{
    m_isInternalUpdate = false;
}

namespace {

// A message as plain maps, lists, strings and numbers, whichever way it crossed: the web channel
// hands over JSON values, and a script passing it on wraps it in a script value.
QVariant plainValue(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::QJsonValue:
        return value.toJsonValue().toVariant();
    case QMetaType::QJsonObject:
        return value.toJsonObject().toVariantMap();
    case QMetaType::QJsonArray:
        return value.toJsonArray().toVariantList();
    default:
        if (value.typeId() == qMetaTypeId<QJSValue>())
            return value.value<QJSValue>().toVariant();
        return value;
    }
}

// A position or a length in a text: a whole number, not negative, as the page counts them.
std::optional<qsizetype> readPosition(const QVariant &value)
{
    bool ok = false;
    const double number = value.toDouble(&ok);
    const bool isNumber = value.typeId() == QMetaType::Double || value.typeId() == QMetaType::Int
        || value.typeId() == QMetaType::LongLong;
    if (!isNumber || !ok || number < 0 || number > double(1LL << 40)
        || number != std::floor(number))
        return std::nullopt;
    return qsizetype(number);
}

// The edits of a "contentEdited" message: a list of [from, to, inserted].
std::optional<QList<TextEdit>> readEdits(const QVariant &value)
{
    if (value.typeId() != QMetaType::QVariantList)
        return std::nullopt;
    const QVariantList changes = value.toList();
    QList<TextEdit> edits;
    edits.reserve(changes.size());
    for (const QVariant &change : changes) {
        const QVariantList parts = change.toList();
        if (change.typeId() != QMetaType::QVariantList || parts.size() != 3
            || parts.at(2).typeId() != QMetaType::QString)
            return std::nullopt;
        const std::optional<qsizetype> from = readPosition(parts.at(0));
        const std::optional<qsizetype> to = readPosition(parts.at(1));
        if (!from || !to)
            return std::nullopt;
        edits.append({*from, *to, parts.at(2).toString()});
    }
    return edits;
}

} // namespace

bool Coordinator::isOpenDocument(const QString &path) const
{
    // Text sent under the path a rename just replaced is the open document's own.
    const std::optional<EditorDocument> &document = m_store->currentDocument();
    return !document || path == FileUrl::path(document->fileURL) || path == m_relocatedFrom;
}

void Coordinator::receiveMessage(const QVariant &message)
{
    const QVariant body = plainValue(message);
    if (body.typeId() != QMetaType::QVariantMap)
        return;
    const QVariantMap map = body.toMap();
    const QVariant type = map.value(u"type"_s);
    if (type.typeId() != QMetaType::QString)
        return;
    QMetaObject::invokeMethod(
        this, [this, type = type.toString(), map] { handleMessage(type, map); },
        Qt::QueuedConnection);
}

void Coordinator::handleMessage(const QString &type, const QVariantMap &body)
{
    if (!m_store)
        return;
    if (type == u"contentChanged"_s) {
        const QVariant markdown = body.value(u"markdown"_s);
        if (markdown.typeId() != QMetaType::QString)
            return;
        // Typing the page had not sent yet when another document replaced its own: it belongs
        // to that document, which the store keeps as a draft.
        const QVariant path = body.value(u"path"_s);
        if (path.typeId() == QMetaType::QString && !isOpenDocument(path.toString())) {
            m_store->updateReplacedDocumentContent(path.toString(), markdown.toString());
            return;
        }
        m_awaitingText = false;
        // While the page takes a text from here, what it reports is that text coming back.
        if (!m_isInternalUpdate)
            m_store->updateDocumentContent(markdown.toString());
    } else if (type == u"contentEdited"_s) {
        const std::optional<QList<TextEdit>> edits = readEdits(body.value(u"changes"_s));
        const std::optional<qsizetype> length = readPosition(body.value(u"length"_s));
        const QVariant path = body.value(u"path"_s);
        if (!edits || !length || path.typeId() != QMetaType::QString || !m_store->currentDocument())
            return;
        if (!isOpenDocument(path.toString())) {
            m_store->editReplacedDocumentContent(path.toString(), *edits, *length);
            return;
        }
        // Edits made before the page answers the request for its text are in that text.
        if (m_isInternalUpdate || m_awaitingText)
            return;
        if (!m_store->editDocumentContent(*edits, *length)) {
            m_awaitingText = true;
            Q_EMIT scriptRequested(EditorScripts::textRequestCall(), false);
        }
    } else if (type == u"headingsUpdated"_s) {
        const QVariant headings = body.value(u"headings"_s);
        if (headings.typeId() != QMetaType::QVariantList)
            return;
        const QVariantList entries = headings.toList();
        QList<HeadingItem> items;
        items.reserve(entries.size());
        for (const QVariant &entry : entries) {
            if (entry.typeId() != QMetaType::QVariantMap)
                return; // not an array of objects: the outline stays as it is
        }
        for (const QVariant &entry : entries) {
            if (std::optional<HeadingItem> item = HeadingItem::fromVariantMap(entry.toMap()))
                items.append(std::move(*item));
        }
        m_store->updateHeadings(items);
    } else if (type == u"saveRequested"_s) {
        m_store->saveCurrentDocument();
    } else if (type == u"openLink"_s) {
        const QVariant target = body.value(u"target"_s);
        const QVariant path = body.value(u"path"_s);
        if (target.typeId() == QMetaType::QString && path.typeId() == QMetaType::QString)
            m_store->followLink(target.toString(), path.toString());
    }
}
