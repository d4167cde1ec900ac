#!/usr/bin/python3
"""The window following the disk, used through the accessibility bus: another program's changes
to the open document (clean, then modified), and edits that come back after switching files and
after the application was killed."""
import os
import signal
import sys
import time

import pyatspi

from harness import Session, click, fail, find, key, press, read, type_text, wait_for, write

EDITOR = ("xdotool", "mousemove", "600", "600", "click", "1")


def type_at_end(s, text):
    os.spawnvp(os.P_WAIT, EDITOR[0], EDITOR)
    # Keys sent before the click has given the text the keyboard would be lost.
    wait_for("the keyboard in the editor", lambda: s.editor_field() is not None
             and s.editor_field().getState().contains(pyatspi.STATE_FOCUSED))
    key("ctrl+End")
    type_text(text)


def main():
    s = Session(sys.argv[1])
    readme = os.path.join(s.docs, "README.md")
    write(readme, "# Accueil\n\nBienvenue.\n")
    write(os.path.join(s.docs, "guide", "start.md"), "# Démarrer\n")
    dirty = lambda: find(s.app, lambda n: n.name == "Modifications non enregistrées"
                         and n.getState().contains(pyatspi.STATE_SHOWING))
    try:
        s.start(s.docs)
        wait_for("the readme", lambda: s.label("README.md") and s.label("3 mots"))

        # Another program appends to the clean document: the page takes the line, so what is
        # typed next is saved after it.
        write(readme, "Ligne de git.\n", "a")
        wait_for("the new text in the header", lambda: s.label("6 mots"))
        if dirty():
            fail("a text from the disk marked the document modified")
        type_at_end(s, "Z")
        key("ctrl+s")
        wait_for("the save", lambda: read(readme) == "# Accueil\n\nBienvenue.\nLigne de git.\nZ")

        # Modified here and changed there: the bar, Ctrl+S writes nothing, then the edits win.
        type_at_end(s, " mien")
        wait_for("the unsaved dot", dirty)
        write(readme, "\nAutre.\n", "a")
        theirs = read(readme)
        wait_for("the bar", lambda: s.label("« README.md » a été modifié sur le disque."))
        s.shot("e2e-bar-changed")
        key("ctrl+s")
        wait_for("the reason the save waits", lambda: s.label(
            "Rien n'a été enregistré\u00a0: choisissez d'abord «\u00a0Recharger\u00a0» ou "
            "«\u00a0Garder mes modifications\u00a0»."))
        s.shot("e2e-bar-held")
        if read(readme) != theirs:
            fail("a save wrote over another program's text")
        press(wait_for("the keep button", lambda: s.named("push button",
                                                          "Garder mes modifications")))
        key("ctrl+s")
        wait_for("the edits saved",
                 lambda: read(readme) == "# Accueil\n\nBienvenue.\nLigne de git.\nZ mien")

        # Edits dropped by opening another file come back with "Rétablir", unwritten.
        type_at_end(s, " brouillon")
        wait_for("the unsaved dot", dirty)
        click(s.row("start.md"))
        wait_for("start.md open", lambda: s.label("guide/start.md"))
        click(s.row("README.md"))
        draft_bar = "Des modifications non enregistrées de « README.md » ont été retrouvées."
        wait_for("the draft bar", lambda: s.label(draft_bar))
        s.shot("e2e-bar-draft")
        saved = read(readme)
        press(s.named("push button", "Rétablir"))
        wait_for("the draft taken back", lambda: dirty() and s.label(draft_bar) is None)
        if read(readme) != saved:
            fail("taking a draft back wrote the file")

        # Killed after typing: the next start offers the typed text and writes nothing.
        type_at_end(s, " final")
        time.sleep(2)  # a draft is written at most a second after the last edit
        s.stop(signal.SIGKILL)
        s.start()
        wait_for("the draft bar after the crash", lambda: s.label(draft_bar))
        press(s.named("push button", "Rétablir"))
        wait_for("the draft taken back", dirty)
        if read(readme) != saved:
            fail("the restored draft was written")
        key("ctrl+s")
        wait_for("the typed text saved", lambda: read(readme) == saved + " brouillon final")
    finally:
        s.finish()
    print("PASS: clean and modified documents changed on disk, drafts")
    print("1 passed, 0 failed")


if __name__ == "__main__":
    main()
