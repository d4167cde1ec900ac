// Pipe tables drawn as grids: a table the caret is not in shows as a table with its columns
// aligned; the caret reaching it (a click, or an arrow key arriving at its edge) shows its source
// again. Only in documents under 200,000 characters: the grids are read from the whole syntax
// tree on every change, and they appear as CodeMirror's parse reaches them.
import { Decoration, EditorView, WidgetType, keymap } from "@codemirror/view";
import { Prec, StateField } from "@codemirror/state";
import { syntaxTree } from "@codemirror/language";
import { headingText } from "./outline.js";
import { LARGE_DOCUMENT, showSource } from "./document.js";
import { drawnAnew } from "./caretLines.js";

const CONTAINERS = new Set(["Document", "BulletList", "OrderedList", "ListItem", "Blockquote"]);

// The cells of a table line, without the outer pipes; "\|" stays in its cell.
export function cellsOf(line) {
  const cells = [];
  let cell = "";
  for (let i = 0; i < line.length; i++) {
    if (line[i] === "\\" && line[i + 1] === "|") {
      cell += "|";
      i++;
    } else if (line[i] === "|") {
      cells.push(cell);
      cell = "";
    } else {
      cell += line[i];
    }
  }
  cells.push(cell);
  if (/^\s*$/.test(cells[0])) cells.shift();
  if (cells.length && /^\s*$/.test(cells[cells.length - 1])) cells.pop();
  return cells.map((c) => c.trim());
}

// The alignment of each column, from the delimiter row: "left", "center", "right" or "".
export function alignmentsOf(delimiterLine) {
  return cellsOf(delimiterLine).map((c) => {
    const left = c.startsWith(":");
    const right = c.endsWith(":");
    return left && right ? "center" : right ? "right" : left ? "left" : "";
  });
}

class TableWidget extends WidgetType {
  constructor(source) {
    super();
    this.source = source;
  }

  eq(other) {
    return other.source === this.source;
  }

  toDOM(view) {
    const lines = this.source.split("\n").map((l) => l.replace(/^ {0,3}(?:> ?)?/, ""));
    const alignments = alignmentsOf(lines[1] ?? "");
    const table = document.createElement("table");
    table.className = "cm-table-grid";
    lines.forEach((line, i) => {
      if (i === 1) return;
      const row = (i === 0 ? table.createTHead() : table.tBodies[0] ?? table.createTBody()).insertRow();
      const cells = cellsOf(line);
      for (let c = 0; c < alignments.length; c++) {
        const cell = document.createElement(i === 0 ? "th" : "td");
        cell.textContent = headingText(cells[c] ?? "");
        if (alignments[c]) cell.style.textAlign = alignments[c];
        row.append(cell);
      }
    });
    // A click on the grid puts the caret in its source.
    table.addEventListener("mousedown", (event) => {
      event.preventDefault();
      const pos = view.posAtDOM(table);
      view.dispatch({ selection: { anchor: pos } });
      view.focus();
    });
    return table;
  }

  ignoreEvent() {
    return false;
  }
}

function tables(state) {
  if (state.doc.length >= LARGE_DOCUMENT || state.facet(showSource)) return Decoration.none;
  const ranges = [];
  const selection = state.selection.ranges;
  syntaxTree(state).iterate({
    enter(node) {
      if (node.name === "Table") {
        const touched = selection.some((r) => r.to >= node.from && r.from <= node.to);
        if (!touched) {
          const from = state.doc.lineAt(node.from).from;
          const to = state.doc.lineAt(node.to).to;
          const widget = new TableWidget(state.sliceDoc(from, to).replace(/\r/g, ""));
          ranges.push(Decoration.replace({ widget, block: true }).range(from, to));
        }
        return false;
      }
      return CONTAINERS.has(node.name);
    },
  });
  return Decoration.set(ranges);
}

const tableTheme = EditorView.baseTheme({
  ".cm-table-grid": { borderCollapse: "collapse", margin: "4px 0", cursor: "text" },
  ".cm-table-grid th, .cm-table-grid td": { border: "1px solid #8884", padding: "3px 10px" },
  ".cm-table-grid th": { fontWeight: "600" },
});

const tableField = StateField.define({
  create: tables,
  update(set, tr) {
    if (drawnAnew(tr.startState, tr.state, tr.docChanged, !!tr.selection)) return tables(tr.state);
    return set;
  },
  provide: (field) => EditorView.decorations.from(field),
});

// An arrow key on the line next to a grid goes into the table, which then shows its source;
// left alone, the caret would pass the grid by as it does a picture.
function enterTable(view, direction) {
  const { main } = view.state.selection;
  if (!main.empty) return false;
  const line = view.state.doc.lineAt(main.head);
  const next = line.number + direction;
  if (next < 1 || next > view.state.doc.lines) return false;
  const edge = view.state.doc.line(next);
  let target = -1;
  view.state.field(tableField).between(edge.from, edge.to, (from, to) => {
    if (direction > 0 && from === edge.from) target = from;
    if (direction < 0 && to === edge.to) target = view.state.doc.lineAt(to).from;
  });
  if (target < 0) return false;
  view.dispatch({ selection: { anchor: target }, scrollIntoView: true });
  return true;
}

const tableKeys = Prec.high(
  keymap.of([
    { key: "ArrowDown", run: (view) => enterTable(view, 1) },
    { key: "ArrowUp", run: (view) => enterTable(view, -1) },
  ]),
);

export const tableGrids = [tableField, tableTheme, tableKeys];
