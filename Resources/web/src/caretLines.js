// What is drawn away from the caret (hidden markup, grids, callouts, folded front matter)
// follows the lines the selection is on, the text, its syntax tree and "Afficher la source".
import { Decoration, EditorView, ViewPlugin } from "@codemirror/view";
import { syntaxTree } from "@codemirror/language";
import { showSource } from "./document.js";

// The lines the selection is on, as [from, to] of whole lines.
export function selectedLines(state) {
  return state.selection.ranges.map((r) => [state.doc.lineAt(r.from).from, state.doc.lineAt(r.to).to]);
}

// Whether [from, to] shares a line with the selection's `lines`.
export function touches(lines, state, from, to) {
  const start = state.doc.lineAt(from).from;
  const end = state.doc.lineAt(to).to;
  return lines.some(([a, b]) => a <= end && b >= start);
}

// Whether a change from `before` to `after` (a transaction or a view update) may change what is
// drawn: the text, the selection, the syntax tree, the choice to show the source or the theme.
export function drawnAnew(before, after, docChanged, selectionChanged) {
  return (
    docChanged ||
    selectionChanged ||
    after.facet(showSource) !== before.facet(showSource) ||
    after.facet(EditorView.darkTheme) !== before.facet(EditorView.darkTheme) ||
    syntaxTree(after) !== syntaxTree(before)
  );
}

// Calls `enter` on the syntax tree's nodes in the visible ranges, as `Tree.iterate` does: false
// skips a node's children.
export function iterateVisible(view, enter) {
  const tree = syntaxTree(view.state);
  for (const { from, to } of view.visibleRanges) tree.iterate({ from, to, enter });
}

// A view plugin whose decorations `decorate(view, lines)` draws for the lines in view, given the
// lines the selection is on; drawn anew as the view scrolls and whenever `drawnAnew` says, and
// none while the source is shown.
export function visibleLinesDrawing(decorate) {
  const draw = (view) => (view.state.facet(showSource) ? Decoration.none : decorate(view, selectedLines(view.state)));
  return ViewPlugin.fromClass(
    class {
      constructor(view) {
        this.decorations = draw(view);
      }

      update(update) {
        if (update.viewportChanged || drawnAnew(update.startState, update.state, update.docChanged, update.selectionSet)) {
          this.decorations = draw(update.view);
        }
      }
    },
    { decorations: (plugin) => plugin.decorations },
  );
}
