// The editor page in Chromium, driven as the host drives it, with a fake bridge.
import { test, before, after } from "node:test";
import assert from "node:assert/strict";
import { launch, openEditor, settle } from "./page.mjs";

let browser;
before(async () => {
  browser = await launch();
});
after(async () => {
  await browser?.close();
});

async function withEditor(run, options) {
  const editor = await openEditor(browser, options);
  try {
    await run(editor);
    assert.deepEqual(editor.errors, [], "no console error");
  } finally {
    await editor.close();
  }
}

const types = (messages) => messages.map((m) => m.type);
const lastContent = (messages) => messages.filter((m) => m.type === "contentChanged").at(-1)?.markdown;

// The caret's line number and how far its line stands below the top of the view, in pixels.
function caretLine(page) {
  return page.evaluate(() => {
    const view = window.__pagewellEditor.view;
    const line = view.state.doc.lineAt(view.state.selection.main.head);
    return { line: line.number, top: view.coordsAtPos(line.from).top - view.scrollDOM.getBoundingClientRect().top };
  });
}

async function focusEnd(page) {
  await page.click(".cm-content");
  await page.keyboard.press("Control+End");
}

test("loading text posts the outline once, never the text", async () => {
  await withEditor(async ({ page, messages, clearMessages }) => {
    await page.evaluate(() => window.Pagewell.init("# Début\n", false));
    assert.deepEqual(await messages(), [{ type: "headingsUpdated", headings: [{ id: "début", level: 1, text: "Début" }] }]);
    await clearMessages();
    // Front matter is shown as metadata, folded, and left out of the outline.
    await page.evaluate(() => window.Pagewell.setContent("---\ntitle: Guide\n---\nTitre\n=====\n\n## Suite\ntexte", "/w/a.md"));
    await settle(page);
    assert.equal(await page.textContent(".cm-properties"), "Propriétés (1)");
    assert.deepEqual(await messages(), [
      {
        type: "headingsUpdated",
        headings: [
          { id: "titre", level: 1, text: "Titre" },
          { id: "suite", level: 2, text: "Suite" },
        ],
      },
    ]);
    // What is typed then is posted for that document.
    await focusEnd(page);
    await page.keyboard.type("!");
    assert.equal((await messages()).find((m) => m.type === "contentChanged").path, "/w/a.md");
  });
});

test("a document's first screen shows styled at once, even on a busy machine", async () => {
  await withEditor(
    async ({ page }) => {
      const lines = ["# Titre", "", "```js"];
      for (let i = 0; i < 12; i++) lines.push(`const valeur${i} = [${i}, "texte ${i}", { clé: ${i} }];`);
      lines.push("```", "", "## Fin", "", "Avec **gras** et `code`.");
      // (Read in the task that brings the text: no idle parse has run yet.)
      const shown = await page.evaluate((t) => {
        window.Pagewell.setContent(t, "/w/a.md");
        const count = (selector) => document.querySelectorAll(selector).length;
        const bold = [...document.querySelectorAll(".cm-line span")].filter((s) => s.textContent === "gras");
        return { code: count(".cm-codeblock"), end: count(".cm-h2"), bold: bold.map((s) => getComputedStyle(s).fontWeight) };
      }, lines.join("\n"));
      assert.deepEqual(shown, { code: 14, end: 1, bold: ["700"] });
    },
    { slowdown: 6 },
  );
});

test("a large document shows at once and its whole outline follows from the idle parse", async () => {
  await withEditor(async ({ page, messages }) => {
    const sections = await page.evaluate(() => {
      const parts = [];
      for (let i = 0; i < 6000; i++) parts.push(`## Partie ${i}\n\n- # Dans la liste ${i}\n- Puis\n  ---\n  texte ordinaire de la partie.\n`);
      window.Pagewell.setContent(parts.join("\n"), "/w/grand.md");
      return parts.length;
    });
    const first = (await messages()).filter((m) => m.type === "headingsUpdated");
    assert.equal(first.length, 1);
    assert.ok(first[0].headings.length < sections * 3, "the first outline covers what is parsed");
    // Edits while the idle parse runs, one alone and two in one turn: it carries on from where it
    // got to, in the new text.
    await page.evaluate(async () => {
      const view = window.__pagewellEditor.view;
      const insert = (where, text) => {
        const at = view.state.doc.lineAt(Math.floor(view.state.doc.length * where)).from;
        view.dispatch({ changes: { from: at, insert: text } });
      };
      await new Promise((done) => setTimeout(done, 60));
      insert(0, "# Nouveau début\n\n");
      await new Promise((done) => setTimeout(done, 60));
      insert(0.5, "\n\n### Au milieu\n\n");
      insert(0.2, "\n\n```\n# du code\n```\n");
    });
    const expected = sections * 3 + 2;
    await page.waitForFunction(
      (n) => window.__pagewellTest.messages.filter((m) => m.type === "headingsUpdated").at(-1).headings.length === n,
      expected,
      { timeout: 20000 },
    );
    const whole = (await messages()).filter((m) => m.type === "headingsUpdated").at(-1).headings;
    assert.equal(whole[0].text, "Nouveau début");
    assert.equal(whole.filter((h) => h.text === "Au milieu").length, 1);
    assert.equal(whole.filter((h) => h.text === "du code").length, 0);
    assert.deepEqual(whole.slice(-3), [
      { id: "partie-5999", level: 2, text: "Partie 5999" },
      { id: "dans-la-liste-5999", level: 1, text: "Dans la liste 5999" },
      { id: "puis-5999", level: 2, text: "Puis" },
    ]);
  });
});

test("typing posts the whole text, and the outline only when it changes", async () => {
  await withEditor(async ({ page, messages, clearMessages }) => {
    await page.evaluate(() => window.Pagewell.init("# Un\n\ntexte", false));
    await clearMessages();
    await focusEnd(page);
    await page.keyboard.type(" ok");
    assert.deepEqual(types(await messages()), ["contentChanged", "contentChanged", "contentChanged"]);
    assert.equal(lastContent(await messages()), "# Un\n\ntexte ok");
    await clearMessages();
    await page.keyboard.press("Enter");
    await page.keyboard.press("Enter");
    await page.keyboard.type("## Deux");
    const posted = await messages();
    const outlines = posted.filter((m) => m.type === "headingsUpdated");
    assert.deepEqual(outlines.at(-1).headings.map((h) => h.text), ["Un", "Deux"]);
    assert.ok(outlines.length < 8, `${outlines.length} outlines for 9 keys`);
    assert.equal(lastContent(posted), "# Un\n\ntexte ok\n\n## Deux");
  });
});

// The host's side of "contentEdited": each change replaces code units of the text before it.
function applyEdits(text, { changes, length }) {
  let result = text;
  for (const [from, to, inserted] of [...changes].reverse()) result = result.slice(0, from) + inserted + result.slice(to);
  assert.equal(result.length, length, "the length the message announced");
  return result;
}

test("a large document posts its edits, which rebuild its exact text; the whole text only when asked", async () => {
  await withEditor(async ({ page, messages, clearMessages }) => {
    // CR LF, a lone LF inside a line, a byte-order mark and characters outside the BMP, where the
    // page's positions and the host's part ways.
    const line = (i) => `Ligne ${i} 🙂 é\ttexte${i % 7 ? "" : "\nmêlée"}`;
    const original = "\ufeff" + Array.from({ length: 9000 }, (_, i) => line(i)).join("\r\n");
    await page.evaluate((t) => window.Pagewell.setContent(t, "/w/grand.md"), original);
    await clearMessages();
    await page.click(".cm-content");
    await page.keyboard.type("ab");
    await page.keyboard.press("Enter");
    await page.keyboard.press("Backspace");
    await page.keyboard.press("Backspace");
    // Random edits from a fixed seed: insertions of line breaks and emoji, deletions across
    // lines, several ranges in one change, and undo.
    await page.evaluate(() => {
      const view = window.__pagewellEditor.view;
      let seed = 7;
      const random = (n) => ((seed = (seed * 1103515245 + 12345) % 2147483648), seed % n);
      const pieces = ["x", "\n", "😀", "deux\nlignes", "", "\u0301"];
      for (let i = 0; i < 60; i++) {
        const length = view.state.doc.length;
        const from = random(length);
        const to = Math.min(length, from + random(3) * random(40));
        if (i % 10 === 9) {
          const other = Math.min(length, to + 1 + random(5000));
          view.dispatch({ changes: [{ from, to, insert: "A" }, { from: other, insert: "\nB" }] });
        } else {
          view.dispatch({ changes: { from, to, insert: pieces[random(pieces.length)] }, userEvent: "input.type" });
        }
      }
    });
    await page.keyboard.press("Control+z");
    await settle(page);
    const posted = await messages();
    assert.ok(posted.length > 50);
    assert.equal(posted.filter((m) => m.type === "contentChanged").length, 0, "never the whole text unasked");
    let text = original;
    for (const message of posted.filter((m) => m.type === "contentEdited")) {
      assert.equal(message.path, "/w/grand.md");
      text = applyEdits(text, message);
    }
    await clearMessages();
    await page.evaluate(() => window.Pagewell.sendContent());
    const [whole] = await messages();
    assert.equal(whole.type, "contentChanged");
    assert.notEqual(whole.markdown, original);
    assert.equal(text, whole.markdown);

    // A save asked for right after a key follows the key's edit: nothing waits to be sent.
    await clearMessages();
    await page.keyboard.type("Z");
    await page.evaluate(() => window.Pagewell.requestSave());
    assert.deepEqual(types(await messages()), ["contentEdited", "saveRequested"]);
  });
});

test("insertText replaces the selection and is reported once; themes switch", async () => {
  await withEditor(async ({ page, messages, clearMessages, text }) => {
    await page.evaluate(() => window.Pagewell.setContent("un deux trois", "/w/a.md"));
    await page.evaluate(() => window.__pagewellEditor.view.dispatch({ selection: { anchor: 3, head: 7 } }));
    await clearMessages();
    await page.evaluate(() => window.Pagewell.insertText("**2**"));
    assert.deepEqual(await messages(), [{ type: "contentChanged", markdown: "un **2** trois", path: "/w/a.md" }]);
    assert.equal(await text(), "un **2** trois");
    // Another document comes with its own undo history: Ctrl+Z does not bring the first back.
    await page.evaluate(() => window.Pagewell.setContent("autre", "/w/b.md"));
    await page.keyboard.press("Control+z");
    assert.equal(await text(), "autre");
    const background = () => page.evaluate(() => getComputedStyle(document.querySelector(".cm-editor")).backgroundColor);
    await page.evaluate(() => window.Pagewell.setTheme("dark"));
    assert.notEqual(await background(), "rgb(255, 255, 255)");
    await page.evaluate(() => window.Pagewell.setTheme("light"));
    assert.equal(await background(), "rgb(255, 255, 255)");
  });
});

test("bytes survive an edit and its undo: BOM, CRLF, tabs, no final newline", async () => {
  const original = "\ufeff# Titre\r\n\r\n\tcode  \r\nligne mixte\nfin sans saut";
  await withEditor(async ({ page, messages }) => {
    await page.evaluate((t) => window.Pagewell.setContent(t, "/w/a.md"), original);
    await page.click(".cm-content");
    await page.keyboard.press("Control+Home");
    await page.keyboard.press("End");
    await page.keyboard.press("Enter");
    await page.keyboard.type("x");
    assert.equal(lastContent(await messages()), "\ufeff# Titre\r\nx\r\n\r\n\tcode  \r\nligne mixte\nfin sans saut");
    await page.keyboard.press("Control+z");
    await settle(page);
    assert.equal(lastContent(await messages()), original);

    // Pasted and inserted text takes the document's own line breaks.
    await page.evaluate(() => window.Pagewell.insertText("a\nb"));
    assert.match(lastContent(await messages()), /a\r\nb/);
    await page.evaluate(() => {
      const view = window.__pagewellEditor.view;
      view.dispatch({ changes: { from: view.state.doc.length, insert: "\nc\nd" }, userEvent: "input.paste" });
    });
    assert.ok(lastContent(await messages()).endsWith("fin sans saut\r\nc\r\nd"));
  });
});

test("a hostile document runs nothing and navigates nowhere", async () => {
  const hostile = [
    "<script>window.__pwned = 1</script>",
    '<img src="x" onerror="window.__pwned = 2">',
    "[clique](javascript:window.__pwned=3)",
    '<a href="https://example.org">lien</a>',
    "<iframe src=\"javascript:parent.__pwned=4\"></iframe>",
  ].join("\n\n");
  await withEditor(async ({ page, text }) => {
    const url = page.url();
    await page.evaluate((t) => window.Pagewell.setContent(t, "/w/x.md"), hostile);
    await settle(page);
    await page.click("text=clique");
    await page.click("text=lien");
    await settle(page);
    assert.equal(await page.evaluate(() => window.__pwned), undefined);
    assert.equal(page.url(), url);
    assert.equal(await page.locator(".cm-content img, .cm-content script, .cm-content iframe, .cm-content a").count(), 0);
    assert.equal(await text(), hostile);
  });
});

test("a text from the disk keeps the view where it was, and one undo brings the previous text back", async () => {
  const lines = [];
  for (let i = 1; i <= 400; i++) lines.push(`Ligne ${i} du texte.`);
  const before = lines.join("\r\n");
  await withEditor(async ({ page, text }) => {
    await page.evaluate((t) => window.Pagewell.setContent(t, "/w/long.md"), before);
    await page.evaluate(() => (window.__pagewellEditor.view.scrollDOM.scrollTop = 3000));
    await settle(page);
    const top = await page.evaluate(() => window.__pagewellEditor.view.scrollDOM.scrollTop);
    const after = before + "\r\nAjoutée par un autre programme.";
    await page.evaluate((t) => window.Pagewell.replaceContent(t), after);
    await settle(page);
    assert.equal(await text(), after);
    assert.equal(await page.evaluate(() => window.__pagewellEditor.view.scrollDOM.scrollTop), top);
    await page.click(".cm-content");
    await page.keyboard.press("Control+z");
    assert.equal(await text(), before);
  });
});

test("fenced code is highlighted in the languages the page carries, and plain in the others", async () => {
  await withEditor(async ({ page }) => {
    const text = "```bash\ncd /opt # note\n```\n\n```python\ndef f():\n    return 1\n```\n\n```cobol\nDISPLAY 'X'.\n```\n";
    await page.evaluate((t) => window.Pagewell.setContent(t, "/w/code.md"), text);
    // Each language is loaded when a block first names it: the spans come a moment later.
    const styled = (word) => page.evaluate((w) => [...document.querySelectorAll(".cm-line span")].some((s) => s.textContent === w), word);
    await page.waitForFunction(() => ["# note", "def"].every((w) => [...document.querySelectorAll(".cm-line span")].some((s) => s.textContent === w)));
    assert.equal(await styled("DISPLAY"), false, "no highlighting for a language left out");
  });
});

test("scrollToHeading puts the heading at the top with the caret on it", async () => {
  const lines = Array.from({ length: 400 }, (_, i) => ((i + 1) % 100 === 0 ? `## Partie ${(i + 1) / 100}` : `Ligne ${i + 1} du texte.`));
  await withEditor(async ({ page, messages }) => {
    await page.evaluate((t) => window.Pagewell.setContent(t, "/w/long.md"), lines.join("\n"));
    // The outline grows as the text is parsed, in idle time: the whole of it follows the first.
    await page.waitForFunction(() => window.__pagewellTest.messages.filter((m) => m.type === "headingsUpdated").at(-1).headings.length === 4);
    const outline = (await messages()).filter((m) => m.type === "headingsUpdated").at(-1).headings;
    await page.evaluate((id) => (window.Pagewell.scrollToHeading(id), window.Pagewell.scrollToHeading("absent")), outline[2].id);
    await settle(page);
    const where = await caretLine(page);
    assert.equal(where.line, 300);
    assert.ok(where.top >= 0 && where.top < 80, `heading at ${where.top}px from the top`);
  });
});

test("search and replace speak French, spell checking is on", async () => {
  await withEditor(async ({ page }) => {
    await page.evaluate(() => window.Pagewell.setContent("un chat, deux chats", "/w/a.md"));
    await page.click(".cm-content");
    await page.keyboard.press("Control+f");
    assert.match(await page.locator(".cm-search").innerText(), /respecter la casse[^]*tout remplacer/);
    assert.equal(await page.getAttribute(".cm-content", "spellcheck"), "true");
    assert.equal(await page.getAttribute(".cm-content", "lang"), "fr");
  });
});

test("list markup continues on Enter, and markers wrap a selection", async () => {
  await withEditor(async ({ page, text }) => {
    await page.evaluate(() => window.Pagewell.setContent("- un", "/w/a.md"));
    await focusEnd(page);
    for (const key of ["Enter", "d", "Shift+Home", "*", "*"]) await page.keyboard.press(key);
    assert.equal(await text(), "- un\n**- d**");
  });
});
test("Ctrl+click and Ctrl+Enter on a link ask the host to follow it; a heading named by a link is found", async () => {
  await withEditor(async ({ page, messages, clearMessages }) => {
    const text = "# Début\n\nLire [le guide](guide/install.md#linux) puis [[Notes|les notes]].\n\n## Sous Linux\n";
    await page.evaluate((t) => window.Pagewell.setContent(t, "/w/a.md"), text);
    await clearMessages();
    await page.click("text=le guide", { modifiers: ["Control"] });
    await page.click("text=les notes");
    await page.keyboard.press("Control+Enter");
    // (On a busy machine the outline may follow from the idle parse.)
    assert.deepEqual((await messages()).filter((m) => m.type !== "headingsUpdated"), [
      { type: "openLink", target: "guide/install.md#linux", path: "/w/a.md" },
      { type: "openLink", target: "[[Notes|les notes]]", path: "/w/a.md" },
    ]);
    // Half a second over a link shows where it leads.
    await page.evaluate(() => window.Pagewell.setFolder("/w"));
    await page.hover("text=le guide");
    await page.waitForSelector(".cm-link-tooltip", { timeout: 3000 });
    assert.equal(await page.textContent(".cm-link-tooltip"), "guide/install.md#linux");
    // Ctrl+Enter away from a link is the editor's own: a new line.
    await page.keyboard.press("Control+Home");
    await page.keyboard.press("Control+Enter");
    assert.equal((await messages()).filter((m) => m.type === "openLink").length, 2);
    await page.evaluate(() => window.Pagewell.scrollToHeading("Sous Linux"));
    const line = await page.evaluate(() => {
      const view = window.__pagewellEditor.view;
      return view.state.doc.lineAt(view.state.selection.main.head).text;
    });
    assert.equal(line, "## Sous Linux");
  });
});

test("a document shown again is where it was left: the line at the top and the caret", async () => {
  await withEditor(async ({ page }) => {
    const long = Array.from({ length: 300 }, (_, i) => `Ligne ${i + 1}`).join("\n");
    const where = () =>
      page.evaluate(() => {
        const view = window.__pagewellEditor.view;
        const top = view.lineBlockAtHeight(view.scrollDOM.getBoundingClientRect().top - view.documentTop).from;
        return { top: view.state.doc.lineAt(top).number, head: view.state.selection.main.head };
      });
    await page.evaluate((t) => window.Pagewell.setContent(t, "/w/long.md"), long);
    await page.evaluate(() => {
      const view = window.__pagewellEditor.view;
      view.dispatch({ selection: { anchor: view.state.doc.line(150).from + 3 } });
      view.scrollDOM.scrollTop = view.lineBlockAt(view.state.doc.line(150).from).top;
    });
    await settle(page);
    const left = await where();
    assert.ok(left.top > 140 && left.top < 160, `line ${left.top} at the top`);
    await page.evaluate((t) => (window.Pagewell.setContent("autre", "/w/other.md"), window.Pagewell.setContent(t, "/w/long.md")), long);
    await settle(page);
    assert.equal((await where()).top, 1); // opened anew: the top
    await page.evaluate(() => window.Pagewell.restorePosition());
    await settle(page);
    assert.deepEqual(await where(), left);
  });
});

test("pictures show under their line, from the open folder only, never fetched from the web", async () => {
  const { mkdtempSync, mkdirSync, writeFileSync, rmSync } = await import("node:fs");
  const { tmpdir } = await import("node:os");
  const folder = mkdtempSync(`${tmpdir()}/pagewell-pictures-`);
  try {
    mkdirSync(`${folder}/img`);
    // A red 2×1 PNG, and an SVG whose script must not run.
    writeFileSync(`${folder}/img/rouge.png`, Buffer.from("iVBORw0KGgoAAAANSUhEUgAAAAIAAAABCAIAAAB7QOjdAAAAEElEQVR4nGP4z8DAwMDAAAAN/QH/ZtN3bgAAAABJRU5ErkJggg==", "base64"));
    writeFileSync(`${folder}/img/s.svg`, '<svg xmlns="http://www.w3.org/2000/svg" width="10" height="10"><script>parent.__pwned = 1</script><rect width="10" height="10"/></svg>');
    const text = ["# Images", "![rouge](img/rouge.png)", "![[img/s.svg]]", "![web](https://exemple.org/x.png)", "![dehors](../x.png)", "![absente](img/absente.png)", "```", "![code](img/rouge.png)", "```", "[perdu](nulle-part.md), [[Absent]], [là](doc.md)"].join("\n");
    await withEditor(async ({ page, errors }) => {
      await page.evaluate(([f, t]) => (window.Pagewell.setFolder(f), window.Pagewell.setContent(t, `${f}/doc.md`)), [folder, text]);
      await page.waitForFunction(() => [...document.querySelectorAll(".cm-picture img")].filter((i) => i.complete && i.naturalWidth > 0).length === 2);
      const marks = await page.$$eval(".cm-picture-mark", (m) => m.map((e) => [e.textContent, e.title]));
      assert.deepEqual(marks, [
        ["Image distante non chargée", "https://exemple.org/x.png"],
        ["Image hors du dossier", "« ../x.png » ne se trouve pas dans le dossier ouvert."],
        ["Image introuvable", `${folder}/img/absente.png`],
      ]);
      assert.equal(await page.evaluate(() => window.__pwned), undefined);
      // The text is untouched; the caret goes from the picture's line to the next line.
      assert.equal(await page.evaluate(() => window.__pagewellEditor.view.state.doc.toString()), text);
      await page.evaluate(() => {
        const view = window.__pagewellEditor.view;
        view.focus();
        view.dispatch({ selection: { anchor: view.state.doc.line(2).to } });
      });
      await page.keyboard.press("ArrowDown");
      assert.equal(await page.evaluate(() => { const v = window.__pagewellEditor.view; return v.state.doc.lineAt(v.state.selection.main.head).number; }), 3);
      // The browser's own report of the missing file, and nothing else.
      assert.deepEqual(errors.splice(0), ["Failed to load resource: net::ERR_FILE_NOT_FOUND"]);

      // The host's facts: a picture's box takes its size at once; a file the host did not find is
      // marked so; links leading nowhere are dotted. Facts about another document are dropped.
      const facts = { missing: ["nulle-part.md", "[[Absent]]"], pictures: { "img/rouge.png": { path: `${folder}/img/rouge.png`, width: 300, height: 100 }, "[[img/s.svg]]": null } };
      await page.evaluate(([f, d]) => window.Pagewell.setLinkFacts(f, `${d}/autre.md`), [facts, folder]);
      assert.equal(await page.locator(".cm-link-missing").count(), 0);
      await page.evaluate(([f, d]) => window.Pagewell.setLinkFacts(f, `${d}/doc.md`), [facts, folder]);
      // (The marks hidden away from the caret cut the dotted links into pieces.)
      assert.equal(await page.$$eval(".cm-link-missing", (m) => m.map((e) => e.textContent).join("")), "[perdu](nulle-part.md)[[Absent]]");
      const box = await page.$eval(".cm-picture img", (i) => [Math.round(i.getBoundingClientRect().width), Math.round(i.getBoundingClientRect().height)]);
      assert.deepEqual(box, [300, 100]);
      assert.equal((await page.$$eval(".cm-picture-mark", (m) => m.map((e) => e.textContent)))[0], "Image introuvable");
    });
  } finally {
    rmSync(folder, { recursive: true, force: true });
  }
});

test("a table away from the caret is a grid; the caret reaching it shows its source", async () => {
  await withEditor(async ({ page }) => {
    const text = "Avant\n\n| Nom | Prix |\n|:----|-----:|\n| **Pain** | 2 |\n| Lait | 1,5 |\n\nAprès";
    await page.evaluate((t) => window.Pagewell.setContent(t, "/w/t.md"), text);
    await settle(page);
    const grid = () => page.$$eval("table.cm-table-grid tr", (rows) => rows.map((r) => [...r.cells].map((c) => `${c.textContent}:${c.style.textAlign}`)));
    assert.deepEqual(await grid(), [["Nom:left", "Prix:right"], ["Pain:left", "2:right"], ["Lait:left", "1,5:right"]]);
    // Arrow down from the line above arrives in it: the source shows.
    await page.click("text=Avant");
    await page.keyboard.press("ArrowDown");
    await page.keyboard.press("ArrowDown");
    await settle(page);
    assert.deepEqual(await grid(), []);
    assert.ok(await page.isVisible("text=| **Pain** | 2 |"));
    // Away again: the grid; a click on it: the source, the caret in it.
    await page.click("text=Après");
    await settle(page);
    assert.equal((await grid()).length, 3);
    await page.click("table.cm-table-grid");
    await settle(page);
    assert.deepEqual(await grid(), []);
    assert.equal(await page.evaluate(() => window.__pagewellEditor.view.state.doc.toString()), text);
  });
});

test("a document renamed on the host keeps its text and undo under the new path; revealLine shows a line", async () => {
  const lines = Array.from({ length: 300 }, (_, i) => `Ligne ${i + 1} avec [un lien](b.md).`);
  await withEditor(async ({ page, messages, clearMessages, text }) => {
    await page.evaluate((t) => window.Pagewell.setContent(t, "/w/a.md"), lines.join("\n"));
    await focusEnd(page);
    await page.keyboard.type(" tapé");
    // The links were rewritten on the host: one change, under the new path.
    await page.evaluate(() => window.Pagewell.setDocumentPath("/w/archive/a.md"));
    const rewritten = (await text()).replaceAll("(b.md)", "(../b.md)");
    await page.evaluate((t) => window.Pagewell.replaceContent(t), rewritten);
    await settle(page);
    await clearMessages();
    await page.click(".cm-content");
    await page.keyboard.press("Control+z");
    await settle(page);
    const sent = (await messages()).filter((m) => m.type === "contentChanged").at(-1);
    assert.equal(sent.path, "/w/archive/a.md");
    assert.ok(sent.markdown.endsWith("[un lien](b.md). tapé"), "one undo takes the rewrite back, the typing stays");
    await page.click("text=un lien", { modifiers: ["Control"] });
    assert.equal((await messages()).filter((m) => m.type === "openLink").at(-1).path, "/w/archive/a.md");

    await page.evaluate(() => window.Pagewell.revealLine(199));
    await settle(page);
    const where = await caretLine(page);
    assert.equal(where.line, 200);
    assert.ok(where.top >= 0 && where.top < 80, `line at ${where.top}px from the top`);
  });
});

test("revealMatch selects a search hit's match mid-view, within its line whatever the offsets", async () => {
  const lines = Array.from({ length: 300 }, (_, i) => `  Ligne ${i + 1} : un coffre, un 😀 coffre`);
  await withEditor(async ({ page }) => {
    await page.evaluate((t) => window.Pagewell.setContent(t, "/w/a.md"), lines.join("\n"));
    await settle(page);
    // UTF-16 offsets, as the search gives them: the emoji counts two.
    const shown = (line, from, to) =>
      page.evaluate(
        async ([line, from, to]) => {
          window.Pagewell.revealMatch(line, from, to);
          await new Promise((resolve) => requestAnimationFrame(() => requestAnimationFrame(resolve)));
          const view = window.__pagewellEditor.view;
          const { from: a, to: b } = view.state.selection.main;
          const scroller = view.scrollDOM.getBoundingClientRect();
          const top = view.coordsAtPos(a).top - scroller.top;
          return { text: view.state.sliceDoc(a, b), line: view.state.doc.lineAt(a).number, top, height: scroller.height, focused: view.hasFocus };
        },
        [line, from, to],
      );
    const hit = await shown(149, 31, 37);
    assert.equal(hit.text, "coffre");
    assert.equal(hit.line, 150);
    assert.ok(Math.abs(hit.top - hit.height / 2) < hit.height / 4, `match at ${hit.top}px of ${hit.height}px`);
    assert.ok(hit.focused);
    // Edits the search did not see: the range stays inside the line, the line inside the text.
    const past = await shown(9, 30, 500);
    assert.equal(past.line, 10);
    assert.equal(past.text, lines[9].slice(30));
    assert.equal((await shown(5000, 0, 2)).line, 300);
  });
});

// What each line shows: its text without the markup hidden away (kept at no width), with what is
// drawn beside the text (the « › » of a wiki link, a callout's title); and what it reads to a
// screen reader: its text without what is drawn (aria-hidden).
function linesShown(page) {
  return page.evaluate(() => {
    const text = (node, skip) => {
      if (node.nodeType === Node.TEXT_NODE) return node.data;
      if (node.nodeType !== Node.ELEMENT_NODE || skip(node)) return "";
      return [...node.childNodes].map((c) => text(c, skip)).join("");
    };
    return [...document.querySelectorAll(".cm-line")].map((line) => ({
      shown: text(line, (e) => e.classList.contains("cm-hidden-markup") && e.getBoundingClientRect().width === 0),
      read: text(line, (e) => e.getAttribute("aria-hidden") === "true"),
    }));
  });
}

function putCaret(page, lineNumber) {
  return page.evaluate((n) => {
    const view = window.__pagewellEditor.view;
    view.dispatch({ selection: { anchor: view.state.doc.line(n).from + 1 } });
    view.focus();
  }, lineNumber);
}

test("markup steps aside away from the caret and shows where the caret is, at the same height", async () => {
  await withEditor(async ({ page, text }) => {
    const source = [
      "Premier",
      "# Titre **gras** #",
      "Un **coffre** est *local*, ~~vieux~~ et `code **brut**`.",
      'Voir [Télécharger](https://exemple.fr/a "Page") et [réf][1], https://exemple.fr/nu.',
      "Wiki [[Créer un coffre|le guide]], [[Synchroniser#Sur mobile]], [[Index]] et `[[code]]`.",
      "> Citée **ici**",
      "- Puce",
      "1. Nombre",
      "",
      "---",
      "",
      "<!-- note -->",
      "",
      "[1]: https://exemple.fr/r",
    ].join("\n");
    await page.evaluate((t) => window.Pagewell.setContent(t, "/w/m.md"), source);
    // The parse may reach the last lines in a later slice on a busy machine.
    await page.waitForFunction(() => [...document.querySelectorAll(".cm-hidden-markup")].some((e) => e.textContent === "> "));
    await settle(page);
    const lines = source.split("\n");
    const away = await linesShown(page);
    assert.deepEqual(
      away.map((l) => l.shown),
      [
        "Premier",
        "Titre gras",
        "Un coffre est local, vieux et code **brut**.",
        "Voir Télécharger et réf, https://exemple.fr/nu.",
        "Wiki le guide, Synchroniser › Sur mobile, Index et [[code]].",
        "Citée ici",
        "- Puce",
        "1. Nombre",
        "",
        "---",
        "",
        "<!-- note -->",
        "",
        "[1]: https://exemple.fr/r",
      ],
    );
    // The marks stay in the text a screen reader reads.
    assert.deepEqual(away.map((l) => l.read), lines);
    assert.equal(await page.$$eval(".cm-bullet", (b) => b.length), 1);
    assert.equal(await page.$$eval(".cm-line.cm-rule", (r) => r.length), 1);
    assert.equal(await page.$$eval(".cm-html-comment", (c) => c.length), 1);

    // Each line the caret enters shows its source, and keeps its place and height.
    for (const n of [2, 3, 4, 5, 6]) {
      const box = () => page.evaluate((k) => {
        const view = window.__pagewellEditor.view;
        const block = view.lineBlockAt(view.state.doc.line(k).from);
        return { top: block.top, height: block.height, next: view.lineBlockAt(view.state.doc.line(k + 1).from).top };
      }, n);
      const before = await box();
      await putCaret(page, n);
      await settle(page);
      const on = await linesShown(page);
      assert.equal(on[n - 1].shown, lines[n - 1], `line ${n} as source`);
      assert.equal(on[0].shown, "Premier");
      assert.deepEqual(await box(), before, `line ${n} stays where it was`);
    }
    // A selection across lines shows all of them.
    await page.evaluate(() => {
      const view = window.__pagewellEditor.view;
      view.dispatch({ selection: { anchor: view.state.doc.line(3).from + 2, head: view.state.doc.line(5).from + 2 } });
    });
    await settle(page);
    assert.deepEqual((await linesShown(page)).slice(2, 5).map((l) => l.shown), lines.slice(2, 5));
    assert.equal(await text(), source);
  });
});

test("task items are check boxes a click toggles as an edit; callouts are boxes; front matter is folded", async () => {
  await withEditor(async ({ page, text, messages }) => {
    const source = [
      "---",
      "titre: Coffre",
      "tags: [a, b]",
      "---",
      "Début",
      "- [ ] Choisir un dossier",
      "- [x] Nommer le coffre",
      "",
      "> [!warning]",
      "> Deux fois.",
      "",
      "> [!tip]- Repliée",
      "> Cachée.",
      "",
      "> [!note] À savoir",
      "> Simple.",
      "Fin",
    ].join("\n");
    await page.evaluate((t) => window.Pagewell.setContent(t, "/w/t.md"), source);
    await settle(page);
    assert.equal(await page.textContent(".cm-properties"), "Propriétés (2)");
    const boxes = () => page.$$eval(".cm-task", (b) => b.map((e) => [e.getAttribute("role"), e.getAttribute("aria-label"), e.getAttribute("aria-pressed")]));
    assert.deepEqual(await boxes(), [
      ["button", "Choisir un dossier", "false"],
      ["button", "Nommer le coffre", "true"],
    ]);
    // (An icon's SVG source brings white space of its own.)
    const shown = async () => (await linesShown(page)).map((l) => l.shown.trim());
    const lines = await shown();
    assert.ok(lines.includes("Choisir un dossier"), lines.join("|"));
    assert.ok(lines.includes("Attention") && lines.includes("Deux fois."), lines.join("|"));
    assert.ok(lines.includes("Repliée …") && !lines.includes("Cachée."), lines.join("|"));
    assert.ok(lines.includes("À savoir"), lines.join("|"));
    assert.equal(await page.$$eval(".cm-callout-first", (l) => l.length), 3);

    // A click on a box: "[x]" written as an ordinary edit, posted, and taken back by undo.
    await page.click(".cm-task >> nth=0");
    await settle(page);
    assert.equal(await text(), source.replace("- [ ] Choisir", "- [x] Choisir"));
    assert.equal(lastContent(await messages()), source.replace("- [ ] Choisir", "- [x] Choisir"));
    assert.deepEqual((await boxes())[0], ["button", "Choisir un dossier", "true"]);
    await page.keyboard.press("Control+z");
    await settle(page);
    assert.equal(await text(), source);

    // The folded callout's title unfolds it; the properties line shows the front matter.
    await page.click(".cm-callout-head >> nth=1");
    await settle(page);
    assert.ok((await shown()).includes("Cachée."));
    await page.click(".cm-properties");
    await settle(page);
    assert.equal(await page.$$eval(".cm-properties", (p) => p.length), 0);
    assert.equal((await shown())[1], "titre: Coffre");

    // "Afficher la source": every line as written, whatever the caret; and back.
    await page.evaluate(() => window.Pagewell.setShowSource(true));
    await settle(page);
    assert.deepEqual(await shown(), source.split("\n"));
    assert.equal(await page.$$eval(".cm-task, .cm-callout", (e) => e.length), 0);
    await page.evaluate(() => window.Pagewell.setShowSource(false));
    await settle(page);
    assert.equal(await page.$$eval(".cm-task", (e) => e.length), 2);
    assert.equal(await text(), source);
  });
});

test("formulas are typeset away from the caret; currency, escapes and code stay text; errors show their source", async () => {
  await withEditor(async ({ page, text }) => {
    const source = [
      "Soit $E = mc^2$ et $\\sqrt{a^2+b^2}$.",
      "Prix 5 $ et 10 $ ; \\$5 et `$x$`.",
      "Faux $\\frac{1$ ici.",
      "$$",
      "\\int_0^1 x^2\\,dx = \\frac{1}{3}",
      "$$",
      "```math",
      "\\sum_{k=1}^{n} k",
      "```",
      "Fin",
    ].join("\n");
    // KaTeX is not part of the page: until it is loaded, formulas show their source.
    const first = await page.evaluate((t) => {
      const loadedBefore = document.querySelector('script[src$="formulas.js"]') !== null;
      window.Pagewell.setContent(t, "/w/f.md");
      return { loadedBefore, pending: [...document.querySelectorAll(".cm-math-pending")].map((e) => e.textContent) };
    }, source);
    assert.equal(first.loadedBefore, false);
    assert.ok(first.pending.includes("$\\frac{1$"), JSON.stringify(first.pending));
    assert.ok(first.pending.some((p) => p.includes("\\int_0^1")), JSON.stringify(first.pending));
    await putCaret(page, 10);
    await page.waitForFunction(() => !document.querySelector(".cm-math-pending"));
    await settle(page);
    assert.equal(await page.$$eval('link[href$="katex/katex.min.css"]', (l) => l.length), 1);
    const inline = () => page.$$eval(".cm-math-inline:not(.cm-math-error)", (m) => m.map((e) => e.querySelector("annotation")?.textContent));
    assert.deepEqual(await inline(), ["E = mc^2", "\\sqrt{a^2+b^2}"]);
    assert.equal(await page.$$eval(".cm-math-block .katex-display", (m) => m.length), 2);
    const error = await page.$eval(".cm-math-error", (e) => ({ shown: e.textContent, title: e.title }));
    assert.equal(error.shown, "$\\frac{1$");
    assert.match(error.title, /KaTeX parse error/);
    const shown = await linesShown(page);
    assert.equal(shown[1].shown, "Prix 5 $ et 10 $ ; $5 et $x$.");

    // The caret on a line of inline formulas shows the line's source, at the same place.
    const top = () => page.evaluate(() => {
      const view = window.__pagewellEditor.view;
      return view.lineBlockAt(view.state.doc.line(2).from).top;
    });
    const before = await top();
    await putCaret(page, 1);
    await settle(page);
    assert.deepEqual(await inline(), []);
    assert.equal((await linesShown(page))[0].shown, "Soit $E = mc^2$ et $\\sqrt{a^2+b^2}$.");
    assert.equal(await top(), before);
    // The caret entering a block (an arrow key from the line above) shows its lines.
    await putCaret(page, 3);
    await page.keyboard.press("ArrowDown");
    await settle(page);
    assert.equal(await page.$$eval(".cm-math-block", (m) => m.length), 1);
    assert.ok((await linesShown(page)).some((l) => l.shown === "\\int_0^1 x^2\\,dx = \\frac{1}{3}"));
    // A click on a block formula puts the caret in its source.
    await page.click(".cm-math-block");
    await settle(page);
    assert.equal(await page.$$eval(".cm-math-block", (m) => m.length), 1);
    assert.ok((await linesShown(page)).some((l) => l.shown === "\\sum_{k=1}^{n} k"));

    await page.evaluate(() => window.Pagewell.setShowSource(true));
    await settle(page);
    assert.equal(await page.$$eval(".cm-math", (m) => m.length), 0);
    assert.equal(await text(), source);
  });
});

test("diagrams come from a bundle loaded on demand, are drawn once per text and theme, and a broken one shows its source", async () => {
  await withEditor(async ({ page, text }) => {
    await page.evaluate(() => window.Pagewell.setContent("# Sans diagramme\n\n```js\nx\n```", "/w/a.md"));
    await settle(page);
    await page.waitForTimeout(500);
    assert.deepEqual(await page.evaluate(() => ["PagewellDiagramEngine" in window, document.querySelectorAll("script").length]), [false, 1]);

    const flow = "graph LR\n  A[Début] --> B[Fin]";
    const source = ["Avant", "```mermaid", flow, "```", "", "```mermaid", "graph TD", "  A --> --> B", "```", "", "```mermaid", flow, "```", "Après"].join("\n");
    await page.evaluate((t) => window.Pagewell.setContent(t, "/w/d.md"), source);
    await page.waitForFunction(() => document.querySelectorAll(".cm-diagram svg").length === 2 && document.querySelector(".cm-diagram-message"));
    // Counted from here: every drawing the library makes.
    await page.evaluate(() => {
      const engine = window.PagewellDiagramEngine;
      const render = engine.render.bind(engine);
      window.__drawings = [];
      engine.render = (id, text) => (window.__drawings.push(text), render(id, text));
    });
    assert.deepEqual(await page.$$eval(".cm-diagram svg", (s) => s.map((e) => e.textContent.includes("Début"))), [true, true]);
    const broken = await page.$eval(".cm-diagram-error", (e) => ({ source: e.querySelector(".cm-diagram-source").textContent, message: e.querySelector(".cm-diagram-message").textContent }));
    assert.equal(broken.source, "graph TD\n  A --> --> B");
    assert.match(broken.message, /error/i);
    assert.equal(await page.$$eval(".cm-diagram svg script, .cm-diagram svg a", (e) => e.length), 0);
    // Sized: a drawing keeps its height whatever is drawn around it.
    const height = await page.$eval(".cm-diagram", (d) => d.getBoundingClientRect().height);
    assert.ok(height > 40, `drawn at ${height}px`);

    // The caret in a diagram's source and out again, the document shown anew: no new drawing.
    await putCaret(page, 3);
    await settle(page);
    assert.equal(await page.$$eval(".cm-diagram svg", (s) => s.length), 1);
    await putCaret(page, 14);
    await page.evaluate((t) => window.Pagewell.setContent(t, "/w/d.md"), source);
    await settle(page);
    assert.equal(await page.$$eval(".cm-diagram svg", (s) => s.length), 2);
    assert.deepEqual(await page.evaluate(() => window.__drawings), []);
    // The dark theme draws each text once more, in its colours.
    await page.evaluate(() => window.Pagewell.setTheme("dark"));
    await page.waitForFunction(() => window.__drawings.length === 2);
    await settle(page);
    assert.deepEqual((await page.evaluate(() => window.__drawings)).sort(), [flow, "graph TD\n  A --> --> B"].sort());
    assert.equal(await page.$$eval(".cm-diagram svg", (s) => s.length), 2);
    assert.equal(await text(), source);
  });
});

test("in a large document, blocks are drawn as the view reaches them and keep their drawing once passed; its text is coloured", async () => {
  await withEditor(async ({ page, text }) => {
    const paragraph = "Une ligne de texte ordinaire pour remplir le document jusqu'à sa taille.";
    const middle = Array.from({ length: 4000 }, (_, i) => `${paragraph} ${i}`).join("\n\n");
    const source = `$$\n\\frac{a}{b}\n$$\n\n${middle}\n\n$$\n\\sqrt{x}\n$$\nFin en **gras**`;
    assert.ok(source.length > 250_000);
    await page.evaluate((t) => window.Pagewell.setContent(t, "/w/grand.md"), source);
    await settle(page);
    const formulas = () => page.$$eval(".cm-math-block annotation", (a) => a.map((e) => e.textContent.trim()));
    // The caret is on the first line: its formula shows as source; the last is out of reach.
    assert.deepEqual(await formulas(), []);
    await putCaret(page, 5);
    // The first formula drawn brings KaTeX in.
    await page.waitForFunction(() => document.querySelectorAll(".cm-math-block annotation").length === 1);
    assert.deepEqual(await formulas(), ["\\frac{a}{b}"]);
    const scrollTo = (pos) =>
      page.evaluate(async (at) => {
        const view = window.__pagewellEditor.view;
        view.dispatch({ effects: EditorView.scrollIntoView(at === "end" ? view.state.doc.length : 0) });
        for (let i = 0; i < 4; i++) await new Promise((done) => requestAnimationFrame(done));
        return view.contentHeight;
      }, pos);
    await page.evaluate(() => (window.EditorView = window.__pagewellEditor.view.constructor));
    await scrollTo("end");
    // The parse reaches the end in idle slices; the drawing follows it.
    await page.waitForFunction(() => document.querySelectorAll(".cm-math-block").length === 1);
    assert.deepEqual(await formulas(), ["\\sqrt{x}"]);
    // The text far down is coloured from its chunk of the tree: bold is bold.
    const weight = await page.$eval("text=gras", (e) => getComputedStyle(e).fontWeight);
    assert.ok(Number(weight) >= 600, `font weight ${weight}`);
    const atEnd = await scrollTo("end");
    // Back and forth: both drawings kept, the document's height unchanged.
    assert.equal(await scrollTo(0), atEnd);
    assert.deepEqual(await formulas(), ["\\frac{a}{b}"]);
    assert.equal(await scrollTo("end"), atEnd);
    assert.equal(await text(), source);
  });
});
