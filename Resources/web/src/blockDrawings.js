// Blocks drawn in place of their lines: tables as grids, formulas typeset, diagrams. A block the
// selection does not touch shows its drawing; the caret reaching it (a click, or an arrow key
// arriving at its edge) shows its source again. The blocks are read from the top levels of the
// syntax tree on every change, and they appear as CodeMirror's parse reaches them: in a document
// under 200,000 characters all of them; in a larger one, those within 12,000 characters of the
// lines on screen (the reach, which follows the view), so a key costs the same whatever the
// size, while the blocks the view has passed keep their drawings. There a key reads again only
// the chunks of the tree it changed (see redrawnSpans).
import { Decoration, EditorView, ViewPlugin, keymap } from "@codemirror/view";
import { Facet, Prec, StateEffect, StateField } from "@codemirror/state";
import { syntaxTree } from "@codemirror/language";
import { LARGE_DOCUMENT, showSource } from "./document.js";
import { chunksOf } from "./chunkedParser.js";
import { drawnAnew } from "./caretLines.js";

// The blocks other blocks hold, whose children are looked at too.
const CONTAINERS = new Set(["Document", "BulletList", "OrderedList", "ListItem", "Blockquote"]);
const REACH_MARGIN = 12_000;

// What draws a kind of block: `draw(node, state)` returns the widget shown in place of the lines
// of the syntax node `node`, or null to leave them as text. A widget's `prepare()`, when it has
// one, is called in idle time, so the work of drawing it is done before it scrolls into view.
export const blockDrawer = Facet.define();

// The whole lines a block stands on, [from, to].
export function linesOf(state, node) {
  return [state.doc.lineAt(node.from).from, state.doc.lineAt(node.to).to];
}

// The reach: the part of a large document whose blocks are drawn, [from, to).
const moveReach = StateEffect.define();

// The drawings of the blocks that overlap `range` ({from, to}), in the order of the text.
export function drawings(state, range) {
  const drawers = state.facet(blockDrawer);
  const selection = state.selection.ranges;
  const ranges = [];
  syntaxTree(state).iterate({
    from: range.from,
    to: range.to,
    enter(node) {
      if (CONTAINERS.has(node.name)) return true;
      if (!selection.some((r) => r.to >= node.from && r.from <= node.to)) {
        for (const draw of drawers) {
          const widget = draw(node, state);
          if (widget) {
            const [from, to] = linesOf(state, node);
            ranges.push(Decoration.replace({ widget, block: true }).range(from, to));
            break;
          }
        }
      }
      return false;
    },
  });
  return ranges;
}

const wholeDocument = (state) => ({ from: 0, to: state.doc.length });

// The parts of the reach whose blocks an edit may have changed, in a large document: the chunks
// of the syntax tree the edit parsed anew, those the selection is in or left, and what lies past
// the tree. The other chunks are the same trees as before, so their drawings stand, moved with
// the text. Null when the trees are not in chunks.
function redrawnSpans(tr, oldReach, reach) {
  const old = chunksOf(syntaxTree(tr.startState), oldReach.from, oldReach.to);
  const tree = syntaxTree(tr.state);
  const now = chunksOf(tree, reach.from, reach.to);
  if (!old || !now) return null;
  const kept = new Set(old.map((chunk) => chunk.tree));
  const selected = [...tr.state.selection.ranges, ...tr.startState.selection.ranges.map((r) => ({ from: tr.changes.mapPos(r.from, -1), to: tr.changes.mapPos(r.to, 1) }))];
  const spans = [];
  for (const chunk of now) {
    if (kept.has(chunk.tree) && !selected.some((r) => r.to >= chunk.from && r.from <= chunk.to)) continue;
    const from = Math.max(chunk.from, reach.from);
    const last = spans[spans.length - 1];
    if (last && last.to >= from) last.to = Math.min(chunk.to, reach.to);
    else spans.push({ from, to: Math.min(chunk.to, reach.to) });
  }
  if (tree.length < reach.to) spans.push({ from: Math.max(tree.length, reach.from), to: reach.to });
  return spans;
}

// Drawings outside the reach are kept as they were, moved with the text, so a block the view has
// passed keeps its height; those inside are drawn anew.
export const drawnBlocks = StateField.define({
  create(state) {
    const reach = state.doc.length < LARGE_DOCUMENT ? wholeDocument(state) : { from: 0, to: Math.min(state.doc.length, REACH_MARGIN) };
    return { reach, decorations: state.facet(showSource) ? Decoration.none : Decoration.set(drawings(state, reach)) };
  },
  update(value, tr) {
    let reach = tr.docChanged ? { from: tr.changes.mapPos(value.reach.from, -1), to: tr.changes.mapPos(value.reach.to, 1) } : value.reach;
    let moved = false;
    for (const effect of tr.effects) {
      if (effect.is(moveReach)) {
        reach = effect.value;
        moved = true;
      }
    }
    if (tr.state.doc.length < LARGE_DOCUMENT) reach = wholeDocument(tr.state);
    let decorations = tr.docChanged ? value.decorations.map(tr.changes) : value.decorations;
    if (moved || drawnAnew(tr.startState, tr.state, tr.docChanged, !!tr.selection)) {
      // Another theme draws every block anew; the source shown draws none.
      const { startState: before, state: after } = tr;
      const restyled = after.facet(EditorView.darkTheme) !== before.facet(EditorView.darkTheme);
      const shown = after.facet(showSource);
      const spans = tr.docChanged && !moved && !restyled && !shown && !before.facet(showSource) && after.doc.length >= LARGE_DOCUMENT ? redrawnSpans(tr, value.reach, reach) : null;
      if (shown) decorations = Decoration.none;
      else if (spans) {
        if (spans.length) {
          decorations = decorations.update({
            filterFrom: spans[0].from,
            filterTo: spans[spans.length - 1].to,
            filter: (from, to) => !spans.some((span) => from <= span.to && to >= span.from),
            add: spans.flatMap((span) => drawings(after, span)),
          });
        }
      } else {
        decorations = (restyled ? Decoration.none : decorations).update({
          filterFrom: reach.from,
          filterTo: reach.to,
          filter: () => false,
          add: drawings(tr.state, reach),
        });
      }
    }
    return reach === value.reach && decorations === value.decorations ? value : { reach, decorations };
  },
  provide: (field) => EditorView.decorations.from(field, (value) => value.decorations),
});

// In a large document, the reach moves with the view before the lines on screen come near its
// edges.
const reachFollower = ViewPlugin.fromClass(
  class {
    constructor(view) {
      this.view = view;
      this.queued = false;
      this.follow();
    }

    update(update) {
      if (update.viewportChanged || update.docChanged) this.follow();
    }

    follow() {
      const { state, viewport } = this.view;
      const length = state.doc.length;
      if (length < LARGE_DOCUMENT || this.queued) return;
      const { reach } = state.field(drawnBlocks);
      const near = REACH_MARGIN / 2;
      if ((viewport.from - reach.from >= near || reach.from === 0) && (reach.to - viewport.to >= near || reach.to === length)) return;
      this.queued = true;
      // A view may not be changed while it updates.
      queueMicrotask(() => {
        this.queued = false;
        const { viewport: now } = this.view;
        const next = { from: Math.max(0, now.from - REACH_MARGIN), to: Math.min(this.view.state.doc.length, now.to + REACH_MARGIN) };
        this.view.dispatch({ effects: moveReach.of(next) });
      });
    }
  },
);

// The drawings not shown yet are prepared in idle time, a few at a time, from the top.
const drawAhead = ViewPlugin.fromClass(
  class {
    constructor(view) {
      this.view = view;
      this.timer = 0;
      this.idle = 0;
      this.schedule();
    }

    update(update) {
      const { startState: before, state: after } = update;
      const moved = before.field(drawnBlocks).reach !== after.field(drawnBlocks).reach;
      if (update.docChanged || moved || before.facet(EditorView.darkTheme) !== after.facet(EditorView.darkTheme)) this.schedule();
    }

    schedule() {
      clearTimeout(this.timer);
      cancelIdleCallback(this.idle);
      this.timer = setTimeout(() => {
        const widgets = [];
        this.view.state.field(drawnBlocks).decorations.between(0, this.view.state.doc.length, (_from, _to, decoration) => {
          if (decoration.spec.widget.prepare) widgets.push(decoration.spec.widget);
        });
        const next = (deadline) => {
          while (widgets.length && deadline.timeRemaining() > 2) widgets.shift().prepare();
          if (widgets.length) this.idle = requestIdleCallback(next);
        };
        if (widgets.length) this.idle = requestIdleCallback(next);
      }, 300);
    }

    destroy() {
      clearTimeout(this.timer);
      cancelIdleCallback(this.idle);
    }
  },
);

// An arrow key on the line next to a drawing goes into its block, which then shows its source;
// left alone, the caret would pass the drawing by as it does a picture.
function enterBlock(view, direction) {
  const { main } = view.state.selection;
  if (!main.empty) return false;
  const line = view.state.doc.lineAt(main.head);
  const next = line.number + direction;
  if (next < 1 || next > view.state.doc.lines) return false;
  const edge = view.state.doc.line(next);
  let target = -1;
  view.state.field(drawnBlocks).decorations.between(edge.from, edge.to, (from, to) => {
    if (direction > 0 && from === edge.from) target = from;
    if (direction < 0 && to === edge.to) target = view.state.doc.lineAt(to).from;
  });
  if (target < 0) return false;
  view.dispatch({ selection: { anchor: target }, scrollIntoView: true });
  return true;
}

// A mouse press on a drawing puts the caret at the start of its source.
export function caretToSourceOnPress(view, dom) {
  dom.addEventListener("mousedown", (event) => {
    if (event.button !== 0) return;
    event.preventDefault();
    view.dispatch({ selection: { anchor: view.posAtDOM(dom) } });
    view.focus();
  });
}

export const blockDrawings = [
  drawnBlocks,
  reachFollower,
  drawAhead,
  Prec.high(
    keymap.of([
      { key: "ArrowDown", run: (view) => enterBlock(view, 1) },
      { key: "ArrowUp", run: (view) => enterBlock(view, -1) },
    ]),
  ),
];

// The text between the fences of a fenced block whose info string is `language`, or null when the
// block names another language or has no closing fence.
export function fencedText(node, state, language) {
  if (node.name !== "FencedCode") return null;
  const info = node.node.getChild("CodeInfo");
  if (!info || info.to - info.from !== language.length || state.sliceDoc(info.from, info.to).toLowerCase() !== language) return null;
  const marks = node.node.getChildren("CodeMark");
  if (marks.length < 2) return null;
  const first = state.doc.lineAt(node.from);
  const last = state.doc.lineAt(marks[marks.length - 1].from);
  if (last.number <= first.number + 1) return "";
  return state.sliceDoc(first.to + 1, last.from - 1).replace(/\r/g, "");
}
