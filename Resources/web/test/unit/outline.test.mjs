import { test } from "node:test";
import assert from "node:assert/strict";
import { EditorState } from "@codemirror/state";
import { DocInput, ensureSyntaxTree, language } from "@codemirror/language";
import { markdown, markdownLanguage } from "@codemirror/lang-markdown";
import { frontMatter } from "../../src/frontMatter.js";
import { blocksOnly, fromTree, headingScan, headingText, outlineComplete, outlineField, slugify, withIds } from "../../src/outline.js";
import { markdownSyntax } from "../../src/markdownSyntax.js";
import { rustLanguage } from "@codemirror/lang-rust";
import { randomSource } from "./random.mjs";

const markdownSupport = markdown({ base: markdownLanguage, extensions: [frontMatter] });
const stateOf = (text) => EditorState.create({ doc: text, extensions: [markdownSupport, outlineField] });
// The state once the whole text is parsed, as the page's idle parse leaves it.
function parsed(state) {
  ensureSyntaxTree(state, state.doc.length, 1e9);
  return state.update({}).state;
}
// The headings HeadingScan finds in `doc`, stopped every few hundred lines as idle time runs out
// and, if `edit` is given, edited at the first stop ({changes, doc} of the new text).
function scanned(doc, parser, edit) {
  const scan = headingScan(doc, parser, 300);
  let pending = edit;
  for (;;) {
    const done = scan.work(-Infinity);
    if (pending) scan.edited(pending.doc, pending.changes);
    else if (done) return scan;
    pending = null;
  }
}
const lineOf = (state, h) => state.doc.lineAt(h.from).number;
const outline = (text) => {
  const state = parsed(stateOf(text));
  return state.field(outlineField).headings.toArray().map((h) => `${lineOf(state, h)}:${h.level}:${h.text}`);
};

test("the outline lists what the editor styles as headings, with the reader's text", () => {
  assert.deepEqual(
    outline(["# Un", "texte", "", "Deux", "====", "", "Trois *bis*", "et suite", "---", "   ### Quatre ###", "#### Cinq #", "##### Six#", "###### Sept", "####### pas", "#pas", "#"].join("\n")),
    ["1:1:Un", "4:1:Deux", "7:2:Trois bis et suite", "10:3:Quatre", "11:4:Cinq", "12:5:Six#", "13:6:Sept", "16:1:"],
  );
  // A heading in a list item, and a Setext one under a later item.
  assert.deepEqual(outline("- # Foo\n- Bar\n  ---\n  baz"), ["1:1:Foo", "2:2:Bar"]);
  assert.deepEqual(outline("> cité\n> sur deux lignes\n> ---\n"), ["1:2:cité sur deux lignes"]);
  const hidden = ["---", "title: Réglages", "---", "```md", "# dans un bloc de code", "```", "    # indenté", "<!--", "# commentaire", "-->", "", "# Vrai titre"];
  assert.deepEqual(outline(hidden.join("\n")), ["12:1:Vrai titre"]);
  // Without a closing line there is no front matter: a rule, then a Setext heading.
  assert.deepEqual(outline("---\ntitle\n===\n"), ["2:1:title"]);
  assert.deepEqual(outline("# A\r\n```\r\n# B\r\n"), ["1:1:A"]);
});

test("the idle parse reads the editor's headings without parsing the code of fenced blocks", () => {
  let asked = 0;
  const { support, outlineBlocks } = markdownSyntax((info) => (asked++, info === "rust" ? rustLanguage : null));
  const block = ["```rust", "#[derive(Debug)]", "# pas un titre", "fn main() {}", "```"];
  const lines = [];
  for (let i = 0; i < 40; i++) lines.push(`## Chapitre ${i}`, "", "Du texte.", "", ...block, "");
  const state = EditorState.create({ doc: lines.join("\n"), extensions: [support, outlineField] });
  ensureSyntaxTree(state, state.doc.length, 1e9);
  assert.ok(asked >= 40, "the editor highlights the code in its language");
  const expected = state.update({}).state.field(outlineField).headings.toArray();
  assert.equal(expected.length, 40);

  asked = 0;
  const alone = outlineBlocks.parse(new DocInput(state.doc));
  assert.equal(asked, 0, "the outline's parse asked for a code language");
  assert.deepEqual(fromTree(state.doc, alone).headings, expected);

  // The idle scan parses only the pieces that may hold a heading: the same headings, and the code
  // languages are never asked for. Here each heading opens its piece, so nothing is parsed at all.
  let parses = 0;
  const counted = Object.create(outlineBlocks, { startParse: { value: (...args) => (parses++, outlineBlocks.startParse(...args)) } });
  const scan = scanned(state.doc, counted);
  assert.equal(asked, 0, "the outline's scan asked for a code language");
  assert.deepEqual(scan.headings, expected);
  assert.equal(parses, 0, "pieces opening with their heading were parsed");
});

test("deleting the end of the text takes its headings with it", () => {
  const text = "# Un\n\ntexte\n\n## Deux\n\n## Trois\n";
  const state = parsed(stateOf(text)).update({ changes: { from: text.indexOf("## Deux"), to: text.length } }).state;
  assert.deepEqual(state.field(outlineField).headings.toArray().map((h) => h.text), ["Un"]);
  assert.ok(outlineComplete(state));
});

test("the idle scan finds the headings after a fence that its list item or HTML block ends", () => {
  const parts = [];
  for (let i = 0; i < 300; i++) {
    parts.push("- point", "", "  ```", "  code", `# Après la liste ${i}`, "", "<div>", "```", "", `## Après le bloc ${i}`, "");
    parts.push("```sh", "# commentaire", "```", "", "Texte", "<span>", "```", "", "# dans le code", "", "```", "");
  }
  const { support, outlineBlocks } = markdownSyntax(() => null);
  const state = parsed(EditorState.create({ doc: parts.join("\n"), extensions: [support, outlineField] }));
  const expected = state.field(outlineField).headings.toArray();
  assert.equal(expected.length, 600);
  assert.deepEqual(scanned(state.doc, outlineBlocks).headings, expected);
});

test("heading text drops the markup a reader does not see", () => {
  assert.equal(headingText("**Gras** et _italique_ et ~~barré~~"), "Gras et italique et barré");
  assert.equal(headingText("Le `code_avec_tirets` et snake_case_name"), "Le code_avec_tirets et snake_case_name");
  assert.equal(headingText("[Lien](http://x.org \"t\") et ![image](a.png)"), "Lien et image");
  assert.equal(headingText("Échappé \\*pas gras\\* &amp; &#233;t&eacute; &unknown; <b>html</b>"), "Échappé *pas gras* & été &unknown; html");
  assert.equal(headingText("2 * 3 * 4"), "2 * 3 * 4");
});

test("ids are readable, unique, and stable when other text changes", () => {
  assert.equal(slugify("Guide d'installation"), "guide-dinstallation");
  assert.equal(slugify("Étapes à suivre !"), "étapes-à-suivre");
  assert.equal(slugify("***"), "section");
  const ids = withIds(["Intro", "Intro", "Intro 1", "Intro", ""].map((text) => ({ text, level: 2, from: 0 }))).map((h) => h.id);
  assert.deepEqual(ids, ["intro", "intro-1", "intro-1-1", "intro-2", "section"]);
  const idsOf = (text) => withIds(parsed(stateOf(text)).field(outlineField).headings.toArray()).map((h) => h.id);
  assert.deepEqual(idsOf("# A\nautre texte\nen plus\n\n## B\n## B"), idsOf("# A\ntexte\n## B\n## B"));
});

// Random edits on a document with every kind of block: the outline, updated edit by edit, must be
// the one read from the whole tree of the result, heading for heading and position for position.
test("the outline kept across edits is the one read afresh", () => {
  const common = ["# T", "## Deux", "texte", "", "", "===", "---", "    code", "> # cité", "- item", "  - # sous", "Titre", "***", "para\nsuite", "\r", "## CR\r", "===\r", "##\tonglet",
    "### Fin ###  ", "#  *large*  #x", "# ", "#", "####### sept", "###### \\#", " # décalé", "#sans"];
  const rare = ["```", "~~~", "<!--", "-->", "<div>", "```\r", "1. # un", "#\r", "  ```"];
  for (let seed = 1; seed <= 3; seed++) {
    const random = randomSource(seed);
    const piece = () => (random(150) === 0 ? rare[random(rare.length)] : common[random(common.length)]);
    const lines = [];
    for (let i = 0; i < 2000; i++) lines.push(piece());
    let state = parsed(stateOf(["---", "a: 1", "---", ...lines].join("\n")));
    let most = 0;
    let changed = 0;
    for (let round = 0; round < 150; round++) {
      const from = random(state.doc.length + 1);
      const to = Math.min(state.doc.length, from + (random(8) === 0 ? random(300) : random(12)));
      const insert = random(4) === 0 ? "" : piece() + (random(3) ? "\n" : "");
      const previous = state.field(outlineField);
      const before = previous.headings.toArray();
      const transaction = state.update({ changes: { from, to, insert } });
      const oldDoc = state.doc;
      state = transaction.state;
      const kept = state.field(outlineField);
      const keptHeadings = kept.headings.toArray();
      const fresh = parsed(stateOf(state.doc.toString())).field(outlineField);
      const freshHeadings = fresh.headings.toArray();
      // The editor parses within a time budget: on a loaded machine its tree may stop short, and
      // past `covered` the old headings only stand in until the idle parse gets there.
      const upTo = (headings) => headings.filter((h) => h.to <= kept.covered);
      if (kept.covered >= state.doc.length) assert.deepEqual(keptHeadings, freshHeadings, `seed ${seed}, round ${round}`);
      else assert.deepEqual(upTo(keptHeadings), upTo(freshHeadings), `seed ${seed}, round ${round}, to ${kept.covered}`);
      // The idle parse reads blocks only; it must find the same headings.
      // So must the idle scan, which parses only the pieces that may hold one, edited as it goes.
      if (round % 10 === 0) {
        const blocks = blocksOnly(state.facet(language).parser);
        const tree = blocks.parse(new DocInput(state.doc));
        assert.deepEqual(fromTree(state.doc, tree).headings, freshHeadings, `seed ${seed}, round ${round}: blocks only`);
        const scan = scanned(oldDoc, blocks, { doc: state.doc, changes: transaction.changes });
        assert.deepEqual(scan.headings, freshHeadings, `seed ${seed}, round ${round}: scan`);
        assert.ok(scan.checkpoints.length > 2, "the scan kept checkpoints");
      }
      const differs = before.length !== keptHeadings.length || before.some((h, i) => h.text !== keptHeadings[i].text || h.level !== keptHeadings[i].level);
      // A new value says whether it differs; an unchanged document keeps the old value.
      assert.equal(kept !== previous && kept.changed, differs, `seed ${seed}, round ${round}: changed flag`);
      if (differs) changed++;
      most = Math.max(most, keptHeadings.length);
    }
    assert.ok(most > 40 && changed >= 5, `${most} headings at most, ${changed} changes`);
  }
});
