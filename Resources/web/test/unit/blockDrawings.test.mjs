import { test } from "node:test";
import assert from "node:assert/strict";
import { EditorSelection, EditorState } from "@codemirror/state";
import { WidgetType } from "@codemirror/view";
import { ensureSyntaxTree, syntaxTree } from "@codemirror/language";
import { blockDrawer, drawings, drawnBlocks, fencedText } from "../../src/blockDrawings.js";
import { tableGrids } from "../../src/tables.js";
import { markdownSyntax } from "../../src/markdownSyntax.js";
import { LARGE_DOCUMENT } from "../../src/document.js";
import { randomSource } from "./random.mjs";

class FormulaStandIn extends WidgetType {
  constructor(source) {
    super();
    this.source = source;
  }
  eq(other) {
    return other.source === this.source;
  }
}
const formulas = blockDrawer.of((node, state) => {
  const source = fencedText(node, state, "math");
  return source === null ? null : new FormulaStandIn(source);
});

// A large document whose first 12,000 characters (the reach of a state with no view) hold tables,
// formula blocks, code and lists between paragraphs.
function documentText() {
  const parts = [];
  for (let i = 0; parts.join("\n").length < LARGE_DOCUMENT + 20_000; i++) {
    parts.push(`## Partie ${i}`, "", `Texte de la partie ${i}, avec **gras**.`, "");
    if (i % 3 === 0) parts.push("| a | b |", "|---|---|", `| ${i} | x |`, "");
    if (i % 4 === 1) parts.push("```math", `x^${i}`, "```", "");
    if (i % 5 === 2) parts.push("```js", `const n = ${i};`, "", "| pas | un tableau |", "|---|---|", "```", "");
    if (i % 6 === 3) parts.push("- un", "", "  | dans | la liste |", "  |---|---|", "  | 1 | 2 |", "");
  }
  return parts.join("\n");
}

function startState() {
  const state = EditorState.create({ doc: documentText(), extensions: [markdownSyntax([]).support, tableGrids, formulas, drawnBlocks] });
  assert.ok(ensureSyntaxTree(state, state.doc.length, 60_000));
  return state.update({}).state;
}

// The drawings as [from, to, what they show].
const listed = (ranges) => ranges.map((r) => [r.from, r.to, r.value.spec.widget.source]);
function drawnIn(state, { from, to }) {
  const out = [];
  state.field(drawnBlocks).decorations.between(from, to, (a, b, value) => void out.push({ from: a, to: b, value }));
  return out;
}

test("in a large document an edit draws again only the chunks it changed, and the drawings are those of the whole reach", () => {
  const random = randomSource(25);
  const pieces = ["x", "\n", "\n\n", "```\n", "```math\n", "| c | d |\n|---|---|\n", "## T\n", "- ", "$$\n"];
  let state = startState();
  for (let step = 0; step < 300; step++) {
    const { reach } = state.field(drawnBlocks);
    const at = random(Math.min(reach.to, 11_000));
    const changes = state.changes(
      random(3) === 0 ? { from: at, to: Math.min(state.doc.length, at + random(40)) } : { from: at, insert: pieces[random(pieces.length)] },
    );
    // The caret goes with the edit, or elsewhere: a block it reaches or leaves is drawn again.
    const caret = random(2) === 0 ? changes.mapPos(at, 1) : random(Math.min(changes.newLength, 12_000));
    state = state.update({ changes, selection: EditorSelection.cursor(caret) }).state;
    const now = state.field(drawnBlocks);
    // What the field keeps is exactly what reading the whole reach again gives.
    assert.deepEqual(listed(drawnIn(state, now.reach)), listed(drawings(state, now.reach)), `step ${step}`);
  }

  // A key in the first paragraph leaves the drawings of the other chunks as the same widgets.
  const fresh = startState();
  const reach = fresh.field(drawnBlocks).reach;
  const widgets = new Set(drawnIn(fresh, reach).map((r) => r.value.spec.widget));
  const at = fresh.doc.line(3).to;
  // The key's parse has a time budget: on a loaded machine it may stop short and leave the later
  // chunks, and their drawings, to the idle parse. The same key again, until its parse is whole.
  let typed;
  for (let tries = 0; tries < 50 && !(typed && syntaxTree(typed).length === typed.doc.length); tries++) {
    typed = fresh.update({ changes: { from: at, insert: "x" }, selection: { anchor: at + 1 } }).state;
  }
  const after = drawnIn(typed, typed.field(drawnBlocks).reach);
  assert.equal(after.length, widgets.size);
  const again = after.filter((r) => !widgets.has(r.value.spec.widget));
  assert.ok(widgets.size > 50 && again.length > 0 && again.every((r) => r.from < 4096 + 200), `${again.length} of ${widgets.size} drawn again`);

  // A fence that never closes, opened near the top, makes the rest code: the drawings after it
  // go, whether the edit's parse reached them or stopped short and left them to the idle parse.
  const top = fresh.doc.line(3).from;
  assert.ok(drawnIn(fresh, { from: top, to: fresh.doc.length }).length > 50);
  let fenced = fresh.update({ changes: { from: top, insert: "~~~~~\n" }, selection: { anchor: 0 } }).state;
  assert.deepEqual(drawnIn(fenced, { from: top + 6, to: fenced.doc.length }), []);
  assert.ok(ensureSyntaxTree(fenced, fenced.doc.length, 60_000));
  fenced = fenced.update({}).state;
  assert.deepEqual(drawnIn(fenced, { from: top + 6, to: fenced.doc.length }), []);
});
