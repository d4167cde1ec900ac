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
        id: paneComponent

        Row {
            anchors.fill: parent

            property alias pane: pane
            property alias outline: outline

            EditorContainerView {
                id: pane

                width: 760
                height: parent.height
            }
            OutlineInspectorView {
                id: outline

                width: 240
                height: parent.height
            }
        }
    }

    SignalSpy {
        id: scrolls

        target: WorkspaceStore
        signalName: "headingScrollRequest"
    }

    function test_headerAndOutline() {
        const root = fixture.makeFolder(["docs/api/name.md"]);
        WorkspaceStore.openFolder(fixture.url(root));
        const view = createTemporaryObject(paneComponent, test);
        verify(!findChild(view.pane, "placeholder").visible);
        compare(findChild(view.pane, "fileName").text, "name.md");
        compare(findChild(view.pane, "relativePath").text, "docs/api/name.md");
        compare(findChild(view.pane, "words").text, "2 mots");
        compare(findChild(view.pane, "characters").text, "19 car."); // "# docs/api/name.md\n"
        compare(findChild(view.pane, "readingTime").text, "~1 min de lecture");
        const save = findChild(view.pane, "saveButton");
        const dot = findChild(view.pane, "unsavedIndicator");
        compare(save.text, "Enregistré");
        verify(!dot.visible);

        // An edit shows the dot and the save button's other state; a save clears them.
        WorkspaceStore.updateDocumentContent("# name.md\n\nun deux trois\n");
        verify(dot.visible);
        compare(save.text, "Enregistrer");
        compare(findChild(view.pane, "words").text, "5 mots");
        mouseClick(save);
        tryCompare(save, "text", "Enregistré");
        verify(!dot.visible);
        verify(save.enabled); // it can still be pressed

        // The outline: empty state, then headings with their tags and indentation.
        verify(findChild(view.outline, "outlineEmptyState").visible);
        verify(!findChild(view.outline, "headingCount").visible);
        fixture.reportHeadings([["a", 1, "Alpha"], ["b", 3, "Beta"], ["z", 0, "Zero"]]);
        verify(!findChild(view.outline, "outlineEmptyState").visible);
        compare(findChild(view.outline, "headingCount").count, 3);
        const list = findChild(view.outline, "headings");
        tryVerify(() => list.itemAtIndex(2) !== null);
        compare(list.itemAtIndex(1).indentation, "    ");
        compare(list.itemAtIndex(1).tag, "H3");
        compare(list.itemAtIndex(2).tag, "H0");
        compare(list.itemAtIndex(2).indentation, "");
        scrolls.clear();
        mouseClick(list.itemAtIndex(1));
        mouseClick(list.itemAtIndex(1));
        compare(scrolls.count, 2);
        compare(scrolls.signalArguments[1][0], "b");
        verify(findChild(view.outline, "sizeText").text.startsWith("Taille : "));
        verify(findChild(view.outline, "modifiedText").text.startsWith("Modifié le : "));

        // The outline toggle flips the store's flag.
        const visibleBefore = WorkspaceStore.isOutlineVisible;
        mouseClick(findChild(view.pane, "outlineToggle"));
        compare(WorkspaceStore.isOutlineVisible, !visibleBefore);
        WorkspaceStore.isOutlineVisible = visibleBefore;
    }

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
