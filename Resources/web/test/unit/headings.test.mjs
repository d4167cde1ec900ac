import { test } from "node:test";
import assert from "node:assert/strict";
import { Text, ChangeSet } from "@codemirror/state";
import { extractHeadings, HeadingIndex, headingText, slugify, withIds } from "../../src/headings.js";

const doc = (text) => Text.of(text.split("\n"));
const outline = (text) => extractHeadings(doc(text)).map((h) => `${h.line}:${h.level}:${h.text}`);

test("ATX and Setext headings, in document order", () => {
  assert.deepEqual(
    outline(["# Un", "texte", "", "Deux", "====", "", "Trois *bis*", "et suite", "---", "   ### Quatre ###", "#### Cinq #", "##### Six#", "###### Sept", "####### pas", "#pas", "#"].join("\n")),
    ["1:1:Un", "4:1:Deux", "7:2:Trois bis et suite", "10:3:Quatre", "11:4:Cinq", "12:5:Six#", "13:6:Sept", "16:1:"],
  );
});

test("no headings in code, HTML blocks or front matter", () => {
  const text = [
    "---",
    "title: Réglages",
    "---",
    "```md",
    "# dans un bloc de code",
    "```",
    "~~~~",
    "# encore du code",
    "```",
    "# toujours du code",
    "~~~~",
    "    # indenté: du code",
    "<!--",
    "# commentaire",
    "-->",
    "<div>",
    "# dans du HTML",
    "",
    "# Vrai titre",
  ].join("\n");
  assert.deepEqual(outline(text), ["19:1:Vrai titre"]);
  // Without a closing line there is no front matter: a rule, then a Setext heading.
  assert.deepEqual(outline("---\ntitle\n===\n"), ["2:1:title"]);
  // An unclosed fence runs to the end.
  assert.deepEqual(outline("# A\n```\n# B\n"), ["1:1:A"]);
});

test("Setext rules: paragraphs only, not list items, same quote level", () => {
  assert.deepEqual(outline("- item\n---\n"), []);
  assert.deepEqual(outline("> cité\n---\n"), []);
  assert.deepEqual(outline("> cité\n> ---\n"), ["1:2:cité"]);
  assert.deepEqual(outline("\n===\n"), []);
  assert.deepEqual(outline("paragraphe\n    # pas un titre\n===\n"), ["1:1:paragraphe # pas un titre"]);
  assert.deepEqual(outline("- # Dans une liste\n> ## Dans une citation\n"), ["1:1:Dans une liste", "2:2:Dans une citation"]);
});

test("heading text drops the markup a reader does not see", () => {
  assert.equal(headingText("**Gras** et _italique_ et ~~barré~~"), "Gras et italique et barré");
  assert.equal(headingText("Le `code_avec_tirets` et snake_case_name"), "Le code_avec_tirets et snake_case_name");
  assert.equal(headingText("[Lien](http://x.org \"t\") et ![image](a.png)"), "Lien et image");
  assert.equal(headingText("Échappé \\*pas gras\\* &amp; &#233;t&eacute; &unknown; <b>html</b>"), "Échappé *pas gras* & été &unknown; html");
  assert.equal(headingText("  espaces   multiples  "), "espaces multiples");
  assert.equal(headingText("2 * 3 * 4"), "2 * 3 * 4");
});

test("ids are readable, unique, and stable when other text changes", () => {
  assert.equal(slugify("Guide d'installation"), "guide-dinstallation");
  assert.equal(slugify("Étapes à suivre !"), "étapes-à-suivre");
  assert.equal(slugify("***"), "section");
  const ids = withIds([
    { text: "Intro", level: 1, line: 1 },
    { text: "Intro", level: 2, line: 5 },
    { text: "Intro 1", level: 2, line: 9 },
    { text: "Intro", level: 2, line: 12 },
    { text: "", level: 3, line: 14 },
  ]).map((h) => h.id);
  assert.deepEqual(ids, ["intro", "intro-1", "intro-1-1", "intro-2", "section"]);
  assert.equal(new Set(ids).size, ids.length);

  const before = withIds(extractHeadings(doc("# A\ntexte\n## B\n## B"))).map((h) => h.id);
  const after = withIds(extractHeadings(doc("# A\nautre texte\nen plus\n\n## B\n## B"))).map((h) => h.id);
  assert.deepEqual(after, before);
});

// Random edits on a document with every kind of block: the index, updated edit by edit, must give
// what a full scan of the result gives.
test("incremental updates agree with a full scan", () => {
  // Fences and HTML blocks are rarer than the rest, as in real documents.
  const common = ["# T", "## Deux", "texte", "", "", "===", "---", "    code", "> # cité", "- item", "Titre", "***", "para\nsuite"];
  const rare = ["```", "~~~", "<!--", "-->", "<div>"];
  for (let seed = 1; seed <= 4; seed++) {
    const random = (n) => {
      // mulberry32: small, and good in every bit
      seed = (seed + 0x6d2b79f5) | 0;
      let t = Math.imul(seed ^ (seed >>> 15), 1 | seed);
      t = (t + Math.imul(t ^ (t >>> 7), 61 | t)) ^ t;
      return ((((t ^ (t >>> 14)) >>> 0) / 4294967296) * n) | 0;
    };
    const piece = () => (random(100) === 0 ? rare[random(rare.length)] : common[random(common.length)]);
    const lines = [];
    for (let i = 0; i < 3000; i++) lines.push(piece());
    let current = doc(["---", "a: 1", "---", ...lines].join("\n"));
    const index = new HeadingIndex(current);
    let most = 0;
    for (let round = 0; round < 300; round++) {
      const from = random(current.length + 1);
      const to = Math.min(current.length, from + (random(8) === 0 ? random(300) : random(12)));
      const insert = random(4) === 0 ? "" : piece() + (random(3) ? "\n" : "");
      const changes = ChangeSet.of([{ from, to, insert }], current.length);
      const next = changes.apply(current);
      index.update(current, next, changes);
      current = next;
      assert.deepEqual(index.headings, extractHeadings(current), `round ${round}`);
      most = Math.max(most, index.headings.length);
    }
    assert.ok(most > 40, `${most} headings at most`);
  }
});

test("long front matter opens and closes under edits", () => {
  const body = Array.from({ length: 400 }, (_, i) => `cle${i}: valeur`);
  let current = doc(["---", ...body, "---", "# Après"].join("\n"));
  const index = new HeadingIndex(current);
  assert.deepEqual(index.headings.map((h) => h.text), ["Après"]);
  const edit = (from, to, insert) => {
    const changes = ChangeSet.of([{ from, to, insert }], current.length);
    const next = changes.apply(current);
    index.update(current, next, changes);
    current = next;
    assert.deepEqual(index.headings, extractHeadings(current));
  };
  const closing = current.line(402);
  edit(closing.from, closing.to, "# plus de fin"); // no closing line: no front matter at all
  assert.ok(index.headings.length > 1);
  edit(closing.from, closing.from + "# plus de fin".length, "..."); // closed again
  assert.deepEqual(index.headings.map((h) => h.text), ["Après"]);
});

test("an edit rescans a few hundred lines, not the document", () => {
  const big = doc(Array.from({ length: 200000 }, (_, i) => (i % 50 === 0 ? `## Section ${i}` : "Une ligne de texte ordinaire.")).join("\n"));
  const index = new HeadingIndex(big);
  let read = 0;
  // The same document, counting the lines read from it.
  const counting = (d) => ({
    lines: d.lines,
    lineAt: (pos) => d.lineAt(pos),
    line: (n) => (read++, d.line(n)),
    iterLines(from) {
      const lines = d.iterLines(from);
      return {
        next() {
          read++;
          lines.next();
          return this;
        },
        get done() {
          return lines.done;
        },
        get value() {
          return lines.value;
        },
      };
    },
  });
  const at = big.line(100000).from;
  const changes = ChangeSet.of([{ from: at, insert: "## Nouveau\n" }], big.length);
  const next = changes.apply(big);
  assert.equal(index.update(counting(big), counting(next), changes), true);
  assert.ok(read < 1000, `read ${read} lines`);
  assert.equal(index.headings.length, 4001);
  assert.deepEqual(index.headings, extractHeadings(next));
  // Typing in ordinary text leaves the outline as it was.
  const typed = ChangeSet.of([{ from: next.line(5).from, insert: "x" }], next.length);
  assert.equal(index.update(next, typed.apply(next), typed), false);
});
