// Links written in the text, for Ctrl+click and Ctrl+Enter. The page never navigates: a web
// address goes to the desktop's browser through the host, and any other target goes to the host
// as written, which finds the document in the folder.
import { syntaxTree } from "@codemirror/language";

const ADDRESS = /\bhttps?:\/\/[^\s<>()[\]`"']+/g;
// Punctuation that ends a sentence rather than the address.
const TRAILING = /[.,;:!?]+$/;
const WIKI = /\[\[[^[\]\n]+\]\]/g;
const WEB = /^(?:https?:|mailto:)/i;

// The http(s) address in `text` that covers the offset `at`, or null.
export function addressAt(text, at) {
  for (const match of text.matchAll(ADDRESS)) {
    const address = match[0].replace(TRAILING, "");
    const from = match.index;
    if (at >= from && at <= from + address.length) return address;
  }
  return null;
}

// The link at `pos`: { address } for a web address, { target } for a link to follow in the folder
// (as written: "../guide/install.md#linux", "<a b.md>", "[[Name|label]]"), or null.
export function linkAt(state, pos) {
  const line = state.doc.lineAt(pos);
  const at = pos - line.from;
  for (const match of line.text.matchAll(WIKI)) {
    if (at >= match.index && at <= match.index + match[0].length) return { target: match[0] };
  }
  for (let node = syntaxTree(state).resolveInner(pos, 0); node; node = node.parent) {
    if (node.name !== "Link" && node.name !== "Autolink") continue;
    const url = node.getChild("URL");
    if (!url) return null; // a reference link: its definition is elsewhere
    const written = state.sliceDoc(url.from, url.to);
    return WEB.test(written.replace(/^</, "")) ? { address: written.replace(/^<|>$/g, "") } : { target: written };
  }
  const address = addressAt(line.text, at);
  return address ? { address } : null;
}
