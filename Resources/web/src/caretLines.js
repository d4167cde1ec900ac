// What is drawn away from the caret (hidden markup, grids, callouts, folded front matter)
// follows the lines the selection is on, the text, its syntax tree and "Afficher la source".
import { EditorView, ViewPlugin } from "@codemirror/view";
import { syntaxTree } from "@codemirror/language";
import { showSource } from "./document.js";

// The lines the selection is on, as [from, to] of whole lines.
export function selectedLines(state) {
  return state.selection.ranges.map((r) => [state.doc.lineAt(r.from).from, state.doc.lineAt(r.to).to]);
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

// A view plugin whose decorations `decorate(view)` draws for the lines in view, drawn anew as the
// view scrolls and whenever `drawnAnew` says.
export function visibleLinesDrawing(decorate) {
  return ViewPlugin.fromClass(
    class {
      constructor(view) {
        this.decorations = decorate(view);
      }

      update(update) {
        if (update.viewportChanged || drawnAnew(update.startState, update.state, update.docChanged, update.selectionSet)) {
          this.decorations = decorate(update.view);
        }
      }
    },
    { decorations: (plugin) => plugin.decorations },
  );
}
