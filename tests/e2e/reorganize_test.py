#!/usr/bin/python3
"""Reorganizing a linked folder in the real window, through the accessibility bus and the mouse:
the links leading to the open document, a rename from the context menu with the question about
links, its undo from the notice, and a drag of a row onto a folder."""
import os
import subprocess
import sys
import time

from harness import Session, click, fail, find, key, press, read, type_text, wait_for, write

README = "# Accueil\n\nVoir [l'installation](guide/install.md#linux) et [[install]].\n"


def quoted(name):
    """A name between guillemets, kept with them by no-break spaces."""
    return "«\u00a0" + name + "\u00a0»"


def drag(source, target):
    """Drags one node onto another with the mouse, in small steps as a hand does."""
    a = source.queryComponent().getExtents(0)
    b = target.queryComponent().getExtents(0)
    x0, y0 = a.x + a.width // 3, a.y + a.height // 2
    x1, y1 = b.x + b.width // 3, b.y + b.height // 2
    subprocess.run(["xdotool", "mousemove", str(x0), str(y0), "mousedown", "1"], check=True)
    for i in range(1, 13):
        subprocess.run(["xdotool", "mousemove", str(x0 + (x1 - x0) * i // 12),
                        str(y0 + (y1 - y0) * i // 12)], check=True)
        time.sleep(0.05)
    time.sleep(0.3)
    subprocess.run(["xdotool", "mouseup", "1"], check=True)


def main():
    s = Session(sys.argv[1])
    docs = s.docs
    readme = os.path.join(docs, "README.md")
    write(readme, README)
    write(os.path.join(docs, "guide", "install.md"), "# Installer\n\n## Linux\n\n[Accueil](../README.md)\n")
    os.makedirs(os.path.join(docs, "archive"))
    try:
        s.start(docs)
        wait_for("the tree", lambda: s.row("README.md") and s.row("install.md"))

        # The links leading to the open document, with the line holding each.
        click(s.row("install.md"))
        wait_for("install.md open", lambda: s.label("guide/install.md"))
        wait_for("the incoming link",
                 lambda: s.row("README.md, ligne 3 : " + README.splitlines()[2]))
        s.shot("e2e-backlinks")

        # Renamed from its context menu: the name is selected without its extension.
        click(s.row("install.md"), "3")
        press(wait_for("Renommer...", lambda: s.named("menu item", "Renommer...")))
        wait_for("the sheet", lambda: s.named("text", "Nouveau nom"))
        time.sleep(0.3)
        type_text("mise-en-place")
        s.shot("e2e-rename-sheet")
        key("Return")
        wait_for("the question about links",
                 lambda: s.label("2 liens dans 1 document mènent à " + quoted("install.md") + "."))
        s.shot("e2e-links-dialog")
        press(s.named("push button", "Mettre à jour les liens"))
        renamed = os.path.join(docs, "guide", "mise-en-place.md")
        wait_for("the file renamed and the links rewritten", lambda: os.path.exists(renamed)
                 and read(readme) == README.replace("guide/install.md", "guide/mise-en-place.md")
                 .replace("[[install]]", "[[mise-en-place]]"))
        message = (quoted("install.md") + " renommé en " + quoted("mise-en-place.md")
                   + "\u00a0; 2 liens mis à jour dans 1 document.")
        wait_for("the notice", lambda: s.label(message))
        wait_for("the header follows", lambda: s.label("guide/mise-en-place.md"))
        s.shot("e2e-renamed")

        # "Annuler" puts the name and the links back.
        press(s.named("push button", "Annuler"))
        wait_for("the rename taken back", lambda: not os.path.exists(renamed)
                 and read(readme) == README and s.row("install.md"))

        # A drag onto a folder moves the document there, links kept.
        drag(s.row("install.md"), s.row("archive"))
        # The wiki link still leads there from the same name: only the path changes.
        wait_for("the question about links after the drop",
                 lambda: s.label("1 lien dans 1 document mène à " + quoted("install.md") + "."))
        press(s.named("push button", "Mettre à jour les liens"))
        moved = os.path.join(docs, "archive", "install.md")
        wait_for("the file moved", lambda: os.path.exists(moved))
        if read(readme) != README.replace("guide/install.md", "archive/install.md"):
            fail("the links after the move: " + repr(read(readme)))
        if read(moved) != "# Installer\n\n## Linux\n\n[Accueil](../README.md)\n":
            fail("the moved document's own link: " + repr(read(moved)))
        wait_for("the move's notice", lambda: find(s.app, lambda n: n.getRoleName() == "label"
                                                   and "déplacé vers " + quoted("archive") in (n.name or "")))
        s.shot("e2e-moved")
        print("1 passed, 0 failed")
    finally:
        s.finish()


if __name__ == "__main__":
    main()
