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

    // Expanding and opening are the model's and the end-to-end test's; here, what the view adds.
    function test_rowsAndMenu() {
        const t = openTree(["A/C/deep.md", "B/b.md", "x.md"]);
        // A right click opens the context menu and leaves the folder as it was.
        mouseClick(rowNamed(t.tree, "A"), 20, 10, Qt.RightButton);
        compare(names(t.tree), ["A", "C", "B", "b.md", "x.md"]);
        tryVerify(() => t.tree.contextMenu.visible);
        verify(t.tree.contextMenu.forFolder);
        t.tree.contextMenu.close();
        tryVerify(() => !t.tree.contextMenu.visible);
        // The selected row takes the selected look.
        tryVerify(() => rowNamed(t.tree, "b.md") !== null);
        mouseClick(rowNamed(t.tree, "b.md"));
        verify(rowNamed(t.tree, "b.md").isSelected);
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

    // Creating through the sheet is the end-to-end test's; here, the sheet's own rules.
    function test_newFileSheet() {
        const t = openTree(["docs/a.md"]);
        t.tree.showNewFileSheet(fixture.url(t.root + "/docs"));
        const sheet = t.tree.newFileSheet;
        tryVerify(() => sheet.opened);
        const create = findChild(sheet.contentItem, "createButton");
        // Blank names keep "Créer" disabled; Escape cancels and clears the name.
        keyClick(Qt.Key_Space);
        verify(!create.enabled);
        keyClick(Qt.Key_Escape);
        tryVerify(() => !sheet.visible);
        compare(t.tree.newFileName, "");
        // Return creates wherever the focus is, as the sheet's default button.
        t.tree.showNewFileSheet(fixture.url(t.root + "/docs"));
        tryVerify(() => sheet.opened);
        keyClick(Qt.Key_N);
        keyClick(Qt.Key_Tab);
        keyClick(Qt.Key_Return);
        tryVerify(() => !sheet.visible);
        verify(fixture.exists(t.root + "/docs/n.md"));
    }
}
