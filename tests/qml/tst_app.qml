import QtQuick
import QtQuick.Controls
import QtTest
import Pagewell

TestCase {
    id: test

    name: "Window"
    width: 900
    height: 700
    visible: true
    when: windowShown

    Component {
        id: appComponent

        PagewellApp {
        }
    }

    function action(app, menuTitle, text) {
        for (let m = 0; m < app.menuBar.count; ++m) {
            const menu = app.menuBar.menuAt(m);
            for (let i = 0; menu.title === menuTitle && i < menu.count; ++i) {
                const item = menu.itemAt(i);
                if (item && item.action && item.action.text === text)
                    return item.action;
            }
        }
        return null;
    }

    function test_menusAndAlert() {
        const app = createTemporaryObject(appComponent, test);
        const titles = [];
        for (let m = 0; m < app.menuBar.count; ++m)
            titles.push(app.menuBar.menuAt(m).title);
        compare(titles, ["Fichier", "Édition", "Recherche", "Aller", "Aide"]);
        const root = fixture.makeFolder(["sub/"]);
        WorkspaceStore.openFolder(fixture.url(root));
        // A folder open, no document: only "Enregistrer" is disabled.
        verify(!action(app, "Fichier", "Enregistrer").enabled);

        // Ctrl+N creates untitled.md in the folder and opens it.
        action(app, "Fichier", "Nouveau fichier Markdown").trigger();
        verify(fixture.exists(root + "/untitled.md"));
        verify(action(app, "Fichier", "Enregistrer").enabled);

        // "Recherche" sets the search mode; "Plan du document" toggles the outline.
        action(app, "Recherche", "Recherche").trigger();
        compare(WorkspaceStore.sidebarMode, SidebarMode.Search);
        const outline = WorkspaceStore.isOutlineVisible;
        action(app, "Recherche", "Plan du document").trigger();
        compare(WorkspaceStore.isOutlineVisible, !outline);
        WorkspaceStore.isOutlineVisible = outline;

        // The alert shows the store's message; "OK" sets the flag back.
        WorkspaceStore.deleteFile(fixture.url(root + "/missing.md"));
        const alert = app.mainView.alert;
        tryVerify(() => alert.opened);
        const ok = alert.footer.itemAt(0);
        compare(ok.text, "OK");
        mouseClick(ok);
        tryVerify(() => !WorkspaceStore.showAlert);
        tryVerify(() => !alert.visible);
    }
}
