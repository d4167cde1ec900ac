// "```mermaid" blocks drawn as diagrams where the caret is not. The diagram library is a bundle of
// its own (diagrams.js beside the page), loaded the first time a document has a diagram, so a page
// without one never holds it. It runs at its strict security level: no scripts, no links out.
// Each diagram is drawn once per text and theme and kept; a document's diagrams are drawn in idle
// time ahead of the reader (see blockDrawings.js), so each has its size before it scrolls into
// view. A diagram that does not parse shows its source with the library's message.
import { EditorView, WidgetType } from "@codemirror/view";
import { blockDrawer, caretToSourceOnPress, fencedText } from "./blockDrawings.js";
import { loadPageScript } from "./pageScripts.js";

const ENGINE_SCRIPT = "diagrams.js";
const ENGINE_MISSING = "Les diagrammes ne peuvent pas être dessinés : diagrams.js manque à côté de la page.";
const DRAWN_KEPT = 500;
const drawn = new Map(); // theme + text → { svg, width, ratio } or { error }
const jobs = new Map(); // theme + text → the drawing asked for
const waiting = []; // the drawings asked for, not begun
let drawing = false;
let engineTheme = null;
let drawings = 0;
let contentWidth = 700; // the width diagrams were last shown at

const keyOf = (source, dark) => (dark ? "D" : "L") + source;

// The diagram library, loaded once as a script beside the page.
const loadEngine = () => loadPageScript(ENGINE_SCRIPT, "PagewellDiagramEngine", ENGINE_MISSING);

function settings(dark) {
  return {
    startOnLoad: false,
    securityLevel: "strict",
    theme: dark ? "dark" : "default",
    darkMode: dark,
    fontFamily: '-apple-system, system-ui, "Segoe UI", Cantarell, "Noto Sans", "DejaVu Sans", sans-serif',
    suppressErrorRendering: true,
    deterministicIds: true,
  };
}

// The width the library gives a drawing and its height for each unit of width.
function sizeOf(svg) {
  const box = /viewBox="\s*[-\d.e]+[\s,]+[-\d.e]+[\s,]+([\d.e]+)[\s,]+([\d.e]+)\s*"/.exec(svg);
  const maxWidth = /max-width:\s*([\d.e]+)px/.exec(svg);
  const width = box ? Number(box[1]) : 0;
  return { width: maxWidth ? Number(maxWidth[1]) : width, ratio: width > 0 ? Number(box[2]) / width : 0 };
}

// The drawing of `source`, made once. Drawings are made one at a time: those asked for by a
// diagram being shown first, those prepared ahead each in an idle moment of its own.
export function drawDiagram(source, dark, soon = true) {
  const key = keyOf(source, dark);
  if (drawn.has(key)) return Promise.resolve(drawn.get(key));
  let job = jobs.get(key);
  if (!job) {
    job = { key, source, dark, soon };
    job.done = new Promise((resolve) => (job.resolve = resolve));
    jobs.set(key, job);
    waiting.push(job);
  }
  job.soon ||= soon;
  drawWaiting();
  return job.done;
}

async function drawWaiting() {
  if (drawing) return;
  drawing = true;
  while (waiting.length) {
    if (!waiting.some((job) => job.soon)) await new Promise((resolve) => requestIdleCallback(resolve, { timeout: 5000 }));
    const index = Math.max(0, waiting.findIndex((job) => job.soon));
    const [job] = waiting.splice(index, 1);
    let result;
    try {
      const mermaid = await loadEngine();
      if (engineTheme !== job.dark) {
        mermaid.initialize(settings(job.dark));
        engineTheme = job.dark;
      }
      const { svg } = await mermaid.render(`pagewell-diagram-${++drawings}`, job.source);
      result = { svg, ...sizeOf(svg) };
    } catch (error) {
      result = { error: String(error?.message ?? error).trim() };
    }
    if (drawn.size >= DRAWN_KEPT) drawn.clear();
    drawn.set(job.key, result);
    jobs.delete(job.key);
    job.resolve(result);
  }
  drawing = false;
}

// The height a drawing takes at the width diagrams are shown at.
function heightOf(result) {
  if (!result?.svg) return -1;
  return Math.ceil(Math.min(result.width || contentWidth, contentWidth) * result.ratio) + 16;
}

class DiagramWidget extends WidgetType {
  constructor(source, dark) {
    super();
    this.source = source;
    this.dark = dark;
  }

  eq(other) {
    return other.source === this.source && other.dark === this.dark;
  }

  get estimatedHeight() {
    return heightOf(drawn.get(keyOf(this.source, this.dark)));
  }

  prepare() {
    drawDiagram(this.source, this.dark, false);
  }

  toDOM(view) {
    const dom = document.createElement("div");
    dom.className = "cm-diagram";
    const show = (result) => {
      if (result.svg) {
        dom.innerHTML = result.svg;
        dom.style.minHeight = "";
        // Read as the text it is drawn from.
        dom.setAttribute("role", "img");
        dom.setAttribute("aria-label", this.source);
      } else {
        dom.classList.add("cm-diagram-error");
        const source = document.createElement("pre");
        source.className = "cm-diagram-source";
        source.textContent = this.source;
        const message = document.createElement("div");
        message.className = "cm-diagram-message";
        message.textContent = result.error;
        dom.replaceChildren(source, message);
      }
    };
    const result = drawn.get(keyOf(this.source, this.dark));
    if (result) {
      show(result);
    } else {
      // Until it is drawn, the block keeps about the height of its lines.
      dom.style.minHeight = `${Math.max(3, this.source.split("\n").length + 2) * 1.65}em`;
      drawDiagram(this.source, this.dark).then(show);
    }
    view.requestMeasure({
      read: () => dom.clientWidth,
      write: (width) => {
        if (width > 0) contentWidth = width;
      },
    });
    caretToSourceOnPress(view, dom);
    return dom;
  }

  ignoreEvent() {
    return true;
  }
}

function drawMermaid(node, state) {
  const source = fencedText(node, state, "mermaid");
  return source === null ? null : new DiagramWidget(source, state.facet(EditorView.darkTheme));
}

export const diagrams = [
  blockDrawer.of(drawMermaid),
  EditorView.baseTheme({
    ".cm-diagram": { display: "flex", flexDirection: "column", alignItems: "center", padding: "8px 0", cursor: "text" },
    ".cm-diagram svg": { height: "auto", display: "block" },
    ".cm-diagram-error": { alignItems: "stretch" },
    ".cm-diagram-source": { margin: "0", whiteSpace: "pre-wrap" },
    ".cm-diagram-message": { whiteSpace: "pre-wrap", fontSize: "0.86em", marginTop: "4px" },
  }),
];
