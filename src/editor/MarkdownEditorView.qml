import QtQuick
import QtQuick.Controls
import QtWebEngine
import QtWebChannel
import Pagewell

// The editor page in a web view. The coordinator decides every call to the page and reads every
// message from it; this view evaluates the scripts, reports the end of loading and passes the
// messages on. The page never leaves: any other navigation is refused, and a link opened from it
// (Ctrl+click) goes to the desktop's browser.
Item {
    id: root

    // A region of its own for screen readers, holding the page's text.
    Accessible.role: Accessible.Pane
    Accessible.name: "Texte du document"

    property alias coordinator: coordinator
    // The page to show; found beside the application unless given.
    property alias pageUrl: coordinator.pageUrl
    property alias webView: web
    property alias bridge: pageBridge

    // The keyboard to the text, as a click in it would give it.
    function focusText() {
        web.forceActiveFocus();
        coordinator.focusPage();
    }

    Coordinator {
        id: coordinator

        store: WorkspaceStore
        bridge: pageBridge
        isDark: Appearance.isDark
        onSaveScriptRequested: script => {
            web.runJavaScript(script, function (handled) {
                    coordinator.saveCallFinished(handled === true);
                });
        }
        onScriptRequested: (script, wantsCompletion) => {
            if (wantsCompletion)
                web.runJavaScript(script, function () {
                        coordinator.contentCallFinished();
                    });
            else
                web.runJavaScript(script);
        }
    }

    // A hit or a link that leads to a line puts the keyboard there, at the text it selects.
    Connections {
        target: WorkspaceStore

        function onMatchRevealRequest() {
            web.forceActiveFocus();
        }
        function onLineRevealRequest() {
            web.forceActiveFocus();
        }
    }

    EditorBridge {
        id: pageBridge

        WebChannel.id: "editorBridge"
    }

    WebEngineView {
        id: web

        anchors.fill: parent
        url: coordinator.pageUrl
        backgroundColor: Theme.contentBackground
        webChannel: WebChannel {
            registeredObjects: [pageBridge]
        }
        settings.localContentCanAccessFileUrls: true
        // Without its page the editor stays blank: no error page.
        settings.errorPageEnabled: false
        settings.localContentCanAccessRemoteUrls: false
        settings.javascriptCanOpenWindows: true
        profile: EditorProfile
        Component.onCompleted: coordinator.guardProfile(EditorProfile)
        Accessible.name: "Éditeur"
        onLoadingChanged: request => {
            if (request.status === WebEngineView.LoadSucceededStatus)
                coordinator.navigationFinished();
        }
        onNavigationRequested: request => {
            if (!coordinator.allowsNavigation(request.url))
                request.action = WebEngineNavigationRequest.IgnoreRequest;
        }
        onNewWindowRequested: request => {
            if (coordinator.opensOutside(request.requestedUrl))
                Qt.openUrlExternally(request.requestedUrl);
        }
        onJavaScriptConsoleMessage: (level, message, line, source) => {
            const text = "editor page " + source + ":" + line + ": " + message;
            if (level === WebEngineView.ErrorMessageLevel)
                console.error(text);
            else if (level === WebEngineView.WarningMessageLevel)
                console.warn(text);
        }
        onContextMenuRequested: request => {
            request.accepted = true;
            contextMenu.request = request;
            contextMenu.popup();
        }
    }

    // The page's context menu, in French: spelling suggestions, editing, and the inspector.
    Menu {
        id: contextMenu

        property var request: null
        readonly property var suggestions: request ? request.spellCheckerSuggestions : []

        Repeater {
            model: contextMenu.suggestions

            MenuItem {

                Accessible.onPressAction: clicked()
                required property string modelData

                text: modelData
                font.bold: true
                onTriggered: web.replaceMisspelledWord(modelData)
            }
        }
        MenuSeparator {
            visible: contextMenu.suggestions.length > 0
            height: visible ? implicitHeight : 0
        }
        MenuItem {
            Accessible.onPressAction: clicked()
            text: "Couper"
            enabled: contextMenu.request !== null && (contextMenu.request.editFlags & ContextMenuRequest.CanCut)
            onTriggered: web.triggerWebAction(WebEngineView.Cut)
        }
        MenuItem {
            Accessible.onPressAction: clicked()
            text: "Copier"
            enabled: contextMenu.request !== null && (contextMenu.request.editFlags & ContextMenuRequest.CanCopy)
            onTriggered: web.triggerWebAction(WebEngineView.Copy)
        }
        MenuItem {
            Accessible.onPressAction: clicked()
            text: "Coller"
            enabled: contextMenu.request !== null && (contextMenu.request.editFlags & ContextMenuRequest.CanPaste)
            onTriggered: web.triggerWebAction(WebEngineView.Paste)
        }
        MenuItem {
            Accessible.onPressAction: clicked()
            text: "Tout sélectionner"
            onTriggered: web.triggerWebAction(WebEngineView.SelectAll)
        }
        MenuSeparator {
        }
        MenuItem {
            Accessible.onPressAction: clicked()
            text: "Inspecter"
            onTriggered: {
                inspector.show();
                web.triggerWebAction(WebEngineView.InspectElement);
            }
        }
    }

    // The developer tools, made on first use: a web view, even hidden, costs a renderer process.
    Loader {
        id: inspector

        function show() {
            active = true;
            item.show();
            item.raise();
        }

        active: false
        sourceComponent: Window {
            title: "Inspecteur — Pagewell"
            width: 900
            height: 600

            WebEngineView {
                anchors.fill: parent
                inspectedView: parent.visible ? web : null
            }
        }
    }
}
