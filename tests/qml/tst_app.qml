import QtQuick
import QtQuick.Controls
import QtTest
import Pagewell

TestCase {
    id: test

    name: "SceneAndMenus"
    when: windowShown

    Component {
        id: appComponent

        PagewellApp {
        }
    }

    function action(app, menuTitle, text) {
        for (let m = 0; m < app.menuBar.count; ++m) {
            const menu = app.menuBar.menuAt(m);
            if (menu.title !== menuTitle)
                continue;
            for (let i = 0; i < menu.count; ++i) {
                const item = menu.itemAt(i);
                if (item && item.action && item.action.text === text)
                    return item.action;
            }
        }
        return null;
    }

    function test_menusAndAlert() {
        const app = createTemporaryObject(appComponent, test);
        compare(app.menuBar.count, 5);
        compare(app.menuBar.menuAt(0).title, "Fichier");
        compare(app.menuBar.menuAt(1).title, "Édition");
        compare(app.menuBar.menuAt(2).title, "Recherche");
        compare(app.menuBar.menuAt(3).title, "Aller");
        compare(app.menuBar.menuAt(4).title, "Aide");
        verify(action(app, "Aide", "Vérifier les mises à jour...").enabled);
        const root = fixture.makeFolder(["sub/"]);
        WorkspaceStore.openFolder(fixture.url(root));
        // A folder open, no document: only "Enregistrer" is disabled.
        verify(action(app, "Fichier", "Ouvrir un dossier...").enabled);
        verify(action(app, "Fichier", "Nouveau fichier Markdown").enabled);
        verify(action(app, "Fichier", "Recharger le fichier").enabled);
        verify(!action(app, "Fichier", "Enregistrer").enabled);
        verify(action(app, "Recherche", "Recherche").enabled);
        verify(action(app, "Recherche", "Plan du document").enabled);

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
        verify(WorkspaceStore.showAlert);
        const alert = app.mainView.alert;
        tryVerify(() => alert.opened);
        compare(alert.title, "Pagewell");
        const ok = alert.footer.itemAt(0);
        compare(ok.text, "OK");
        mouseClick(ok);
        tryVerify(() => !WorkspaceStore.showAlert);
        tryVerify(() => !alert.visible);
    }
}
