// Formulas typeset with KaTeX where the caret is not: "$…$" inline on the lines the selection is
// not on, "$$…$$" and "```math" blocks in place of their lines. A formula that does not parse
// shows its source in the error colour, the parser's message as its tooltip. Each formula is
// typeset once per text and kept; only the formulas near the viewport are drawn. KaTeX is a
// bundle of its own (formulas.js beside the page, its style sheet and fonts in katex/), loaded the
// first time a formula is drawn or prepared: until it is in, a formula shows its source.
import { Decoration, EditorView, WidgetType } from "@codemirror/view";
import { iterateVisible, touches, visibleLinesDrawing } from "./caretLines.js";
import { blockDrawer, caretToSourceOnPress, fencedText, linesOf } from "./blockDrawings.js";
import { loadPageScript } from "./pageScripts.js";

const ENGINE_MISSING = "Les formules ne peuvent pas être affichées : formulas.js manque à côté de la page.";
let katex = null; // once loaded
let engineError = null; // why it could not be

function loadEngine() {
  return loadPageScript("formulas.js", "PagewellFormulaEngine", ENGINE_MISSING, "katex/katex.min.css").then(
    (engine) => (katex = engine),
    (error) => {
      engineError = error.message;
      throw error;
    },
  );
}

const typeset = new Map(); // "display?" + formula → { html } or { error }
const TYPESET_KEPT = 5000;
const heights = new Map(); // a block formula's last height, so it is sized before it shows again

// The formula typeset, or null while KaTeX is not loaded (its loading then begins).
function typesetFormula(formula, display) {
  const key = (display ? "D" : "I") + formula;
  let result = typeset.get(key);
  if (result) return result;
  if (engineError) return { error: engineError };
  if (!katex) {
    loadEngine().catch(() => {});
    return null;
  }
  try {
    const html = katex.renderToString(formula, {
      displayMode: display,
      throwOnError: true,
      output: "htmlAndMathml",
      strict: "ignore",
      trust: false,
      maxExpand: 1000,
      maxSize: 100,
    });
    result = { html };
  } catch (error) {
    result = { error: String(error?.message ?? error) };
  }
  if (typeset.size >= TYPESET_KEPT) typeset.clear();
  typeset.set(key, result);
  return result;
}

class FormulaWidget extends WidgetType {
  // `formula` is what KaTeX reads, `source` the text it stands for (shown when it does not parse).
  constructor(formula, source, display, block) {
    super();
    this.formula = formula;
    this.source = source;
    this.display = display;
    this.block = block;
  }

  eq(other) {
    return other.formula === this.formula && other.source === this.source && other.display === this.display && other.block === this.block;
  }

  get estimatedHeight() {
    return this.block ? (heights.get(this.formula) ?? -1) : -1;
  }

  prepare() {
    typesetFormula(this.formula, this.display);
  }

  toDOM(view) {
    const dom = document.createElement(this.block ? "div" : "span");
    dom.className = this.block ? "cm-math cm-math-block" : "cm-math cm-math-inline";
    const show = (result) => {
      dom.classList.remove("cm-math-pending");
      if (result.html !== undefined) {
        dom.innerHTML = result.html;
      } else {
        dom.classList.add("cm-math-error");
        dom.textContent = this.source;
        dom.title = result.error;
      }
      if (this.block) {
        view.requestMeasure({
          read: () => dom.offsetHeight,
          write: (height) => {
            if (height <= 0) return;
            if (heights.size >= TYPESET_KEPT) heights.clear();
            heights.set(this.formula, height);
          },
        });
      }
    };
    const result = typesetFormula(this.formula, this.display);
    if (result) {
      show(result);
    } else {
      // Until KaTeX is in, the source stands in its place; then the view measures the formula.
      dom.classList.add("cm-math-pending");
      dom.textContent = this.source;
      loadEngine().then(
        () => show(typesetFormula(this.formula, this.display)),
        () => show({ error: engineError }),
      ).finally(() => view.requestMeasure());
    }
    caretToSourceOnPress(view, dom);
    return dom;
  }

  ignoreEvent() {
    return true;
  }
}

// The formula of a "$$…$$" block or a "```math" block.
function drawBlockFormula(node, state) {
  const source = () => state.sliceDoc(...linesOf(state, node)).replace(/\r/g, "");
  if (node.name === "BlockMath") {
    const marks = node.node.getChildren("MathMark");
    if (marks.length < 2) return null;
    return new FormulaWidget(state.sliceDoc(marks[0].to, marks[1].from), source(), true, true);
  }
  const formula = fencedText(node, state, "math");
  return formula === null ? null : new FormulaWidget(formula, source(), true, true);
}

// The inline formulas of the visible lines the selection is not on.
function inlineFormulas(view, lines) {
  const { state } = view;
  const ranges = [];
  iterateVisible(view, (node) => {
    if (node.name !== "InlineMath") return !/Code|BlockMath|FrontMatter/.test(node.name);
    const line = state.doc.lineAt(node.from);
    // A formula over several lines of a paragraph stays as written.
    if (node.to > line.to || touches(lines, state, node.from, node.to)) return false;
    const marks = node.node.getChildren("MathMark");
    if (marks.length < 2) return false;
    const display = marks[0].to - marks[0].from === 2;
    const formula = state.sliceDoc(marks[0].to, marks[1].from);
    const widget = new FormulaWidget(formula, state.sliceDoc(node.from, node.to), display, false);
    ranges.push(Decoration.replace({ widget }).range(node.from, node.to));
    return false;
  });
  return Decoration.set(ranges, true);
}

export const formulas = [
  blockDrawer.of(drawBlockFormula),
  visibleLinesDrawing(inlineFormulas),
  EditorView.baseTheme({
    ".cm-math": { cursor: "text" },
    ".cm-math-inline .katex": { fontSize: "1.05em" },
    ".cm-math-inline .katex-display": { display: "inline-block", margin: "0 0.2em" },
    ".cm-math-block": { padding: "2px 0", overflowX: "auto", overflowY: "hidden" },
    ".cm-math-block .katex-display": { margin: "0.5em 0" },
    ".cm-math-error, .cm-math-pending": { whiteSpace: "pre-wrap" },
  }),
];
