// Typing an emphasis or code marker over a selection wraps the selection in it, so "**" around
// a word is two key presses; without a selection the marker is typed as usual.
import { EditorSelection } from "@codemirror/state";
import { EditorView } from "@codemirror/view";

const MARKERS = new Set(["*", "_", "`", "~"]);

export const wrapSelectionInMarkers = EditorView.inputHandler.of((view, from, to, text) => {
  if (!MARKERS.has(text) || view.state.selection.ranges.every((r) => r.empty)) return false;
  const transaction = view.state.changeByRange((range) => {
    if (range.empty) {
      return { changes: { from: range.from, insert: text }, range: EditorSelection.cursor(range.from + 1) };
    }
    return {
      changes: [
        { from: range.from, insert: text },
        { from: range.to, insert: text },
      ],
      range: EditorSelection.range(range.from + 1, range.to + 1),
    };
  });
  view.dispatch(view.state.update(transaction, { userEvent: "input.type", scrollIntoView: true }));
  return true;
});
