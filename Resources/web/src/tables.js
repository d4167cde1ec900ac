// Pipe tables drawn as grids, their columns aligned, where the caret is not in them.
import { EditorView, WidgetType } from "@codemirror/view";
import { headingText } from "./outline.js";
import { blockDrawer, caretToSourceOnPress, linesOf } from "./blockDrawings.js";

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
    caretToSourceOnPress(view, table);
    return table;
  }

  ignoreEvent() {
    return false;
  }
}

// A table's lines as a grid.
function drawTable(node, state) {
  return node.name === "Table" ? new TableWidget(state.sliceDoc(...linesOf(state, node)).replace(/\r/g, "")) : null;
}

const tableTheme = EditorView.baseTheme({
  ".cm-table-grid": { borderCollapse: "collapse", margin: "4px 0", cursor: "text" },
  ".cm-table-grid th, .cm-table-grid td": { border: "1px solid #8884", padding: "3px 10px" },
  ".cm-table-grid th": { fontWeight: "600" },
});

export const tableGrids = [blockDrawer.of(drawTable), tableTheme];
