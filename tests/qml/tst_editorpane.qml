import QtQuick
import QtQuick.Controls
import QtTest
import Pagewell

TestCase {
    id: test

    name: "EditorPaneAndOutline"
    width: 1000
    height: 600
    visible: true
    when: windowShown

    Component {
        id: narrowPane

        EditorContainerView {
            height: 300
        }
    }

    // At the window's opening size (1360 wide, the sidebar at 270 and the outline at 220) a
    // README at the top of the folder, unsaved, shows every part whole: its name, its path (the
    // same name), the unsaved mark, the three figures, the save button's word and the toggle.
    function test_headerWholeAtTheOpeningSize() {
        const root = fixture.makeFolder(["README.md"]);
        WorkspaceStore.openFolder(fixture.url(root));
        WorkspaceStore.updateDocumentContent("# Accueil\n\n" + "Un texte de documentation assez long. ".repeat(120));
        const pane = createTemporaryObject(narrowPane, test, {
                "width": 1360 - 270 - 220 - 2
            });
        waitForRendering(pane);
        const header = findChild(pane, "saveButton").parent.parent;
        for (const name of ["backButton", "forwardButton", "fileName", "unsavedIndicator", "relativePath", "words", "characters", "readingTime", "saveButton", "outlineToggle"]) {
            const item = findChild(pane, name);
            const p = item.mapToItem(header, 0, 0);
            verify(item.visible && item.width >= item.implicitWidth - 0.5, name + " whole: " + item.width + " of " + item.implicitWidth);
            verify(p.x >= 0 && p.x + item.width <= header.width, name + " inside the header");
        }
        compare(findChild(pane, "relativePath").text, "README.md");
        compare(findChild(pane, "readingTime").text, "~4 min de lecture");
        compare(findChild(pane, "saveButton").display, AbstractButton.TextBesideIcon);
    }

    // The header at every width down to what the editor column keeps at the minimum window size
    // with both side columns at their widest: the save button and the outline toggle lie whole
    // inside it, and nothing overlaps.
    function test_headerNeverOverflows() {
        const deep = "un/dossier/assez/profond/pour/que/le/chemin/soit/long";
        const root = fixture.makeFolder([deep + "/un-nom-de-fichier-vraiment-tres-long-pour-le-titre.md", deep + "/court.md"]);
        WorkspaceStore.openFolder(fixture.url(root));
        WorkspaceStore.openFile(fixture.url(root + "/" + deep + "/un-nom-de-fichier-vraiment-tres-long-pour-le-titre.md"));
        WorkspaceStore.updateDocumentContent("du texte modifié");
        for (const width of [900, 760, 520, 400, 300, 200, 140]) {
            const pane = createTemporaryObject(narrowPane, test, {
                    "width": width
                });
            waitForRendering(pane);
            const header = findChild(pane, "saveButton").parent.parent;
            const box = name => {
                const item = findChild(pane, name);
                const p = item.mapToItem(header, 0, 0);
                return {
                    "left": p.x,
                    "right": p.x + item.width,
                    "shown": item.visible && item.width > 0
                };
            };
            const save = box("saveButton"), toggle = box("outlineToggle");
            for (const b of [save, toggle]) {
                verify(b.left >= 0 && b.right <= header.width, "button whole at " + width);
            }
            verify(save.right <= toggle.left, "save before the toggle at " + width);
            const file = box("fileName"), path = box("relativePath"), stats = box("statistics");
            verify(file.right <= save.left, "name before the button at " + width);
            if (path.shown && stats.shown)
                verify(path.right <= stats.left, "path clear of the statistics at " + width);
            if (stats.shown)
                verify(stats.right <= save.left, "statistics before the button at " + width);
            if (path.shown)
                verify(path.right <= save.left, "path before the button at " + width);
        }

        // With a short name and room enough, the path and the statistics both show.
        WorkspaceStore.openFile(fixture.url(root + "/" + deep + "/court.md"));
        const wide = createTemporaryObject(narrowPane, test, {
                "width": 840
            });
        waitForRendering(wide);
        const path = findChild(wide, "relativePath");
        verify(path.visible && path.width >= 100, "the path shows: " + path.width);
        verify(findChild(wide, "statistics").visible);
    }
}
