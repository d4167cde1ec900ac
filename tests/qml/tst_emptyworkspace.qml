import QtQuick
import QtTest
import Pagewell

TestCase {
    id: test

    name: "EmptyWorkspace"
    width: 900
    height: 700
    visible: true
    when: windowShown

    Component {
        id: screen

        EmptyWorkspaceView {
            anchors.fill: parent
        }
    }

    function test_recentFolders() {
        for (let i = 1; i <= 7; ++i)
            WorkspaceStore.openFolder(fixture.url(fixture.makeFolder(["r" + i + ".md"])));
        const view = createTemporaryObject(screen, test);
        const block = findChild(view, "recentFolders");
        verify(block.visible);
        const rows = findChild(view, "recentRows");
        // Seven remembered folders show five, most recent first.
        compare(rows.count, 5);
        compare(rows.itemAt(0).modelData, WorkspaceStore.recentFolderPaths[0]);
        compare(rows.itemAt(0).text, WorkspaceStore.recentFolderPaths[0].split("/").pop());

        // A row opens its folder.
        const fourth = WorkspaceStore.recentFolderPaths[3];
        mouseClick(rows.itemAt(3));
        compare(PathNames.fromUrl(WorkspaceStore.rootURL), fourth);
        compare(WorkspaceStore.recentFolderPaths[0], fourth);

        // Clearing the history hides the whole block.
        mouseClick(findChild(view, "clearRecentsButton"));
        compare(WorkspaceStore.recentFolderPaths.length, 0);
        verify(!block.visible);
    }

    function test_chooseFolderAsksTheScene() {
        const view = createTemporaryObject(screen, test);
        const spy = createTemporaryObject(spyComponent, test, {
                "target": view
            });
        mouseClick(findChild(view, "chooseFolderButton"));
        compare(spy.count, 1);
    }

    Component {
        id: spyComponent

        SignalSpy {
            signalName: "openFolder"
        }
    }
}
