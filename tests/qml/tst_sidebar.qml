import QtQuick
import QtTest
import Pagewell

TestCase {
    id: test

    name: "SidebarAndSearch"
    width: 320
    height: 700
    visible: true
    when: windowShown

    Component {
        id: sidebarComponent

        SidebarView {
            anchors.fill: parent
        }
    }

    function test_switchFollowsTheTrimmedQuery() {
        const root = fixture.makeFolder(["guide.md", "other.md"]);
        fixture.write(root + "/guide.md", "# Guide\ninstaller\nplus rien\nINSTALLER encore\n");
        WorkspaceStore.openFolder(fixture.url(root));
        const sidebar = createTemporaryObject(sidebarComponent, test);
        const content = findChild(sidebar, "sidebarContent");
        const clear = findChild(sidebar, "clearSearchButton");
        verify(content.item instanceof FolderTreeView);
        verify(!clear.visible);

        // Spaces only: still the tree, but the clear button shows.
        WorkspaceStore.updateSearch("  \t ");
        verify(content.item instanceof FolderTreeView);
        verify(clear.visible);

        // Typing in the field searches; the panel shows the spinner, then the summary.
        const field = findChild(sidebar, "searchField");
        field.forceActiveFocus();
        field.selectAll();
        keyClick(Qt.Key_Delete);
        for (const key of [Qt.Key_I, Qt.Key_N, Qt.Key_S, Qt.Key_T])
            keyClick(key);
        compare(WorkspaceStore.searchQuery, "inst");
        verify(content.item instanceof SearchPanelView);
        const status = findChild(content.item, "statusText");
        tryCompare(WorkspaceStore, "isSearching", false);
        compare(status.text, "2 résultats dans 1 fichier");
        verify(!findChild(content.item, "emptyState").visible);

        // A hit opens its file.
        const list = findChild(content.item, "searchResults");
        tryVerify(() => list.itemAtIndex(2) !== null);
        mouseClick(list.itemAtIndex(2));
        compare(PathNames.fromUrl(WorkspaceStore.selectedFileURL), root + "/guide.md");

        // Nothing found: the summary and the empty state.
        WorkspaceStore.updateSearch("zzzz");
        verify(findChild(content.item, "spinner").visible || !WorkspaceStore.isSearching);
        tryCompare(WorkspaceStore, "isSearching", false);
        compare(findChild(content.item, "statusText").text, "0 résultat dans 0 fichier");
        verify(findChild(content.item, "emptyState").visible);

        // The clear button empties the query and brings the tree back.
        mouseClick(clear);
        compare(WorkspaceStore.searchQuery, "");
        verify(content.item instanceof FolderTreeView);
        verify(!clear.visible);
    }

    function test_spinnerWhileSearching() {
        const root = fixture.makeFolder(["a.md"]);
        WorkspaceStore.openFolder(fixture.url(root));
        const sidebar = createTemporaryObject(sidebarComponent, test);
        WorkspaceStore.updateSearch("a");
        const panel = findChild(sidebar, "sidebarContent").item;
        if (WorkspaceStore.isSearching) {
            verify(findChild(panel, "spinner").visible);
            compare(findChild(panel, "statusText").text, "Recherche en cours...");
        }
        tryCompare(WorkspaceStore, "isSearching", false);
        verify(!findChild(panel, "spinner").visible);
        WorkspaceStore.updateSearch("");
    }
}
