#!/usr/bin/python3
"""Starts the real application under its own Xvfb and session bus, on a fixture folder, and uses
it through the accessibility bus as a person would: the tree, a file, the header's texts, the
session remembered. Everything it starts ends with it."""
import os
import signal
import subprocess
import sys
import tempfile
import time

APP = sys.argv[1]
SHOTS = os.environ.get("PAGEWELL_SHOTS")  # a folder for screenshots, when asked


def fail(message):
    print("FAIL:", message)
    print("0 passed, 1 failed")
    sys.exit(1)


def find(node, predicate, depth=0):
    if node is None or depth > 40:
        return None
    try:
        if predicate(node):
            return node
        for i in range(node.childCount):
            found = find(node.getChildAtIndex(i), predicate, depth + 1)
            if found is not None:
                return found
    except Exception:
        return None
    return None


def wait_for(what, check, timeout=60):
    end = time.time() + timeout
    while time.time() < end:
        value = check()
        if value:
            return value
        time.sleep(0.2)
    fail("timed out waiting for " + what)


def press(node):
    action = node.queryAction()
    for i in range(action.nActions):
        if action.getName(i) in ("press", "Press", "click", "Click"):
            action.doAction(i)
            return
    action.doAction(0)


def main():
    import pyatspi

    work = tempfile.mkdtemp(prefix="pagewell-e2e-")
    docs = os.path.join(work, "docs")
    os.makedirs(os.path.join(docs, "guide"))
    with open(os.path.join(docs, "README.md"), "w") as f:
        f.write("# Accueil\n\nBienvenue dans la documentation.\n")
    with open(os.path.join(docs, "guide", "start.md"), "w") as f:
        f.write("# Démarrer\n\nTrois mots ici.\n")
    env = dict(os.environ, HOME=os.path.join(work, "home"),
               XDG_CONFIG_HOME=os.path.join(work, "config"), QT_QPA_PLATFORM="xcb",
               QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1", LANG="C.UTF-8", LC_ALL="C.UTF-8")
    os.makedirs(env["HOME"])
    # The accessibility bus and its registry first: an application started before them stays
    # off the bus.
    desktop = pyatspi.Registry.getDesktop(0)
    desktop.childCount
    def launch(command):
        return subprocess.Popen(command, env=env, stdout=subprocess.PIPE,
                                stderr=subprocess.STDOUT, start_new_session=True)

    outputs = []

    def stop(process):
        os.killpg(process.pid, signal.SIGTERM)
        try:
            outputs.append(process.communicate(timeout=10)[0].decode(errors="replace"))
        except subprocess.TimeoutExpired:
            os.killpg(process.pid, signal.SIGKILL)
            outputs.append(process.communicate()[0].decode(errors="replace"))

    def application(desktop):
        for i in range(desktop.childCount):
            child = desktop.getChildAtIndex(i)
            if child is not None and (child.name or "").lower() == "pagewell" \
                    and child.childCount > 0:
                return child
        return None

    app = launch([APP, docs])
    try:
        window_app = wait_for("the application on the accessibility bus",
                              lambda: application(desktop))

        def row(name):
            # Rows scrolled away or folded are kept for reuse, hidden.
            return find(window_app, lambda n: n.getRoleName() in ("tree item", "list item")
                        and n.name == name and n.getState().contains(pyatspi.STATE_VISIBLE))

        # The readme opens with the folder, and the root's folder is open.
        wait_for("the tree", lambda: row("README.md") and row("guide") and row("start.md"))
        label = lambda text: find(window_app, lambda n: n.getRoleName() == "label"
                                  and n.name == text)
        wait_for("the readme in the header", lambda: label("README.md") and label("6 mots"))
        if SHOTS:
            subprocess.run(["import", "-window", "root", os.path.join(SHOTS, "e2e-readme.png")])

        # A click on a file opens it; its header shows its place and its statistics, and the
        # keyboard stays in the tree.
        extents = row("start.md").queryComponent().getExtents(pyatspi.DESKTOP_COORDS)
        subprocess.run(["xdotool", "mousemove", str(extents.x + extents.width // 2),
                        str(extents.y + extents.height // 2), "click", "1"], check=True)
        wait_for("start.md in the header", lambda: label("guide/start.md") and label("5 mots")
                 and label("~1 min de lecture"))
        tree = find(window_app, lambda n: n.getRoleName() == "tree")
        time.sleep(0.5)
        if not tree.getState().contains(pyatspi.STATE_FOCUSED):
            fail("opening a file took the keyboard from the tree")
        press(row("guide"))  # a folder closes, the document stays
        wait_for("the folder to close", lambda: row("start.md") is None)
        if not label("guide/start.md"):
            fail("closing a folder changed the document")

        # Typing in the editor marks the document; Ctrl+S there saves it, once, byte for byte.
        start = os.path.join(docs, "guide", "start.md")
        watcher = subprocess.Popen(["inotifywait", "-m", "-q", "-e", "moved_to", "--format",
                                    "%f", os.path.dirname(start)], stdout=subprocess.PIPE,
                                   text=True)
        time.sleep(0.5)
        subprocess.run(["xdotool", "mousemove", "600", "600", "click", "1"], check=True)
        time.sleep(0.3)
        subprocess.run(["xdotool", "key", "ctrl+End"], check=True)
        subprocess.run(["xdotool", "type", "--delay", "30", "Suite"], check=True)
        wait_for("the unsaved dot", lambda: find(
            window_app, lambda n: n.name == "Modifications non enregistrées"))
        subprocess.run(["xdotool", "key", "ctrl+s"], check=True)
        wait_for("the text on disk", lambda: open(start, encoding="utf-8").read()
                 == "# Démarrer\n\nTrois mots ici.\nSuite")
        wait_for("the saved look", lambda: label("Enregistré") or find(
            window_app, lambda n: n.getRoleName() == "push button" and n.name == "Enregistré"))
        if SHOTS:
            subprocess.run(["import", "-window", "root", os.path.join(SHOTS, "e2e-saved.png")])
        time.sleep(0.5)
        watcher.terminate()
        saves = [line for line in watcher.communicate()[0].splitlines() if line == "start.md"]
        if len(saves) != 1:
            fail("Ctrl+S saved %d times" % len(saves))

        def shot(name):
            if SHOTS:
                subprocess.run(["import", "-window", "root", os.path.join(SHOTS, name + ".png")])

        def click(node, button="1"):
            box = node.queryComponent().getExtents(pyatspi.DESKTOP_COORDS)
            subprocess.run(["xdotool", "mousemove", str(box.x + box.width // 2),
                            str(box.y + box.height // 2), "click", button], check=True)

        named = lambda role, name: find(window_app, lambda n: n.getRoleName() == role
                                        and n.name == name and n.getState().contains(
                                            pyatspi.STATE_SHOWING))

        # Search, then open a hit.
        click(wait_for("the search field", lambda: named("text", "Rechercher un fichier ou du texte...")))
        subprocess.run(["xdotool", "type", "--delay", "30", "Bienvenue"], check=True)
        hit = wait_for("the hit", lambda: named("list item",
                                                "L3 README.md : Bienvenue dans la documentation."))
        shot("e2e-search")
        press(hit)
        wait_for("the readme from its hit", lambda: label("6 mots") and label("README.md"))
        press(wait_for("the clear button", lambda: named("push button", "Effacer la recherche")))
        wait_for("the tree again", lambda: row("guide"))

        # A new file through the folder's context menu and its sheet.
        click(row("guide"), "3")
        press(wait_for("the menu item", lambda: named("menu item", "Nouveau fichier Markdown")))
        wait_for("the sheet", lambda: named("text", "Nom du nouveau fichier"))
        time.sleep(0.3)
        subprocess.run(["xdotool", "type", "--delay", "30", "plan"], check=True)
        shot("e2e-sheet")
        subprocess.run(["xdotool", "key", "Return"], check=True)
        plan = os.path.join(docs, "guide", "plan.md")
        wait_for("plan.md on disk and open", lambda: os.path.exists(plan) and label("plan.md"))
        if open(plan, encoding="utf-8").read() != "# plan\n\n":
            fail("the new file's text: " + repr(open(plan, encoding="utf-8").read()))

        # Deleted again from its own context menu.
        if not row("plan.md"):
            press(row("guide"))
        click(wait_for("the new row", lambda: row("plan.md")), "3")
        press(wait_for("Supprimer", lambda: named("menu item", "Supprimer")))
        wait_for("plan.md gone", lambda: not os.path.exists(plan) and row("plan.md") is None
                 and label("Aucun fichier sélectionné"))
        shot("e2e-deleted")

        # A second start hands its file to this instance and ends at once.
        second = subprocess.run([APP, os.path.join(docs, "README.md")], env=env, timeout=30,
                                capture_output=True)
        if second.returncode != 0:
            fail("the second start failed: " + second.stdout.decode(errors="replace"))
        wait_for("the handed file", lambda: label("README.md") and label("6 mots"))
        if app.poll() is not None:
            fail("the application exited")

        conf = os.path.join(env["XDG_CONFIG_HOME"], "Pagewell", "Pagewell.conf")
        stored = open(conf).read()
        if "Pagewell.LastFile=" + os.path.join(docs, "README.md") not in stored:
            fail("the last file is not remembered: " + stored)

        # Quit and start again: the session comes back.
        output = stop(app)
        app = launch([APP])
        window_app = wait_for("the restarted application", lambda: application(desktop))
        wait_for("the restored session", lambda: label("README.md") and label("6 mots")
                 and row("guide"))
        shot("e2e-restored")
    finally:
        if app.poll() is None:
            stop(app)
        subprocess.run(["rm", "-rf", work])
    output = "\n".join(outputs)
    for marker in ("TypeError", "ReferenceError", "is not a type", "unavailable", "Binding loop",
                   "editor page"):
        if marker in output:
            print(output)
            fail("errors in the log: " + marker)
    print("PASS: tree, typing and Ctrl+S, search, new file, delete, hand-over, restart")
    print("1 passed, 0 failed")


if __name__ == "__main__":
    main()
