// The text's colours from its syntax tree, for the lines in view: CodeMirror's own highlighter,
// except that a large document's tree is read from the chunks around the view (see
// chunkedParser.js) rather than walked from its first block on every key.
import { Decoration, EditorView, ViewPlugin } from "@codemirror/view";
import { Prec, RangeSetBuilder } from "@codemirror/state";
import { syntaxTree } from "@codemirror/language";
import { highlightRange } from "./chunkedParser.js";

export function documentHighlighting(style) {
  const marks = Object.create(null);
  const decorate = (view, tree) => {
    if (!tree.length) return Decoration.none;
    const builder = new RangeSetBuilder();
    const put = (from, to, cls) => builder.add(from, to, marks[cls] || (marks[cls] = Decoration.mark({ class: cls })));
    for (const { from, to } of view.visibleRanges) highlightRange(tree, style, put, from, to);
    return builder.finish();
  };
  const highlighter = ViewPlugin.fromClass(
    class {
      constructor(view) {
        this.tree = syntaxTree(view.state);
        this.decorations = decorate(view, this.tree);
        this.decoratedTo = view.viewport.to;
      }

      update(update) {
        const tree = syntaxTree(update.state);
        const { viewport } = update.view;
        const decoratedTo = update.changes.mapPos(this.decoratedTo, 1);
        // While the parse has not reached the view, the colours move with the text.
        if (tree.length < viewport.to && tree.type === this.tree.type && decoratedTo >= viewport.to) {
          this.decorations = this.decorations.map(update.changes);
          this.decoratedTo = decoratedTo;
        } else if (tree !== this.tree || update.viewportChanged) {
          this.tree = tree;
          this.decorations = decorate(update.view, tree);
          this.decoratedTo = viewport.to;
        }
      }
    },
    { decorations: (plugin) => plugin.decorations },
  );
  return [EditorView.styleModule.of(style.module), Prec.high(highlighter)];
}
