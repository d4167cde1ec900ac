import QtQuick
import QtTest
import Pagewell

TestCase {
    id: test

    name: "FolderTree"
    width: 320
    height: 600
    visible: true
    when: windowShown

    Component {
        id: treeComponent

        FolderTreeView {
            anchors.fill: parent
        }
    }

    function rowNamed(tree, name) {
        const list = tree.list;
        for (let i = 0; i < list.count; ++i) {
            list.positionViewAtIndex(i, ListView.Contain);
            const item = list.itemAtIndex(i);
            if (item && item.name === name)
                return item;
        }
        return null;
    }

    function names(tree) {
        const result = [];
        for (let i = 0; i < tree.model.count; ++i)
            result.push(tree.model.data(tree.model.index(i, 0), FolderTreeModel.NameRole));
        return result;
    }

    function openTree(files) {
        const root = fixture.makeFolder(files);
        WorkspaceStore.openFolder(fixture.url(root));
        return {
            "root": root,
            "tree": createTemporaryObject(treeComponent, test)
        };
    }

    function test_expansionAndSelection() {
        const t = openTree(["A/C/deep.md", "B/b.md", "x.md", "notes.txt"]);
        // The root's folders are open, deeper ones closed.
        compare(names(t.tree), ["A", "C", "B", "b.md", "notes.txt", "x.md"]);
        const selected = WorkspaceStore.selectedFileURL;
        // A click toggles a folder and leaves the selection alone.
        mouseClick(rowNamed(t.tree, "A"));
        compare(names(t.tree), ["A", "B", "b.md", "notes.txt", "x.md"]);
        compare(WorkspaceStore.selectedFileURL, selected);
        mouseClick(rowNamed(t.tree, "A"));
        compare(names(t.tree), ["A", "C", "B", "b.md", "notes.txt", "x.md"]);
        compare(WorkspaceStore.selectedFileURL, selected);

        // A right click opens the context menu and leaves the folder as it was.
        mouseClick(rowNamed(t.tree, "A"), 20, 10, Qt.RightButton);
        compare(names(t.tree), ["A", "C", "B", "b.md", "notes.txt", "x.md"]);
        tryVerify(() => t.tree.contextMenu.visible);
        verify(t.tree.contextMenu.forFolder);
        t.tree.contextMenu.close();

        // A file click opens and selects it; its row takes the selected look.
        const row = rowNamed(t.tree, "b.md");
        mouseClick(row);
        compare(PathNames.fromUrl(WorkspaceStore.selectedFileURL), t.root + "/B/b.md");
        verify(row.isSelected);
        verify(!rowNamed(t.tree, "x.md").isSelected);

        // Indentation: 14 points a level; badges only on folders with Markdown below.
        compare(findChild(rowNamed(t.tree, "C"), "indentation").width, 14);
        compare(findChild(rowNamed(t.tree, "A"), "indentation").width, 0);
        compare(rowNamed(t.tree, "C").badgeCount, 1);
        compare(rowNamed(t.tree, "x.md").badgeCount, 0);
    }

    function test_keyboard() {
        const t = openTree(["A/a.md", "z.md"]);
        t.tree.list.forceActiveFocus();
        t.tree.list.currentIndex = 0; // A
        keyClick(Qt.Key_Left);
        compare(names(t.tree), ["A", "z.md"]);
        keyClick(Qt.Key_Right);
        compare(names(t.tree), ["A", "a.md", "z.md"]);
        keyClick(Qt.Key_Down);
        keyClick(Qt.Key_Return);
        compare(PathNames.fromUrl(WorkspaceStore.selectedFileURL), t.root + "/A/a.md");
        keyClick(Qt.Key_Left); // to the folder holding it
        compare(t.tree.list.currentIndex, 0);
    }

    function test_emptyFolder() {
        const t = openTree([]);
        verify(findChild(t.tree, "emptyFolderText").visible);
        compare(t.tree.list.count, 0);
    }

    function test_newFileSheet() {
        const t = openTree(["docs/a.md"]);
        t.tree.showNewFileSheet(fixture.url(t.root + "/docs"));
        const sheet = t.tree.newFileSheet;
        tryVerify(() => sheet.opened);
        const create = findChild(sheet.contentItem, "createButton");
        // Blank names keep "Créer" disabled.
        keyClick(Qt.Key_Space);
        keyClick(Qt.Key_Tab);
        verify(!create.enabled);
        // Escape cancels and clears the name.
        keyClick(Qt.Key_Escape);
        tryVerify(() => !sheet.visible);
        compare(t.tree.newFileName, "");

        // The name goes to the store as typed, leading space included.
        t.tree.showNewFileSheet(fixture.url(t.root + "/docs"));
        tryVerify(() => sheet.opened);
        keySequence(" ");
        keyClick(Qt.Key_N);
        keyClick(Qt.Key_O);
        keyClick(Qt.Key_T);
        keyClick(Qt.Key_E);
        verify(create.enabled);
        // Return creates wherever the focus is, as the sheet's default button.
        keyClick(Qt.Key_Tab);
        verify(!findChild(sheet.contentItem, "newFileName").activeFocus);
        keyClick(Qt.Key_Return);
        tryVerify(() => !sheet.visible);
        verify(fixture.exists(t.root + "/docs/note.md"));
        compare(PathNames.fromUrl(WorkspaceStore.selectedFileURL), t.root + "/docs/note.md");
        compare(t.tree.newFileName, "");
    }
}
