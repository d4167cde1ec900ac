// Links written in the text, for Ctrl+click and Ctrl+Enter. The page never navigates: a web
// address goes to the desktop's browser through the host, and any other target goes to the host
// as written, which finds the document in the folder.
import { syntaxTree } from "@codemirror/language";
import { Decoration, EditorView, ViewPlugin, hoverTooltip } from "@codemirror/view";
import { linkFacts } from "./linkFacts.js";
import { documentPath, openFolder } from "./document.js";
import { decode, isWebAddress, placePath } from "./paths.js";

const ADDRESS = /\bhttps?:\/\/[^\s<>()[\]`"']+/g;
// Punctuation that ends a sentence rather than the address.
const TRAILING = /[.,;:!?]+$/;
const WIKI = /\[\[[^[\]\n]+\]\]/g;
const CODE = new Set(["InlineCode", "FencedCode", "CodeBlock", "InlineMath", "BlockMath"]);

// The http(s) address in `text` that covers the offset `at`, or null.
export function addressAt(text, at) {
  for (const match of text.matchAll(ADDRESS)) {
    const address = match[0].replace(TRAILING, "");
    const from = match.index;
    if (at >= from && at <= from + address.length) return address;
  }
  return null;
}

// A link label as references compare them: without case, its spaces run together.
const labelKey = (label) => label.replace(/^\[|\]$/g, "").trim().replace(/\s+/g, " ").toLowerCase();

// What the reference definition "[label]: target" of the document says, or null. Read from the
// text, line by line, since a definition may lie past what is parsed.
function definition(state, label) {
  const key = labelKey(label);
  for (const lines = state.doc.iterLines(); !lines.next().done; ) {
    const match = /^ {0,3}\[([^\]]+)\]:\s*(<[^>\n]*>|\S+)/.exec(lines.value);
    if (match && labelKey(match[1]) === key) return match[2];
  }
  return null;
}

// The link at `pos`: { address } for a web address, { target } for a link to follow in the folder
// (as written: "../guide/install.md#linux", "<a b.md>", "[[Name|label]]"), or null. A reference
// link ("[texte][réf]", "[réf]") leads where its definition says.
export function linkAt(state, pos) {
  // Code shows links as text: nothing in it is followed.
  for (let node = syntaxTree(state).resolveInner(pos, 0); node; node = node.parent) {
    if (CODE.has(node.name)) return null;
  }
  const line = state.doc.lineAt(pos);
  const at = pos - line.from;
  for (const match of line.text.matchAll(WIKI)) {
    if (at >= match.index && at <= match.index + match[0].length) return { target: match[0] };
  }
  for (let node = syntaxTree(state).resolveInner(pos, 0); node; node = node.parent) {
    if (node.name !== "Link" && node.name !== "Autolink") continue;
    const url = node.getChild("URL");
    const label = node.getChild("LinkLabel");
    const written = url
      ? state.sliceDoc(url.from, url.to)
      : definition(state, label ? state.sliceDoc(label.from, label.to) : state.sliceDoc(node.from, node.to).replace(/\[\]$/, ""));
    if (written === null) return null;
    return isWebAddress(written) ? { address: written.replace(/^<|>$/g, "") } : { target: written };
  }
  const address = addressAt(line.text, at);
  return address ? { address } : null;
}

// Where the link `target` (as written) leads, as a reader would like to see it: a path from the
// open folder, or the name a wiki link gives.
export function destination(target, documentPath, folder) {
  const wiki = /^\[\[([^\]|]+)(?:\|[^\]]*)?\]\]$/.exec(target);
  if (wiki) return wiki[1].trim();
  let written = target.replace(/^<|>$/g, "");
  const hash = written.indexOf("#");
  const fragment = hash < 0 ? "" : written.slice(hash);
  written = (hash < 0 ? written : written.slice(0, hash)).replace(/\?.*$/, "");
  if (!written) return fragment;
  const path = decode(written);
  const full = placePath(path, documentPath, folder) ?? path;
  const inside = folder && full.startsWith(folder + "/");
  return (inside ? full.slice(folder.length + 1) : full) + fragment;
}

// After half a second over a link, where it leads.
const linkHover = hoverTooltip(
  (view, pos) => {
    const link = linkAt(view.state, pos);
    if (!link) return null;
    let text = link.address ?? destination(link.target, view.state.facet(documentPath), view.state.facet(openFolder));
    if (link.target && view.state.field(linkFacts).missing.has(link.target)) text += " — introuvable dans le dossier";
    return {
      pos,
      above: true,
      create() {
        const dom = document.createElement("div");
        dom.className = "cm-link-tooltip";
        dom.textContent = text;
        return { dom };
      },
    };
  },
  { hoverTime: 500 },
);

const missingMark = Decoration.mark({ class: "cm-link-missing" });

// The links on screen whose target the host found nowhere in the folder.
function missingLinks(view) {
  const { missing } = view.state.field(linkFacts);
  const marks = [];
  if (!missing.size) return Decoration.none;
  for (const { from, to } of view.visibleRanges) {
    syntaxTree(view.state).iterate({
      from,
      to,
      enter(node) {
        if (node.name !== "Link" && node.name !== "LinkReference") return;
        const url = node.node.getChild("URL");
        if (url && missing.has(view.state.sliceDoc(url.from, url.to))) marks.push(missingMark.range(node.from, node.to));
        return false;
      },
    });
    for (let pos = from; pos <= to; ) {
      const line = view.state.doc.lineAt(pos);
      for (const match of line.text.matchAll(WIKI)) {
        if (line.text[match.index - 1] !== "!" && missing.has(match[0])) {
          marks.push(missingMark.range(line.from + match.index, line.from + match.index + match[0].length));
        }
      }
      pos = line.to + 1;
    }
  }
  return Decoration.set(marks, true);
}

const missingLinkMarks = ViewPlugin.fromClass(
  class {
    constructor(view) {
      this.decorations = missingLinks(view);
    }

    update(update) {
      const told = update.state.field(linkFacts) !== update.startState.field(linkFacts);
      if (told || update.docChanged || update.viewportChanged || syntaxTree(update.state) !== syntaxTree(update.startState)) {
        this.decorations = missingLinks(update.view);
      }
    }
  },
  { decorations: (plugin) => plugin.decorations },
);

// Where a link leads, after half a second over it; links leading nowhere, drawn dotted.
export const linkHints = [
  linkHover,
  missingLinkMarks,
  EditorView.baseTheme({
    ".cm-link-tooltip": { padding: "2px 6px", fontSize: "85%" },
    ".cm-link-missing, .cm-link-missing *": { textDecoration: "underline dotted", textUnderlineOffset: "3px" },
  }),
];
