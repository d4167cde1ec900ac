// Line classes for the blocks of the visible part of the document, so headings get their sizes
// and space, and code blocks, quotes and front matter their own look.
import { Decoration, ViewPlugin } from "@codemirror/view";
import { syntaxTree } from "@codemirror/language";
import { iterateVisible } from "./caretLines.js";

const headingClass = {
  ATXHeading1: "cm-h1",
  ATXHeading2: "cm-h2",
  ATXHeading3: "cm-h3",
  ATXHeading4: "cm-h4",
  ATXHeading5: "cm-h5",
  ATXHeading6: "cm-h6",
  SetextHeading1: "cm-h1",
  SetextHeading2: "cm-h2",
};
const blockClass = { FencedCode: "cm-codeblock", CodeBlock: "cm-codeblock", FrontMatter: "cm-frontmatter", Table: "cm-table" };

const lineDecorations = new Map();
export function lineDecoration(cls) {
  let deco = lineDecorations.get(cls);
  if (!deco) lineDecorations.set(cls, (deco = Decoration.line({ class: cls })));
  return deco;
}

function decorate(view) {
  const ranges = [];
  const doc = view.state.doc;
  const add = (from, to, cls, edges) => {
    const first = doc.lineAt(from).number;
    const last = doc.lineAt(Math.max(from, to - (to > from && doc.sliceString(to - 1, to) === "\n" ? 1 : 0))).number;
    for (let n = first; n <= last; n++) {
      let name = cls;
      if (edges && n === first) name += ` ${cls}-first`;
      if (edges && n === last) name += ` ${cls}-last`;
      ranges.push(lineDecoration(name).range(doc.line(n).from));
    }
  };
  iterateVisible(view, (node) => {
    const name = node.name;
    if (headingClass[name]) {
      add(node.from, node.to, headingClass[name], false);
      return false;
    }
    if (blockClass[name]) {
      add(node.from, node.to, blockClass[name], name === "FencedCode" || name === "CodeBlock");
      return false;
    }
    if (name === "Blockquote") add(node.from, node.to, "cm-quote", false);
    return name === "Document" || name === "Blockquote" || name.endsWith("List") || name === "ListItem";
  });
  return Decoration.set(ranges, true);
}

export const blockStyles = ViewPlugin.fromClass(
  class {
    constructor(view) {
      this.decorations = decorate(view);
    }
    update(update) {
      if (update.docChanged || update.viewportChanged || syntaxTree(update.startState) !== syntaxTree(update.state)) {
        this.decorations = decorate(update.view);
      }
    }
  },
  { decorations: (plugin) => plugin.decorations },
);
