"""What the end-to-end tests share: the real application started in a scratch folder with a home
of its own, found on the accessibility bus, and used with the mouse and keys of the X server.
Everything a session starts ends with it."""
import os
import shutil
import signal
import subprocess
import sys
import tempfile
import time

import pyatspi

SHOTS = os.environ.get("PAGEWELL_SHOTS")  # a folder for screenshots, when asked
LOG_ERRORS = ("TypeError", "ReferenceError", "is not a type", "unavailable", "Binding loop",
              "editor page")


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


def click(node, button="1"):
    box = node.queryComponent().getExtents(pyatspi.DESKTOP_COORDS)
    subprocess.run(["xdotool", "mousemove", str(box.x + box.width // 2),
                    str(box.y + box.height // 2), "click", button], check=True)


def key(*keys):
    subprocess.run(["xdotool", "key", *keys], check=True)


def type_text(text):
    subprocess.run(["xdotool", "type", "--delay", "30", text], check=True)


def read(path):
    with open(path, encoding="utf-8") as f:
        return f.read()


def write(path, text, mode="w"):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, mode, encoding="utf-8") as f:
        f.write(text)


class Session:
    def __init__(self, app_path):
        self.app_path = app_path
        self.work = tempfile.mkdtemp(prefix="pagewell-e2e-")
        self.docs = os.path.join(self.work, "docs")
        home = os.path.join(self.work, "home")
        os.makedirs(home)
        # A stand-in for the desktop's opener, first on the path: what the application hands to
        # the desktop (a web address, a mail address) is written to `opened`, one per line.
        self.opened = os.path.join(self.work, "opened")
        opener = os.path.join(self.work, "bin", "xdg-open")
        write(opener, '#!/bin/sh\nprintf "%%s\\n" "$*" >> "%s"\n' % self.opened)
        os.chmod(opener, 0o755)
        self.env = dict(os.environ, HOME=home, XDG_CONFIG_HOME=os.path.join(self.work, "config"),
                        XDG_STATE_HOME=os.path.join(self.work, "state"), QT_QPA_PLATFORM="xcb",
                        QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1", LANG="C.UTF-8", LC_ALL="C.UTF-8",
                        PATH=os.path.dirname(opener) + os.pathsep + os.environ.get("PATH", ""))
        # The accessibility bus and its registry first: an application started before them
        # stays off the bus.
        self.desktop = pyatspi.Registry.getDesktop(0)
        self.desktop.childCount
        self.process = None
        self.app = None
        self.outputs = []

    def _application(self):
        for i in range(self.desktop.childCount):
            child = self.desktop.getChildAtIndex(i)
            if child is not None and (child.name or "").lower() == "pagewell" \
                    and child.childCount > 0:
                return child
        return None

    def start(self, *args):
        self.process = subprocess.Popen([self.app_path, *args], env=self.env,
                                        stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                                        start_new_session=True)
        self.app = wait_for("the application on the accessibility bus", self._application)

    def stop(self, sig=signal.SIGTERM):
        if self.process is None or self.process.poll() is not None:
            return
        os.killpg(self.process.pid, sig)
        try:
            self.outputs.append(self.process.communicate(timeout=10)[0].decode(errors="replace"))
        except subprocess.TimeoutExpired:
            os.killpg(self.process.pid, signal.SIGKILL)
            self.outputs.append(self.process.communicate()[0].decode(errors="replace"))
        self.app = None

    def running(self):
        return self.process is not None and self.process.poll() is None

    def finish(self):
        """Ends the application, removes the scratch folder and fails on errors in the log."""
        self.stop()
        shutil.rmtree(self.work, ignore_errors=True)
        output = "\n".join(self.outputs)
        for marker in LOG_ERRORS:
            if marker in output:
                print(output)
                fail("errors in the log: " + marker)

    def row(self, name):
        # Rows scrolled away or folded are kept for reuse, hidden.
        return find(self.app, lambda n: n.getRoleName() in ("tree item", "list item")
                    and n.name == name and n.getState().contains(pyatspi.STATE_VISIBLE))

    def label(self, text):
        return find(self.app, lambda n: n.getRoleName() == "label" and n.name == text)

    def named(self, role, name):
        return find(self.app, lambda n: n.getRoleName() == role and n.name == name
                    and n.getState().contains(pyatspi.STATE_SHOWING))

    def editor_field(self):
        """The editor's text field on the accessibility bus, or None."""
        page = find(self.app, lambda n: n.getRoleName() == "document web" and n.childCount > 0)
        return find(page, lambda n: n.getRoleName() == "text"
                    and n.getState().contains(pyatspi.STATE_EDITABLE))

    def editor_text(self):
        """The editor's text as a screen reader reads it (the lines drawn), or None."""
        field = self.editor_field()
        try:
            return field.queryText().getText(0, -1) if field else None
        except Exception:
            return None

    def text_point(self, text):
        """Where the editor draws `text` on the screen (the web view tells its own positions)."""
        pane = self.named("panel", "Texte du document").queryComponent()
        piece = find(self.app, lambda n: n.getRoleName() == "label" and n.name == text)
        x, y, _, _ = pane.getExtents(pyatspi.DESKTOP_COORDS)
        dx, dy, width, height = piece.queryComponent().getExtents(pyatspi.DESKTOP_COORDS)
        return x + dx + width // 2, y + dy + height // 2

    def shot(self, name):
        if SHOTS:
            subprocess.run(["import", "-window", "root", os.path.join(SHOTS, name + ".png")])
