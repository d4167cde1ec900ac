// The host's table of links before and after an item of the folder moved, read by the page: every
// link the host rewrote must lead, as the page reads it, to a file that is there after the move.
import { test } from "node:test";
import assert from "node:assert/strict";
import { readFileSync } from "node:fs";
import { EditorState } from "@codemirror/state";
import { markdown, markdownLanguage } from "@codemirror/lang-markdown";
import { ensureSyntaxTree } from "@codemirror/language";
import { destination, linkAt } from "../../src/links.js";

const table = JSON.parse(readFileSync(new URL("../../../../tests/data/rewrites.json", import.meta.url), "utf8"));
const folder = "/w/docs";

// Every link the page would follow in `text`, as written.
function targets(text) {
  const state = EditorState.create({ doc: text, extensions: [markdown({ base: markdownLanguage })] });
  ensureSyntaxTree(state, state.doc.length, 1e9);
  const found = new Set();
  for (let pos = 0; pos < state.doc.length; pos++) {
    const link = linkAt(state, pos);
    if (link?.target) found.add(link.target);
  }
  return found;
}

test("the links rewritten by the host lead, as the page reads them, to files of the folder", () => {
  assert.ok(table.cases.length >= 5);
  let checked = 0;
  for (const { name, files, move, after, dangling = [] } of table.cases) {
    // The files of the folder once the item moved.
    const [from, to] = move;
    const moved = (f) => (f === from ? to : f.startsWith(`${from}/`) ? to + f.slice(from.length) : f);
    const present = new Set(Object.keys(files).map(moved));
    for (const [path, text] of Object.entries(after)) {
      if (!path.endsWith(".md")) continue;
      for (const target of targets(text)) {
        if (target.startsWith("[[") || dangling.includes(target)) continue;
        const where = destination(target, `${folder}/${path}`, folder).replace(/[#?].*$/, "");
        assert.ok(present.has(where) || present.has(`${where}.md`), `${name}: ${path} → ${target} (${where})`);
        checked++;
      }
    }
  }
  assert.ok(checked >= 15, `${checked} links checked`);
});
