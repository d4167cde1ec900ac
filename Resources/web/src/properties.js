// Front matter drawn folded: one line « Propriétés (N) », N its top-level keys. A click on it
// shows the source, which then stays shown for this document; the selection reaching inside the
// front matter shows it too.
import { Decoration, EditorView, WidgetType } from "@codemirror/view";
import { StateEffect, StateField } from "@codemirror/state";
import { syntaxTree } from "@codemirror/language";
import { showSource } from "./document.js";
import { drawnAnew } from "./caretLines.js";

const unfold = StateEffect.define();

// The number of top-level keys of the front matter `source` (its delimiter lines included).
export function propertyCount(source) {
  const lines = source.split(/\r\n|\r|\n/).slice(1, -1);
  return lines.filter((line) => /^[^\s#:-][^:]*:(\s|$)/.test(line) || /^["'][^"']+["']\s*:(\s|$)/.test(line)).length;
}

class PropertiesWidget extends WidgetType {
  constructor(count) {
    super();
    this.count = count;
  }

  eq(other) {
    return other.count === this.count;
  }

  toDOM(view) {
    const line = document.createElement("div");
    line.className = "cm-properties";
    line.setAttribute("role", "button");
    line.setAttribute("aria-expanded", "false");
    line.textContent = `Propriétés (${this.count})`;
    line.addEventListener("mousedown", (event) => {
      event.preventDefault();
      view.dispatch({ effects: unfold.of(null) });
    });
    return line;
  }

  ignoreEvent() {
    return true;
  }
}

function decorate(state, unfolded) {
  if (unfolded || state.facet(showSource)) return Decoration.none;
  const node = syntaxTree(state).topNode.firstChild;
  if (!node || node.name !== "FrontMatter" || node.from !== 0) return Decoration.none;
  // The caret at the very start stands before the fold, as on a document's opening.
  if (state.selection.ranges.some((r) => r.to > 0 && r.from <= node.to)) return Decoration.none;
  const widget = new PropertiesWidget(propertyCount(state.sliceDoc(node.from, node.to)));
  return Decoration.set([Decoration.replace({ widget, block: true }).range(node.from, node.to)]);
}

const propertiesField = StateField.define({
  create: (state) => ({ unfolded: false, decorations: decorate(state, false) }),
  update(value, tr) {
    const unfolded = value.unfolded || tr.effects.some((e) => e.is(unfold));
    if (unfolded === value.unfolded && !drawnAnew(tr.startState, tr.state, tr.docChanged, !!tr.selection)) return value;
    return { unfolded, decorations: decorate(tr.state, unfolded) };
  },
  provide: (field) => EditorView.decorations.from(field, (value) => value.decorations),
});

export const properties = [
  propertiesField,
  EditorView.baseTheme({
    ".cm-properties": { cursor: "pointer", fontSize: "0.9em", padding: "0.1em 0 0.3em" },
    "&light .cm-properties": { color: "#6e6e73" },
    "&dark .cm-properties": { color: "#a1a1a6" },
    ".cm-properties::before": { content: '"▸" / ""', display: "inline-block", width: "1.1em" },
  }),
];
