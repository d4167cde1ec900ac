import QtQuick
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
