import QtQuick
import QtQuick.Controls
import QtTest
import Pagewell

// The folder tree's sheets on real folders: new names never replace a file, renaming with its
// name preselected and taken names refused, the question about links, moving by the keyboard,
// and the links leading to the open document beside its outline.
TestCase {
    id: test

    name: "Tree"
    width: 900
    height: 700
    visible: true
    when: windowShown

    Component {
        id: treeComponent

        FolderTreeView {
            width: 300
            height: 600
        }
    }

    Component {
        id: inspectorComponent

        OutlineInspectorView {
            width: 260
            height: 600
        }
    }

    function test_newFileSheetRefusesTakenNames() {
        const root = fixture.makeFolder(["untitled.md"]);
        WorkspaceStore.openFolder(fixture.url(root));
        const tree = createTemporaryObject(treeComponent, test);
        WorkspaceStore.createUntitledFile();
        verify(fixture.exists(root + "/untitled 2.md"));
        compare(fixture.read(root + "/untitled.md"), "# untitled.md\n");
        tree.showNewFileSheet(fixture.url(root));
        tryVerify(() => tree.newFileSheet.opened);
        tree.newFileName = "untitled";
        const refusal = findChild(tree.newFileSheet.contentItem, "newFileRefusal");
        const create = findChild(tree.newFileSheet.contentItem, "createButton");
        compare(refusal.text, "«\u00a0untitled.md\u00a0» existe déjà dans ce dossier.");
        verify(!create.enabled);
        tree.newFileName = "autre";
        compare(refusal.text, "");
        verify(create.enabled);
        tree.newFileSheet.reject();
    }

    function test_renameAsksAboutLinks() {
        const root = fixture.makeFolder(["Guide.md", "autre.md"]);
        fixture.write(root + "/index.md", "[g](Guide.md)\n");
        WorkspaceStore.openFolder(fixture.url(root));
        const tree = createTemporaryObject(treeComponent, test);
        const sheet = tree.renameSheet;
        sheet.show(fixture.url(root + "/Guide.md"), "Guide.md", false);
        tryVerify(() => sheet.opened);
        // The name without its extension is selected, to be typed over.
        compare(sheet.nameField.selectedText, "Guide");
        const button = findChild(sheet.contentItem, "renameButton");
        verify(!button.enabled);
        sheet.nameField.text = "autre.md";
        compare(sheet.refusal, "«\u00a0autre.md\u00a0» existe déjà dans ce dossier.");
        verify(!button.enabled);
        // A change of case only is a rename.
        sheet.nameField.text = "guide.md";
        verify(button.enabled);
        mouseClick(button);
        const dialog = tree.linkDialog;
        tryVerify(() => dialog.opened);
        compare(dialog.question, "1 lien dans 1 document mène à «\u00a0Guide.md\u00a0».");
        compare(dialog.documents, ["index.md"]);
        mouseClick(findChild(dialog.contentItem, "updateLinksButton"));
        tryVerify(() => fixture.exists(root + "/guide.md") && !fixture.exists(root + "/Guide.md"));
        compare(fixture.read(root + "/index.md"), "[g](guide.md)\n");
        verify(WorkspaceStore.operationMessage.indexOf("renommé en") > 0);

        // No link leads to it: no question.
        sheet.show(fixture.url(root + "/autre.md"), "autre.md", false);
        tryVerify(() => sheet.opened);
        sheet.nameField.text = "seul.md";
        sheet.rename();
        verify(!dialog.opened);
        verify(fixture.exists(root + "/seul.md"));
    }

    function test_moveByTheKeyboard() {
        const root = fixture.makeFolder(["a/x.md", "a/b/", "c/", "doc.md"]);
        WorkspaceStore.openFolder(fixture.url(root));
        const tree = createTemporaryObject(treeComponent, test);
        const dialog = tree.moveDialog;
        // A folder never goes into itself, below itself, or where it already is.
        dialog.show(fixture.url(root + "/a"));
        tryVerify(() => dialog.opened);
        compare(dialog.choices.count, 1);
        compare(dialog.choices.urlAt(0), fixture.url(root + "/c"));
        dialog.close();
        dialog.show(fixture.url(root + "/doc.md"));
        tryVerify(() => dialog.opened);
        compare(dialog.choices.count, 3); // a, a/b, c
        dialog.filterField.text = "b";
        compare(dialog.choices.count, 1);
        dialog.filterField.forceActiveFocus();
        keyClick(Qt.Key_Return);
        tryVerify(() => fixture.exists(root + "/a/b/doc.md"));
        verify(!fixture.exists(root + "/doc.md"));
    }

    function test_backlinksBesideTheOutline() {
        const root = fixture.makeFolder(["cible.md", "seul.md"]);
        fixture.write(root + "/a.md", "# A\n\nVoir [la cible](cible.md).\n");
        WorkspaceStore.openFolder(fixture.url(root), fixture.url(root + "/cible.md"));
        const inspector = createTemporaryObject(inspectorComponent, test);
        tryCompare(inspector.backlinks, "count", 1);
        const list = findChild(inspector, "backlinkList");
        tryVerify(() => list.itemAtIndex(0) !== null);
        compare(list.itemAtIndex(0).Accessible.name, "a.md, ligne 3 : Voir [la cible](cible.md).");
        // A click opens the document holding the link.
        mouseClick(list.itemAtIndex(0));
        tryCompare(WorkspaceStore, "selectedFileURL", fixture.url(root + "/a.md"));
        WorkspaceStore.openFile(fixture.url(root + "/seul.md"));
        tryCompare(inspector.backlinks, "count", 0);
        verify(findChild(inspector, "noBacklinks").visible);
    }
}
