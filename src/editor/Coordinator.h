#pragma once

#include "EditorBridge.h"
#include "LinkFacts.h"
#include "workspace/WorkspaceStore.h"

#include <QObject>
#include <QPointer>
#include <QQmlParserStatus>
#include <QQuickWebEngineProfile>
#include <QUrl>
#include <QVariant>
#include <QtQml/qqmlregistration.h>

#include <optional>

// Carries text, theme, headings, snippets, saves, and what the folder says of the document's links
// and pictures, between the editor page and the store. It decides every call and reads every
// message; the view around the web page only evaluates the scripts it asks for, and reports the
// end of loading and the page's messages.
class Coordinator : public QObject, public QQmlParserStatus
{
    Q_OBJECT
    QML_ELEMENT
    Q_INTERFACES(QQmlParserStatus)
    Q_PROPERTY(WorkspaceStore *store READ store WRITE setStore NOTIFY storeChanged)
    // The appearance the view is in now.
    Q_PROPERTY(bool isDark READ isDark WRITE setDark NOTIFY isDarkChanged)
    // Where the page's messages arrive.
    Q_PROPERTY(EditorBridge *bridge READ bridge WRITE setBridge NOTIFY bridgeChanged)
    // The editor page: found in the resource folder unless given.
    Q_PROPERTY(QUrl pageUrl READ pageUrl WRITE setPageUrl NOTIFY pageUrlChanged)

public:
    explicit Coordinator(QObject *parent = nullptr);

    WorkspaceStore *store() const { return m_store; }
    void setStore(WorkspaceStore *store);
    bool isDark() const { return m_isDark; }
    void setDark(bool dark);
    EditorBridge *bridge() const { return m_bridge; }
    void setBridge(EditorBridge *bridge);
    QUrl pageUrl() const;
    void setPageUrl(const QUrl &url);

    const QUrl &currentLoadedURL() const { return m_currentLoadedURL; }
    std::optional<bool> lastColorScheme() const { return m_lastColorScheme; }
    bool isInternalUpdate() const { return m_isInternalUpdate; }

    // The page in the application's resource folder: web/editor.html, else
    // Resources/web/editor.html, else web/editor.html unchecked; nothing without a folder.
    static QUrl locatePage(const QString &resourceDirectory);
    // Lets the page's web profile read no file but the page's own and the open folder's.
    Q_INVOKABLE void guardProfile(QQuickWebEngineProfile *profile);
    // The installed data folder (<prefix>/share/pagewell), or in a build tree the folder of the
    // executable.
    static QString resourceDirectory();
    // Whether the web view may go to `url`: only the page itself.
    Q_INVOKABLE bool allowsNavigation(const QUrl &url) const;
    // Whether a window the page asks for goes to the desktop (the browser, the mail program):
    // addresses only, never a file.
    Q_INVOKABLE static bool opensOutside(const QUrl &url);

    // The synchronisation step: a theme call when the appearance changed, a content call when
    // the open document is another file than the one the page holds.
    Q_INVOKABLE void update();
    // The page has loaded: it gets its first text and appearance.
    Q_INVOKABLE void navigationFinished();
    // The content call's evaluation ended, however it ended.
    Q_INVOKABLE void contentCallFinished();
    // The page takes the keyboard, its text the caret.
    Q_INVOKABLE void focusPage();
    // The answer of the save call: whether the page took it; if not, the store saves as it is.
    Q_INVOKABLE void saveCallFinished(bool handled);
    // A message the page posted to "editorBridge". Malformed ones are dropped; the others are
    // handled in a later turn of the main thread, in the order they came.
    Q_INVOKABLE void receiveMessage(const QVariant &message);

    void classBegin() override { }
    void componentComplete() override;

Q_SIGNALS:
    void storeChanged();
    void isDarkChanged();
    void pageUrlChanged();
    void bridgeChanged();
    // Evaluate `script` in the page; when `wantsCompletion`, call contentCallFinished() once the
    // evaluation ends.
    void scriptRequested(const QString &script, bool wantsCompletion);
    // Evaluate the save call and hand its answer to saveCallFinished().
    void saveScriptRequested(const QString &script);

private:
    void handleMessage(const QString &type, const QVariantMap &body);
    void documentTextReplaced();
    // Whether text the page sent under `path` is the open document's.
    bool isOpenDocument(const QString &path) const;

    QPointer<WorkspaceStore> m_store;
    QPointer<EditorBridge> m_bridge;
    bool m_isDark = false;
    // The appearance when the view was made: what the first call of the page carries.
    std::optional<bool> m_parentIsDark;
    QUrl m_currentLoadedURL;
    // The path the open document had before it was renamed or moved here.
    QString m_relocatedFrom;
    std::optional<bool> m_lastColorScheme;
    bool m_isInternalUpdate = false;
    // The page's edits did not fit the store's text: its whole text was asked for, and edits
    // until it comes are already in it.
    bool m_awaitingText = false;
    // Until the page has loaded, a document's text is not sent: the page could not take it yet,
    // and the start call carries it. Evaluating megabytes of text in a loading page held the
    // page back by half a second.
    bool m_pageLoaded = false;
    mutable std::optional<QUrl> m_pageUrl;
    LinkFacts m_linkFacts;
};
