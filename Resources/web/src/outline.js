// The outline of a Markdown document, read with the editor's own Markdown parser: the headings
// the outline lists are exactly the ones the editor styles as headings.
//
// `outlineField` holds the headings. After a change it reads again, from the editor's syntax
// tree, only the top-level blocks from the one holding the change until the new tree lines up
// with the old one again, block for block; the headings before and after are kept.
//
// The editor parses a little past what is on screen, and keeping a whole tree of a large document
// would make it parse the whole document again on every key. So for the part its tree does not
// cover, `outlineParser` reads the headings in idle time with the same parser, parsing only the
// pieces of the document that may hold one.
import { Facet, StateEffect, StateField } from "@codemirror/state";
import { ViewPlugin } from "@codemirror/view";
import { language, syntaxTree } from "@codemirror/language";
import { HeadingList } from "./headingList.js";
import { HeadingScan } from "./headingScan.js";

const HEADING_LEVEL = {
  ATXHeading1: 1,
  ATXHeading2: 2,
  ATXHeading3: 3,
  ATXHeading4: 4,
  ATXHeading5: 5,
  ATXHeading6: 6,
  SetextHeading1: 1,
  SetextHeading2: 2,
};
// The blocks that hold other blocks, and so may hold headings.
const CONTAINERS = new Set(["BulletList", "OrderedList", "ListItem", "Blockquote"]);

// The plain text of a heading's inline Markdown: what a reader sees, without the markup.
export function headingText(source) {
  if (!/[*_~`[\]<>&\\!]/.test(source)) return source.replace(/\s+/g, " ").trim(); // no markup
  let text = source;
  text = text.replace(/`+([^`]*?)`+/g, (_, code) => code.replace(/[*_~[\]\\]/g, (c) => `\u0000${c.charCodeAt(0)}\u0000`));
  text = text.replace(/!\[([^\]]*)\]\([^)]*\)/g, "$1");
  text = text.replace(/\[([^\]]*)\]\([^)]*\)/g, "$1");
  text = text.replace(/\[([^\]]*)\]\[[^\]]*\]/g, "$1");
  text = text.replace(/<((?:https?|ftp|mailto):[^>\s]*)>/gi, "$1");
  text = text.replace(/<\/?[A-Za-z][^>]*>/g, "");
  text = text.replace(/\\([!-/:-@[-`{-~])/g, (_, c) => `\u0000${c.charCodeAt(0)}\u0000`);
  text = text.replace(/(\*\*|__|~~)(?=\S)([\s\S]*?\S)\1/g, "$2");
  text = text.replace(/(^|[^\p{L}\p{N}*])\*(?=\S)([\s\S]*?\S)\*(?![\p{L}\p{N}*])/gu, "$1$2");
  text = text.replace(/(^|[^\p{L}\p{N}_])_(?=\S)([\s\S]*?\S)_(?![\p{L}\p{N}_])/gu, "$1$2");
  text = text.replace(/\u0000(\d+)\u0000/g, (_, code) => String.fromCharCode(Number(code)));
  text = decodeEntities(text);
  return text.replace(/\s+/g, " ").trim();
}

const ENTITIES = {
  amp: "&", lt: "<", gt: ">", quot: '"', apos: "'", nbsp: "\u00a0", laquo: "«", raquo: "»",
  hellip: "…", mdash: "—", ndash: "–", copy: "©", reg: "®", trade: "™", deg: "°", euro: "€",
  eacute: "é", egrave: "è", ecirc: "ê", euml: "ë", agrave: "à", acirc: "â", auml: "ä", ccedil: "ç",
  icirc: "î", iuml: "ï", ocirc: "ô", ouml: "ö", ugrave: "ù", ucirc: "û", uuml: "ü", oelig: "œ",
  Eacute: "É", Egrave: "È", Agrave: "À", Ccedil: "Ç", OElig: "Œ", szlig: "ß",
};

function decodeEntities(text) {
  return text.replace(/&(#\d{1,7}|#[xX][0-9a-fA-F]{1,6}|[A-Za-z]+);/g, (whole, name) => {
    if (name[0] === "#") {
      const code = name[1] === "x" || name[1] === "X" ? parseInt(name.slice(2), 16) : parseInt(name.slice(1), 10);
      return code > 0 && code <= 0x10ffff ? String.fromCodePoint(code) : whole;
    }
    return Object.prototype.hasOwnProperty.call(ENTITIES, name) ? ENTITIES[name] : whole;
  });
}

// A readable identifier for a heading: lower case, words joined by hyphens.
export function slugify(text) {
  const slug = text
    .toLowerCase()
    .replace(/[^\p{L}\p{N}\s_-]/gu, "")
    .trim()
    .replace(/\s+/g, "-");
  return slug || "section";
}

// Ids for headings in document order, unique in the document: a repeated title gets "-1", "-2"...
export function withIds(headings) {
  const used = new Set();
  return headings.map((h) => {
    const base = slugify(h.text);
    let id = base;
    for (let n = 1; used.has(id); n++) id = `${base}-${n}`;
    used.add(id);
    return { id, level: h.level, text: h.text, from: h.from };
  });
}

// A heading node's entry: its level, its text as a reader sees it, and where it starts. The node
// is `offset` into the document (a tree of part of it).
function heading(doc, node, level, offset) {
  const mark = node.firstChild; // the opening "#"s of an ATX heading
  const start = node.from + offset;
  const end = node.to + offset;
  if (node.name.startsWith("ATX")) {
    const from = mark && mark.name === "HeaderMark" && mark.from === node.from ? mark.to + offset : start;
    return atxHeading(doc, start, from, end, level);
  }
  // A Setext heading's text runs to its underline; its later lines may carry quote markers.
  const underline = node.lastChild;
  const textEnd = underline && underline.name === "HeaderMark" ? underline.from + offset : end;
  const lines = doc.sliceString(start, textEnd, "\n").split("\n");
  const text = lines.map((line, i) => (i ? line.replace(/^(?:[ \t]*>)+/, "") : line)).join(" ");
  return { from: start, to: end, level, text: headingText(text) };
}

// An ATX heading's entry: it runs from `start` to `end`, its text from `textFrom` (after the
// opening "#"s) less a closing run of "#"s.
export function atxHeading(doc, start, textFrom, end, level) {
  const body = doc.sliceString(textFrom, end).replace(/(?:^|[ \t]+)#+[ \t]*$/, "");
  return { from: start, to: end, level, text: headingText(body) };
}

// The headings inside the top-level block `node`, appended to `out`.
function collect(doc, node, out, offset = 0) {
  const level = HEADING_LEVEL[node.name];
  if (level) {
    out.push(heading(doc, node, level, offset));
  } else if (CONTAINERS.has(node.name)) {
    for (let child = node.firstChild; child; child = child.nextSibling) collect(doc, child, out, offset);
  }
}

function sameOutline(a, b) {
  return a.length === b.length && a.every((h, i) => h.level === b[i].level && h.text === b[i].text);
}

// The whole outline of what `tree` covers; the tree may be of the part of `doc` from `offset`.
export function fromTree(doc, tree, offset = 0) {
  const headings = [];
  for (let block = tree.topNode.firstChild; block; block = block.nextSibling) collect(doc, block, headings, offset);
  return { headings, covered: tree.length, changed: true };
}

// The outline after `changes` (possibly empty) turned the old document, whose tree was `oldTree`,
// into `doc` with the tree `tree`. `old.covered` is how far the old outline is true; beyond it,
// its headings only stand in until the parse gets there. The headings before and after the blocks
// read again are shared with the old outline (HeadingList), so a key costs what it changes.
function updated(old, oldTree, doc, tree, changes) {
  let firstChange = Infinity;
  let lastChange = -1; // both in the new document
  changes.iterChangedRanges((_fromA, _toA, fromB, toB) => {
    firstChange = Math.min(firstChange, fromB);
    lastChange = Math.max(lastChange, toB);
  });
  const delta = changes.newLength - changes.length;
  const oldCovered = Math.min(old.covered, changes.length);
  const start = Math.min(firstChange, oldCovered < changes.length ? changes.mapPos(oldCovered, -1) : Infinity);
  if (start === Infinity) return old;

  // Headings ending before the block that holds the start are the same as before.
  const top = tree.topNode;
  let block = (start > 0 && top.childBefore(start)) || top.firstChild;
  const keepTo = block ? block.from : Math.min(start, tree.length);
  const before = old.headings;
  let keptCount = before.firstFrom(keepTo);
  while (keptCount > 0 && before.at(keptCount - 1).to > keepTo) keptCount--;

  // Read blocks until one lies past the changes where the old tree has the same block, read in
  // the same place: from there on both trees agree, and so do the outlines if the old one was
  // whole.
  const oldWhole = oldCovered >= changes.length;
  const read = [];
  let resumed = -1; // the first old heading kept after the blocks read
  for (; block; block = block.nextSibling) {
    if (oldWhole && block.from > lastChange && block.to <= tree.length) {
      const at = block.from - delta;
      const same = oldTree.topNode.childAfter(at);
      if (same && same.from === at && same.to === block.to - delta && same.type === block.type) {
        resumed = before.firstFrom(at);
        break;
      }
    }
    collect(doc, block, read);
  }
  // Not met again: the old headings past the new tree's end stand in until the parse gets there.
  // A tree of the whole text leaves none to stand in, also those of text deleted at its end.
  const covered = resumed >= 0 ? changes.newLength : tree.length;
  if (resumed < 0) resumed = covered >= doc.length ? before.length : before.firstFrom(tree.length, (h) => changes.mapPos(h.from, 1));
  const changed = read.length !== resumed - keptCount || !sameOutline(read, before.toArray(keptCount, resumed));
  const headings = HeadingList.join([before.slice(0, keptCount), read, before.slice(resumed).mapped(changes)]);
  return { headings, covered, changed };
}

// The headings of a whole parse of `doc`, from `outlineParser`.
const outlineRead = StateEffect.define();

export const outlineField = StateField.define({
  create(state) {
    const { headings, covered, changed } = fromTree(state.doc, syntaxTree(state));
    return { headings: HeadingList.of(headings), covered, changed };
  },
  update(value, tr) {
    for (const effect of tr.effects) {
      if (effect.is(outlineRead) && effect.value.doc === tr.state.doc) {
        const { headings } = effect.value;
        return { headings: HeadingList.of(headings), covered: tr.state.doc.length, changed: !sameOutline(headings, value.headings.toArray()) };
      }
    }
    const tree = syntaxTree(tr.state);
    if (!tr.docChanged && tree === syntaxTree(tr.startState)) return value;
    return updated(value, syntaxTree(tr.startState), tr.state.doc, tree, tr.changes);
  },
});

// Whether the outline holds every heading of the document.
export function outlineComplete(state) {
  return state.field(outlineField).covered >= state.doc.length;
}

// Parses what the outline lacks at once (when a heading is asked for before the idle parse is
// done).
export function completeOutline(view) {
  const plugin = view.plugin(outlineParser);
  if (plugin) plugin.finish(Infinity);
}

// A scan of `doc` for its headings (HeadingScan) whose entries are the outline's.
export function headingScan(doc, parser, checkpointEvery) {
  const scan = new HeadingScan(
    doc,
    parser,
    {
      tree: (tree, offset) => fromTree(scan.doc, tree, offset).headings,
      atx: (from, to, level) => atxHeading(scan.doc, from, from + level, to, level),
    },
    checkpointEvery,
  );
  return scan;
}

// The editor's parser without its inline parsers: Markdown decides its blocks before their
// inline content, so the blocks, headings among them, come out the same, three times faster.
// With no inline parser left an inline parse finds nothing, so it is not run at all: it would
// still walk every character of every paragraph.
const blockParsers = new WeakMap();
const noInline = () => [];
export function blocksOnly(parser) {
  if (!Array.isArray(parser.inlineNames)) return parser;
  let blocks = blockParsers.get(parser);
  if (!blocks) {
    blocks = parser.configure({ remove: parser.inlineNames.filter(Boolean) });
    blocks.parseInline = noInline;
    blockParsers.set(parser, blocks);
  }
  return blocks;
}

// The parser the idle scan reads pieces with: by default the editor's own without its inline
// parsers. The page gives one that also leaves the code inside fenced blocks alone.
export const outlineBlocks = Facet.define({ combine: (parsers) => parsers[0] || null });

const requestIdle =
  typeof requestIdleCallback === "function"
    ? (f) => requestIdleCallback(f, { timeout: 500 })
    : (f) => setTimeout(() => f(null), 50);
const cancelIdle = typeof cancelIdleCallback === "function" ? cancelIdleCallback : clearTimeout;

// Reads the document's headings in idle slices while the outline lacks part of them, parsing only
// the pieces that may hold one (HeadingScan), and hands them to `outlineField`. An edit meanwhile
// keeps what the scan read before it, and the scan goes on from there.
export const outlineParser = ViewPlugin.fromClass(
  class {
    constructor(view) {
      this.view = view;
      this.idle = 0;
      this.scan = null;
      this.work = this.work.bind(this);
      this.schedule();
    }

    update(update) {
      if (update.docChanged && this.scan) this.scan.edited(update.state.doc, update.changes);
      this.schedule();
    }

    schedule() {
      if (!this.idle && !outlineComplete(this.view.state)) this.idle = requestIdle(this.work);
    }

    work(deadline) {
      this.idle = 0;
      this.finish(deadline ? Math.min(50, Math.max(10, deadline.timeRemaining())) : 30);
    }

    // Scans for at most `budget` milliseconds; true once the outline is whole.
    finish(budget) {
      const { state } = this.view;
      if (outlineComplete(state)) {
        this.scan = null;
        return true;
      }
      if (!this.scan) {
        const parser = state.facet(outlineBlocks) || blocksOnly(state.facet(language).parser);
        this.scan = headingScan(state.doc, parser);
      }
      if (!this.scan.work(performance.now() + budget)) {
        this.schedule();
        return false;
      }
      const { doc, headings } = this.scan;
      this.scan = null;
      this.view.dispatch({ effects: outlineRead.of({ doc, headings }) });
      return true;
    }

    destroy() {
      if (this.idle) cancelIdle(this.idle);
    }
  },
);
