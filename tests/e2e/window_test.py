#!/usr/bin/python3
"""The real application on a fixture folder, used through the accessibility bus as a person would:
the tree and its keys, a file, the header's texts, typing and saving, search, a new file and its
deletion, links, pictures and going back, the hand-over to a running instance, and the session
remembered."""
import os
import subprocess
import sys
import time

import pyatspi

from harness import Session, click, fail, find, key, press, read, type_text, wait_for, write


# A document whose markup steps aside away from the caret, every line of it.
LECTURE = ("Texte d'abord\n\n## Un **titre** *penché*\n\nVoir [le site](https://example.org \"Site\"), "
           "[[Guide|le guide]] et [[Index#Haut]], `du code` et \\*.\n\n> Une citation\n\n- une puce\n"
           "- [ ] une tâche\n\n---\n\nFin.\n")
# A pie chart: mermaid's newer parser, checked on the web view's own engine.
DIAGRAM = "pie title Répartition\n  \"Lu\" : 40\n  \"À lire\" : 60"


def read_if(path):
    return read(path) if os.path.exists(path) else ""


def main():
    s = Session(sys.argv[1])
    docs = s.docs
    write(os.path.join(docs, "README.md"), "# Accueil\n\nBienvenue dans la documentation.\n")
    write(os.path.join(docs, "guide", "start.md"), "# Démarrer\n\nTrois mots ici.\n")
    write(os.path.join(docs, "reference.md"),
          "# Référence\n\n" + "Une ligne.\n\n" * 60 + "## Options avancées\n\nEn bas.\n")
    # Links in three forms, a picture, and a link leading nowhere.
    write(os.path.join(docs, "liens.md"), "Voir [les options](reference.md#options-avancées), "
          "[le départ](<guide/start.md>) et [[Reference]]\n\n![schéma](img/schema.png)\n\n"
          "ou [[absent]]\n")
    write(os.path.join(docs, "adresses.md"), "[le site](https://example.org/docs)\n\n"
          "<mailto:equipe@example.org>\n")
    write(os.path.join(docs, "lecture.md"), LECTURE)
    write(os.path.join(docs, "schemas.md"), "Le flux :\n\n```mermaid\n" + DIAGRAM + "\n```\n\n"
          "Et $E = mc^2$ au bout.\n")
    os.makedirs(os.path.join(docs, "img"))
    subprocess.run(["convert", "-size", "320x120", "gradient:#3b7dd8-#e8f0fb",
                    os.path.join(docs, "img", "schema.png")], check=True)
    try:
        s.start(docs)
        # The readme opens with the folder, and the root's folder is open.
        wait_for("the tree", lambda: s.row("README.md") and s.row("guide") and s.row("start.md"))
        wait_for("the readme in the header", lambda: s.label("README.md") and s.label("6 mots"))
        # A screen reader reads the editor's text, without being asked for in the environment.
        if "QTWEBENGINE_ENABLE_LINUX_ACCESSIBILITY" in s.env:
            fail("the test's environment turns the web view's accessibility on by itself")
        wait_for("the editor's text through the accessibility bus",
                 lambda: "Bienvenue dans la documentation." in (s.editor_text() or ""))
        s.shot("e2e-readme")

        # A click on a file opens it; its header shows its place and its statistics, and the
        # keyboard stays in the tree.
        click(s.row("start.md"))
        wait_for("start.md in the header", lambda: s.label("guide/start.md")
                 and s.label("5 mots") and s.label("~1 min de lecture"))
        tree = find(s.app, lambda n: n.getRoleName() == "tree")
        time.sleep(0.5)
        if not tree.getState().contains(pyatspi.STATE_FOCUSED):
            fail("opening a file took the keyboard from the tree")
        # The keys walk the tree: Left goes up to the folder holding the file, then closes it;
        # the document stays.
        key("Left", "Left")
        wait_for("the folder to close", lambda: s.row("start.md") is None)
        if not s.label("guide/start.md"):
            fail("closing a folder changed the document")

        # Typing in the editor marks the document; Ctrl+S there saves it, once, byte for byte.
        start = os.path.join(docs, "guide", "start.md")
        watcher = subprocess.Popen(["inotifywait", "-m", "-q", "-e", "moved_to", "--format",
                                    "%f", os.path.dirname(start)], stdout=subprocess.PIPE,
                                   text=True)
        time.sleep(0.5)
        subprocess.run(["xdotool", "mousemove", "600", "600", "click", "1"], check=True)
        time.sleep(0.3)
        key("ctrl+End")
        type_text("Suite")
        wait_for("the unsaved dot", lambda: find(
            s.app, lambda n: n.name == "Modifications non enregistrées"))
        key("ctrl+s")
        wait_for("the text on disk", lambda: read(start) == "# Démarrer\n\nTrois mots ici.\nSuite")
        wait_for("the saved look", lambda: s.named("push button", "Enregistré"))
        s.shot("e2e-saved")
        time.sleep(0.5)
        watcher.terminate()
        saves = [line for line in watcher.communicate()[0].splitlines() if line == "start.md"]
        if len(saves) != 1:
            fail("Ctrl+S saved %d times" % len(saves))

        # Search, then open a hit.
        click(wait_for("the search field",
                       lambda: s.named("text", "Rechercher un fichier ou du texte...")))
        type_text("Bienvenue")
        hit = wait_for("the hit", lambda: s.named(
            "list item", "L3 README.md : Bienvenue dans la documentation."))
        s.shot("e2e-search")
        press(hit)
        wait_for("the readme from its hit", lambda: s.label("6 mots") and s.label("README.md"))
        # The hit's match is selected in the editor, which has the keyboard: typing replaces it.
        time.sleep(0.5)
        type_text("Salut")
        wait_for("the match typed over", lambda: "Salut dans la documentation."
                 in (s.editor_text() or ""))
        key("ctrl+z")
        wait_for("the readme as it was", lambda: "Bienvenue dans la documentation."
                 in (s.editor_text() or ""))

        # "Tout remplacer" (Ctrl+Shift+H) asks first, writes, and "Annuler" takes it back.
        reference = os.path.join(docs, "reference.md")
        before = read(reference)
        key("ctrl+shift+h")
        click(wait_for("the search field",
                       lambda: s.named("text", "Rechercher un fichier ou du texte...")))
        key("ctrl+a")
        type_text("ligne")
        wait_for("the hits", lambda: s.label("60 résultats dans 1 fichier"))
        click(wait_for("the replace field", lambda: s.named("text", "Remplacer par")))
        type_text("phrase")
        press(wait_for("Tout remplacer", lambda: s.named("push button", "Tout remplacer")))
        wait_for("the question", lambda: s.label("Remplacer 60 occurrences dans 1 document ?"))
        s.shot("e2e-replace")
        press(wait_for("Remplacer", lambda: s.named("push button", "Remplacer")))
        wait_for("the file replaced", lambda: read(reference) == before.replace("ligne", "phrase")
                 and s.label("60 occurrences remplacées dans 1 document."))
        press(wait_for("Annuler", lambda: s.named("push button", "Annuler")))
        wait_for("the file back", lambda: read(reference) == before)
        press(wait_for("the clear button", lambda: s.named("push button", "Effacer la recherche")))
        wait_for("the tree again", lambda: s.row("guide"))

        # "Aller au fichier..." (Ctrl+P): letters of the path in order, Return opens.
        key("ctrl+p")
        wait_for("the quick open field", lambda: s.named("text", "Nom du document"))
        time.sleep(0.3)
        type_text("gdstar")
        wait_for("the only match", lambda: s.named("list item", "start.md, guide")
                 and s.named("list", "Documents").description == "1 document")
        key("Return")
        wait_for("start.md from the panel", lambda: s.label("guide/start.md")
                 and not s.named("text", "Nom du document"))

        # A new file through the folder's context menu and its sheet.
        click(s.row("guide"), "3")
        press(wait_for("the menu item", lambda: s.named("menu item", "Nouveau fichier Markdown")))
        wait_for("the sheet", lambda: s.named("text", "Nom du nouveau fichier"))
        time.sleep(0.3)
        type_text("plan")
        s.shot("e2e-sheet")
        key("Return")
        plan = os.path.join(docs, "guide", "plan.md")
        wait_for("plan.md on disk and open", lambda: os.path.exists(plan) and s.label("plan.md"))
        if read(plan) != "# plan\n\n":
            fail("the new file's text: " + repr(read(plan)))

        # Deleted again from its own context menu.
        if not s.row("plan.md"):
            press(s.row("guide"))
        click(wait_for("the new row", lambda: s.row("plan.md")), "3")
        press(wait_for("Supprimer", lambda: s.named("menu item", "Supprimer")))
        wait_for("plan.md gone", lambda: not os.path.exists(plan) and s.row("plan.md") is None
                 and s.label("Aucun fichier sélectionné"))
        s.shot("e2e-deleted")

        # Ctrl+click on a link opens its document at its heading; Ctrl+Enter in a link leading
        # nowhere says so.
        click(s.row("liens.md"))
        wait_for("liens.md in the editor", lambda: "Voir" in (s.editor_text() or ""))
        # The picture shows under its line; a link leading nowhere is dotted (screenshot).
        wait_for("the picture", lambda: s.named("image", "schéma"))
        time.sleep(1)
        s.shot("e2e-links")
        x, y = s.text_point("les options")
        subprocess.run(["xdotool", "mousemove", str(x), str(y), "keydown", "ctrl", "click", "1",
                        "keyup", "ctrl"], check=True)
        # The editor draws only the lines near the screen: the heading, not the top.
        at_heading = lambda: "Options avancées" in (s.editor_text() or "") \
            and "Référence" not in s.editor_text()
        wait_for("the linked document at its heading", at_heading)
        # "Précédent" (Alt+Left, from the text) comes back, "Suivant" goes forth again.
        key("alt+Left")
        wait_for("back to the links", lambda: "Voir" in (s.editor_text() or ""))
        press(wait_for("Suivant", lambda: s.named("push button", "Suivant")))
        wait_for("forth to the linked document", lambda: "Options avancées" in s.editor_text())
        # The mouse's back button, over the text, comes back too.
        subprocess.run(["xdotool", "mousemove", "600", "400", "click", "8"], check=True)
        wait_for("back with the mouse", lambda: "Voir" in (s.editor_text() or ""))
        click(s.row("liens.md"))
        wait_for("liens.md again", lambda: "Voir" in (s.editor_text() or ""))
        subprocess.run(["xdotool", "mousemove", "600", "600", "click", "1"], check=True)
        time.sleep(0.3)
        key("ctrl+End")
        key("Left", "Left", "Left", "Left")
        key("ctrl+Return")
        message = "Le lien \u00ab\u00a0[[absent]]\u00a0\u00bb ne m\u00e8ne \u00e0 aucun document du dossier."
        wait_for("the message", lambda: s.label(message))
        s.shot("e2e-link-missing")
        press(wait_for("OK", lambda: s.named("push button", "OK")))
        wait_for("the alert to close", lambda: not s.label(message))

        # Addresses go to the desktop, a web address and a mail address alike.
        click(s.row("adresses.md"))
        wait_for("adresses.md in the editor", lambda: "le site" in (s.editor_text() or ""))
        subprocess.run(["xdotool", "mousemove", "600", "600", "click", "1"], check=True)
        time.sleep(0.3)
        key("ctrl+Home", "Right", "Right", "Right", "ctrl+Return")
        wait_for("the web address handed to the desktop",
                 lambda: "https://example.org/docs" in read_if(s.opened))
        key("Down", "Down", "ctrl+Return")
        wait_for("the mail address handed to the desktop",
                 lambda: "mailto:equipe@example.org" in read_if(s.opened))

        # A document read as a page: with the markup stepped aside, a screen reader still reads
        # the text as written. A diagram and a formula are drawn by the web view's own engine.
        # (The web view leaves empty lines out, and a task's box, a button, splits its line.)
        click(s.row("lecture.md"))
        characters = lambda text: "".join((text or "").split())
        wait_for("the page's text as written",
                 lambda: characters(s.editor_text()) == characters(LECTURE))
        s.shot("e2e-page")
        click(s.row("schemas.md"))
        wait_for("the diagram drawn", lambda: find(
            s.app, lambda n: n.getRoleName() == "image" and n.name == " ".join(DIAGRAM.split())))
        # A typeset formula reads as its TeX, without its dollars.
        wait_for("the formula typeset", lambda: "E = mc^2" in (s.editor_text() or "")
                 and "$E" not in s.editor_text())
        s.shot("e2e-diagram")

        # A second start hands its file to this instance and ends at once.
        second = subprocess.run([s.app_path, os.path.join(docs, "README.md")], env=s.env,
                                timeout=30, capture_output=True)
        if second.returncode != 0:
            fail("the second start failed: " + second.stdout.decode(errors="replace"))
        wait_for("the handed file", lambda: s.label("README.md") and s.label("6 mots"))
        if not s.running():
            fail("the application exited")

        conf = os.path.join(s.env["XDG_CONFIG_HOME"], "Pagewell", "Pagewell.conf")
        if "Pagewell.LastFile=" + os.path.join(docs, "README.md") not in read(conf):
            fail("the last file is not remembered: " + read(conf))

        # Quit and start again: the session comes back.
        s.stop()
        s.start()
        wait_for("the restored session", lambda: s.label("README.md") and s.label("6 mots")
                 and s.row("guide"))
        s.shot("e2e-restored")
    finally:
        s.finish()
    print("PASS: tree, typing and Ctrl+S, search, go to a file, new file, delete, links, addresses, "
          "a page read as written, a diagram and a formula, hand-over, restart")
    print("1 passed, 0 failed")


if __name__ == "__main__":
    main()
