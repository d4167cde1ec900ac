// A document reads like a page: on every line the caret or the selection is not on, the markup
// steps aside. Emphasis, strike-through and code markers, heading marks, quote marks and the
// parts of a link other than its text are hidden; bullets are drawn as bullets, rules as rules,
// task items as check boxes, a wiki link as its alias or its name. The caret entering a line
// shows its source where it stands.
//
// Hidden markup stays in the page's text, at no width (font size 0), so the text the view holds
// and a screen reader reads is the document's, and no line changes height when it shows. What is
// drawn instead (a check box, the « › » of a wiki link) is beside the text, hidden from screen
// readers but for the check box, a button named after its item.
import { Decoration, EditorView, WidgetType } from "@codemirror/view";
import { syntaxTree } from "@codemirror/language";
import { touches, visibleLinesDrawing } from "./caretLines.js";

export const hidden = Decoration.mark({ class: "cm-hidden-markup" });
const bullet = Decoration.mark({ class: "cm-bullet" });
const wikiLink = Decoration.mark({ class: "cm-wikilink" });
const comment = Decoration.mark({ class: "cm-html-comment" });
const rule = Decoration.line({ class: "cm-rule" });

const WIKI = /\[\[([^[\]|#\n]*)(#[^[\]|\n]*)?(\|[^[\]\n]*)?\]\]/g;
const CODE = new Set(["FencedCode", "CodeBlock", "InlineCode", "CommentBlock", "HTMLBlock", "InlineMath", "BlockMath"]);
const MARKED = new Set(["Emphasis", "StrongEmphasis", "Strikethrough", "InlineCode"]);
const MARKS = new Set(["EmphasisMark", "StrikethroughMark", "CodeMark"]);

class SeparatorWidget extends WidgetType {
  eq() {
    return true;
  }

  toDOM() {
    const span = document.createElement("span");
    span.className = "cm-wikilink cm-wikilink-separator";
    span.setAttribute("aria-hidden", "true");
    span.textContent = " › ";
    return span;
  }
}

// A task item's box: a button that writes "[x]" or "[ ]" into the text, as typing would.
class TaskWidget extends WidgetType {
  constructor(checked, name) {
    super();
    this.checked = checked;
    this.name = name;
  }

  eq(other) {
    return other.checked === this.checked && other.name === this.name;
  }

  toDOM(view) {
    const box = document.createElement("span");
    box.className = "cm-task" + (this.checked ? " cm-task-checked" : "");
    box.setAttribute("role", "button");
    box.setAttribute("aria-pressed", String(this.checked));
    box.setAttribute("aria-label", this.name);
    box.tabIndex = -1;
    // The box stands just before its marker, wherever edits above have moved it since.
    const toggle = (event) => {
      event.preventDefault();
      toggleTask(view, view.posAtDOM(box));
    };
    box.addEventListener("mousedown", toggle);
    box.addEventListener("keydown", (event) => {
      if (event.key === " " || event.key === "Enter") toggle(event);
    });
    return box;
  }

  ignoreEvent() {
    return true;
  }
}

// Turns the task marker "[ ]" at `at` into "[x]" or back: one edit, which undo takes back.
export function toggleTask(view, at) {
  const inside = view.state.sliceDoc(at + 1, at + 2);
  if (view.state.sliceDoc(at, at + 1) !== "[" || view.state.sliceDoc(at + 2, at + 3) !== "]") return false;
  view.dispatch({ changes: { from: at + 1, to: at + 2, insert: inside === " " ? "x" : " " }, userEvent: "input.toggle" });
  // The keyboard to the text, so Ctrl+Z takes the click back.
  view.focus();
  return true;
}

// The spaces after `pos` on its line.
function spacesAfter(doc, pos, limit) {
  let end = pos;
  while (end < limit && /[ \t]/.test(doc.sliceString(end, end + 1))) end++;
  return end;
}

function decorate(view, lines) {
  const { state } = view;
  const { doc } = state;
  const ranges = [];
  const hide = (from, to) => {
    if (to > from) ranges.push(hidden.range(from, to));
  };
  const lineTouched = (pos) => touches(lines, state, pos, pos);
  const tree = syntaxTree(state);
  for (const { from, to } of view.visibleRanges) {
    tree.iterate({
      from,
      to,
      enter(node) {
        const name = node.name;
        if (name === "FencedCode" || name === "CodeBlock" || name === "Image" || name === "FrontMatter" || name.endsWith("Math")) return false;
        if (name === "Comment" || name === "CommentBlock") {
          ranges.push(comment.range(node.from, node.to));
          return false;
        }
        if (MARKED.has(name)) {
          if (touches(lines, state, node.from, node.to)) return name !== "InlineCode";
          for (let child = node.node.firstChild; child; child = child.nextSibling) {
            if (MARKS.has(child.name)) hide(child.from, child.to);
          }
          return name !== "InlineCode";
        }
        if (name === "Link") {
          if (touches(lines, state, node.from, node.to)) return true;
          const marks = node.node.getChildren("LinkMark");
          if (marks.length < 2 || marks[0].from !== node.from) return true;
          hide(marks[0].from, marks[0].to);
          hide(marks[1].from, node.to);
          return true;
        }
        if (name.startsWith("ATXHeading")) {
          if (lineTouched(node.from)) return false;
          const marks = node.node.getChildren("HeaderMark");
          if (marks[0]?.from === node.from) hide(marks[0].from, spacesAfter(doc, marks[0].to, node.to));
          const closing = marks.length > 1 || (marks[0] && marks[0].from !== node.from) ? marks[marks.length - 1] : null;
          if (closing) {
            let start = closing.from;
            while (start > node.from && /[ \t]/.test(doc.sliceString(start - 1, start))) start--;
            hide(start, closing.to);
          }
          return true;
        }
        if (name === "QuoteMark") {
          if (!lineTouched(node.from)) hide(node.from, spacesAfter(doc, node.to, Math.min(node.to + 1, doc.lineAt(node.to).to)));
          return false;
        }
        if (name === "ListItem") {
          const mark = node.node.firstChild;
          if (!mark || mark.name !== "ListMark" || lineTouched(mark.from)) return true;
          const task = node.node.getChild("Task");
          const marker = task?.firstChild;
          if (marker?.name === "TaskMarker" && doc.lineAt(marker.from).number === doc.lineAt(mark.from).number) {
            const line = doc.lineAt(marker.from);
            const end = spacesAfter(doc, marker.to, line.to);
            const text = doc.sliceString(end, line.to).trim();
            const checked = /x/i.test(doc.sliceString(marker.from + 1, marker.to - 1));
            hide(mark.from, spacesAfter(doc, mark.to, marker.from));
            ranges.push(Decoration.widget({ widget: new TaskWidget(checked, text), side: 1 }).range(marker.from));
            hide(marker.from, end);
          } else if (node.node.parent?.name === "BulletList") {
            ranges.push(bullet.range(mark.from, mark.to));
          }
          return true;
        }
        if (name === "Escape") {
          // "\*" reads as "*".
          if (!lineTouched(node.from)) hide(node.from, node.from + 1);
          return false;
        }
        if (name === "HorizontalRule") {
          if (!lineTouched(node.from)) ranges.push(rule.range(doc.lineAt(node.from).from));
          return false;
        }
        return true;
      },
    });
    wikiLinks(state, tree, lines, from, to, ranges);
  }
  return Decoration.set(ranges, true);
}

// The wiki links of the lines in [from, to] the selection is not on, outside code.
function wikiLinks(state, tree, lines, from, to, ranges) {
  const { doc } = state;
  for (let pos = from; pos <= to; ) {
    const line = doc.lineAt(pos);
    pos = line.to + 1;
    if (!line.text.includes("[[") || touches(lines, state, line.from, line.from)) continue;
    for (const match of line.text.matchAll(WIKI)) {
      const start = line.from + match.index;
      if (line.text[match.index - 1] === "!") continue;
      let code = false;
      for (let node = tree.resolveInner(start, 1); node; node = node.parent) code ||= CODE.has(node.name);
      if (code) continue;
      const [whole, target, heading, alias] = match;
      const end = start + whole.length;
      if (alias !== undefined) {
        // "[[Nom|alias]]": the alias alone, after its "|".
        const shown = end - 2 - (alias.length - 1);
        ranges.push(hidden.range(start, shown));
        if (shown < end - 2) ranges.push(wikiLink.range(shown, end - 2));
      } else {
        ranges.push(hidden.range(start, start + 2));
        if (heading !== undefined) {
          const hash = start + 2 + target.length;
          if (target.length) ranges.push(wikiLink.range(start + 2, hash));
          ranges.push(hidden.range(hash, hash + 1));
          if (target.length) ranges.push(Decoration.widget({ widget: new SeparatorWidget(), side: 1 }).range(hash + 1));
          if (heading.length > 1) ranges.push(wikiLink.range(hash + 1, end - 2));
        } else if (target.length) {
          ranges.push(wikiLink.range(start + 2, end - 2));
        }
      }
      ranges.push(hidden.range(end - 2, end));
    }
  }
}

export const markupHiding = [
  visibleLinesDrawing(decorate),
  EditorView.baseTheme({
    // At no width, still in the text: the line keeps its height, screen readers their text.
    ".cm-hidden-markup": { fontSize: "0" },
    ".cm-bullet": { position: "relative" },
    ".cm-bullet, .cm-bullet *, .cm-line.cm-rule, .cm-line.cm-rule *": { color: "transparent !important" },
    ".cm-bullet::before": { content: '"•" / ""', position: "absolute", left: "0", right: "0", textAlign: "center" },
    ".cm-html-comment": { opacity: "0.55" },
    ".cm-line.cm-rule": { backgroundImage: "linear-gradient(#8886, #8886)", backgroundSize: "100% 1px", backgroundPosition: "0 50%", backgroundRepeat: "no-repeat" },
    ".cm-task": {
      display: "inline-block",
      boxSizing: "border-box",
      width: "0.95em",
      height: "0.95em",
      margin: "0 0.45em 0 0.1em",
      verticalAlign: "-0.12em",
      border: "1.5px solid",
      borderRadius: "3px",
      cursor: "pointer",
    },
    ".cm-task-checked::after": {
      content: '""',
      display: "block",
      width: "0.22em",
      height: "0.48em",
      margin: "0.06em auto 0",
      border: "solid white",
      borderWidth: "0 0.12em 0.12em 0",
      transform: "rotate(45deg)",
    },
  }),
];
