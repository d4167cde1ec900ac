// What is drawn away from the caret (hidden markup, grids, callouts, folded front matter)
// follows the lines the selection is on, the text, its syntax tree and "Afficher la source".
import { syntaxTree } from "@codemirror/language";
import { showSource } from "./document.js";

// The lines the selection is on, as [from, to] of whole lines.
export function selectedLines(state) {
  return state.selection.ranges.map((r) => [state.doc.lineAt(r.from).from, state.doc.lineAt(r.to).to]);
}

// Whether a change from `before` to `after` (a transaction or a view update) may change what is
// drawn: the text, the selection, the syntax tree or the choice to show the source.
export function drawnAnew(before, after, docChanged, selectionChanged) {
  return (
    docChanged ||
    selectionChanged ||
    after.facet(showSource) !== before.facet(showSource) ||
    syntaxTree(after) !== syntaxTree(before)
  );
}
