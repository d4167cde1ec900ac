// The outline of a Markdown document: its ATX ("# Title") and Setext ("Title" over "===")
// headings, never those inside fenced or indented code, HTML blocks or front matter.
//
// HeadingIndex reads the document line by line, one block state to the next. It keeps that state
// every few hundred lines, so after an edit it rescans from the last kept state before the edit
// only until its state agrees again with the one it had: typing in a large document rescans a few
// hundred lines, not the whole text.

const CHECKPOINT_SPACING = 256;

// Block states between lines.
const NORMAL = 0;
const FENCE = 1;
const HTML = 2;
const FRONT_MATTER = 3;

const HTML_BLOCK_TAGS = new Set(
  ("address article aside base basefont blockquote body caption center col colgroup dd details " +
    "dialog dir div dl dt fieldset figcaption figure footer form frame frameset h1 h2 h3 h4 h5 h6 " +
    "head header hr html iframe legend li link main menu menuitem nav noframes ol optgroup option " +
    "p param search section summary table tbody td tfoot th thead title tr track ul").split(" "),
);

// How each kind of HTML block ends (CommonMark's seven kinds, by their start condition).
const HTML_ENDS = [
  null,
  /<\/(script|pre|style|textarea)>/i,
  /-->/,
  /\?>/,
  />/,
  /\]\]>/,
  null, // a blank line
  null, // a blank line
];

function initialState() {
  return { kind: NORMAL, fenceChar: "", fenceLength: 0, htmlKind: 0, para: false, paraStart: 0, paraQuote: 0, paraList: false };
}

// Whether the state `old` had before an old line equals `now` before the same line after an edit
// that shifted lines by `delta` and changed old lines up to `lastChanged`. An open paragraph only
// counts as the same if it started after the edit, since a Setext heading takes its whole text.
function sameState(old, now, delta, lastChanged) {
  if (old.kind !== now.kind || old.fenceChar !== now.fenceChar || old.fenceLength !== now.fenceLength || old.htmlKind !== now.htmlKind) {
    return false;
  }
  if (old.para !== now.para) return false;
  if (!old.para) return true;
  return old.paraStart > lastChanged && old.paraStart + delta === now.paraStart && old.paraQuote === now.paraQuote && old.paraList === now.paraList;
}

function copyState(s) {
  return { ...s };
}

// Leading spaces, a tab counting up to the next multiple of four.
function indentOf(text) {
  let columns = 0;
  let i = 0;
  for (; i < text.length; i++) {
    const c = text.charCodeAt(i);
    if (c === 32) columns++;
    else if (c === 9) columns += 4 - (columns % 4);
    else break;
  }
  return { columns, offset: i };
}

// Removes block-quote markers; returns the rest of the line and how many markers there were.
function stripQuotes(text) {
  let depth = 0;
  for (;;) {
    const m = /^ {0,3}> ?/.exec(text);
    if (!m) return { text, depth };
    text = text.slice(m[0].length);
    depth++;
  }
}

const LIST_MARKER = /^ {0,3}(?:[-+*]|\d{1,9}[.)])(?:[ \t]+|$)/;

function htmlBlockKind(text, inParagraph) {
  const t = text.replace(/^ {0,3}/, "");
  if (t[0] !== "<") return 0;
  if (/^<(script|pre|style|textarea)(?:\s|>|$)/i.test(t)) return 1;
  if (t.startsWith("<!--")) return 2;
  if (t.startsWith("<?")) return 3;
  if (/^<![A-Za-z]/.test(t)) return 4;
  if (t.startsWith("<![CDATA[")) return 5;
  const tag = /^<\/?([A-Za-z][A-Za-z0-9-]*)(?:\s|\/?>|$)/.exec(t);
  if (tag && HTML_BLOCK_TAGS.has(tag[1].toLowerCase())) return 6;
  if (!inParagraph && /^(?:<[A-Za-z][A-Za-z0-9-]*(?:\s+[A-Za-z_:][\w.:-]*(?:\s*=\s*(?:[^\s"'=<>`]+|'[^']*'|"[^"]*"))?)*\s*\/?>|<\/[A-Za-z][A-Za-z0-9-]*\s*>)\s*$/.test(t))
    return 7;
  return 0;
}

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
    return { id, level: h.level, text: h.text, line: h.line };
  });
}

// Scans lines [from, ...] of `doc` (a CodeMirror Text: 1-based `line(n).text`, `lines`).
// `onLine(n, state)` runs before each line with the state in force there and may return true to
// stop. Headings found go to `found`.
function scan(doc, from, state, found, onLine) {
  let n = from;
  for (const iter = doc.iterLines(from); !iter.next().done; n++) {
    if (onLine && onLine(n, state)) return;
    step(doc, n, iter.value, state, found);
  }
}

// Front matter is a "---" first line closed by a later "---" or "..." line.
// The highlighting of front matter (frontMatter.js) follows the same rules.
export const FRONT_MATTER_OPEN = /^---[ \t]*$/;
export const FRONT_MATTER_CLOSE = /^(?:---|\.\.\.)[ \t]*$/;
export const FRONT_MATTER_MAX_LINES = 1000; // the closing line comes within these

function frontMatterEnd(doc) {
  if (doc.lines < 2 || !FRONT_MATTER_OPEN.test(doc.line(1).text)) return 0;
  const limit = Math.min(doc.lines, FRONT_MATTER_MAX_LINES);
  for (let n = 2; n <= limit; n++) {
    if (FRONT_MATTER_CLOSE.test(doc.line(n).text)) return n;
  }
  return 0;
}

// Characters that may start a line holding something other than paragraph text.
const BLOCK_START = new Set([..."#=-`~<>*+_ \t0123456789"]);

function firstNonSpace(text) {
  for (let i = 0; i < text.length; i++) {
    if (text[i] !== " " && text[i] !== "\t") return text[i];
  }
  return "";
}

function step(doc, n, raw, state, found) {
  // Quick answers for the most common lines: blank, ordinary text, and code inside a fence.
  if (state.kind === NORMAL && n > 1) {
    if (raw.length === 0) {
      state.para = false;
      return;
    }
    if (!BLOCK_START.has(raw[0])) {
      if (!state.para || state.paraQuote !== 0) {
        if (!state.para) {
          state.paraStart = n;
          state.paraList = false;
        }
        state.paraQuote = 0;
      }
      state.para = true;
      return;
    }
  } else if (state.kind === FENCE) {
    const first = firstNonSpace(raw);
    if (first !== state.fenceChar && first !== ">") return;
  }
  if (state.kind === FRONT_MATTER) {
    if (n >= state.fenceLength) state.kind = NORMAL; // fenceLength holds the closing line
    return;
  }
  if (n === 1) {
    const end = frontMatterEnd(doc);
    if (end) {
      state.kind = FRONT_MATTER;
      state.fenceLength = end;
      return;
    }
  }

  const quoted = firstNonSpace(raw) === ">" ? stripQuotes(raw) : { text: raw, depth: 0 };
  const text = quoted.text;
  const first = firstNonSpace(text);

  if (state.kind === FENCE) {
    if (first !== state.fenceChar) return;
    const close = /^ {0,3}(`{3,}|~{3,})[ \t]*$/.exec(text);
    if (close && close[1][0] === state.fenceChar && close[1].length >= state.fenceLength) {
      state.kind = NORMAL;
      state.fenceChar = "";
      state.fenceLength = 0;
    }
    return;
  }
  if (state.kind === HTML) {
    const end = HTML_ENDS[state.htmlKind];
    if (end ? end.test(text) : first === "") {
      state.kind = NORMAL;
      state.htmlKind = 0;
    }
    return;
  }

  if (first === "") {
    state.para = false;
    return;
  }
  if (indentOf(text).columns >= 4) return; // indented code, or the continuation of a paragraph

  if (first === "`" || first === "~") {
    const fence = /^ {0,3}(`{3,}|~{3,})(.*)$/.exec(text);
    if (fence && !(fence[1][0] === "`" && fence[2].includes("`"))) {
      state.kind = FENCE;
      state.fenceChar = fence[1][0];
      state.fenceLength = fence[1].length;
      state.para = false;
      return;
    }
  }

  if (first === "<") {
    const htmlKind = htmlBlockKind(text, state.para);
    if (htmlKind) {
      state.para = false;
      const end = HTML_ENDS[htmlKind];
      if (end ? !end.test(text.slice(text.indexOf("<") + 2)) : true) {
        state.kind = HTML;
        state.htmlKind = htmlKind;
      }
      return;
    }
  }

  if (first === "=" || first === "-") {
    const underline = /^ {0,3}(=+|-+)[ \t]*$/.exec(text);
    if (underline && state.para && !state.paraList && state.paraQuote === quoted.depth) {
      const lines = [];
      for (let k = state.paraStart; k < n; k++) lines.push(stripQuotes(doc.line(k).text).text);
      found.push({ line: state.paraStart, level: underline[1][0] === "=" ? 1 : 2, text: headingText(lines.join(" ")) });
      state.para = false;
      return;
    }
  }

  let content = text;
  let inList = false;
  if (first === "-" || first === "+" || first === "*" || (first >= "0" && first <= "9")) {
    const list = LIST_MARKER.exec(text);
    if (list) {
      content = text.slice(list[0].length);
      inList = true;
    }
  }
  if (firstNonSpace(content) === "#") {
    const atx = /^ {0,3}(#{1,6})(?=[ \t]|$)(.*)$/.exec(content);
    if (atx) {
      const body = atx[2].replace(/(?:^|[ \t]+)#+[ \t]*$/, "");
      found.push({ line: n, level: atx[1].length, text: headingText(body) });
      state.para = false;
      return;
    }
  }
  if ((first === "*" || first === "-" || first === "_") && /^ {0,3}(?:(?:\*[ \t]*){3,}|(?:-[ \t]*){3,}|(?:_[ \t]*){3,})$/.test(text)) {
    state.para = false; // a thematic break
    return;
  }
  if (inList && firstNonSpace(content) === "") {
    state.para = false;
    return;
  }
  if (!state.para || inList || state.paraQuote !== quoted.depth) {
    if (!state.para || inList) {
      state.paraStart = n;
      state.paraList = inList;
    }
    state.paraQuote = quoted.depth;
  }
  state.para = true;
}

// All headings of a document, in order, with their 1-based line numbers.
export function extractHeadings(doc) {
  const found = [];
  scan(doc, 1, initialState(), found);
  return found;
}

// The index of the first heading at or after `line`.
function firstAtOrAfter(headings, line) {
  let low = 0;
  let high = headings.length;
  while (low < high) {
    const mid = (low + high) >> 1;
    if (headings[mid].line < line) low = mid + 1;
    else high = mid;
  }
  return low;
}

export class HeadingIndex {
  constructor(doc) {
    this.reset(doc);
  }

  // Scans the whole document.
  reset(doc) {
    this.headings = [];
    this.checkpoints = []; // [{ line, state }], the state in force before `line`
    scan(doc, 1, initialState(), this.headings, (n, state) => {
      if (n % CHECKPOINT_SPACING === 1) this.checkpoints.push({ line: n, state: copyState(state) });
      return false;
    });
  }

  // Brings the index up to date after `changes` (a CodeMirror ChangeSet) turned `oldDoc` into
  // `newDoc`. Returns whether the outline changed, line numbers aside.
  update(oldDoc, newDoc, changes) {
    if (changes.empty) return false;
    let fromA = Infinity;
    let toA = -1;
    let toB = -1;
    changes.iterChangedRanges((fA, tA, fB, tB) => {
      fromA = Math.min(fromA, fA);
      toA = Math.max(toA, tA);
      toB = Math.max(toB, tB);
    });
    const firstOld = oldDoc.lineAt(fromA).number;
    const lastOld = oldDoc.lineAt(toA).number;
    const lastNew = newDoc.lineAt(toB).number;
    const delta = newDoc.lines - oldDoc.lines;

    // Front matter is decided by looking ahead from the first line: an edit that may open, close
    // or move it rescans from the top. Otherwise a Setext line looks back one line.
    const frontMatterReach = FRONT_MATTER_OPEN.test(oldDoc.line(1).text) ? FRONT_MATTER_MAX_LINES + 1 : 2;
    const first = firstOld <= frontMatterReach ? 1 : firstOld - 1;

    // Resume from the last checkpoint at or before `first`.
    let c = this.checkpoints.length - 1;
    while (c > 0 && this.checkpoints[c].line > first) c--;
    const resume = c >= 0 ? this.checkpoints[c] : { line: 1, state: initialState() };
    const state = copyState(resume.state);

    const oldCheckpoints = new Map();
    for (const cp of this.checkpoints) if (cp.line > lastOld) oldCheckpoints.set(cp.line, cp.state);

    const found = [];
    const kept = this.checkpoints.slice(0, Math.max(c, 0));
    let convergedOld = 0; // old line from which everything is kept, shifted by `delta`
    let keptFrom = 0; // the first old line whose headings are kept: a paragraph open there counts
    scan(newDoc, resume.line, state, found, (n, s) => {
      if (n > lastNew) {
        const old = oldCheckpoints.get(n - delta);
        if (old && sameState(old, s, delta, lastOld)) {
          convergedOld = n - delta;
          keptFrom = old.para ? old.paraStart : convergedOld;
          return true;
        }
      }
      if ((n - resume.line) % CHECKPOINT_SPACING === 0) kept.push({ line: n, state: copyState(s) });
      return false;
    });

    // A Setext heading is known by its first line: when the resume point lies inside a paragraph,
    // a heading that paragraph makes is found again.
    const cutoff = resume.state.para ? resume.state.paraStart : resume.line;
    // The headings are sorted by line: replace the rescanned stretch in place.
    const headings = this.headings;
    const start = firstAtOrAfter(headings, cutoff);
    const end = convergedOld ? firstAtOrAfter(headings, keptFrom) : headings.length;
    const changed =
      end - start !== found.length ||
      found.some((h, i) => headings[start + i].level !== h.level || headings[start + i].text !== h.text);
    headings.splice(start, end - start, ...found);
    if (delta) {
      for (let i = start + found.length; i < headings.length; i++) headings[i].line += delta;
    }
    if (convergedOld) {
      for (const cp of this.checkpoints) {
        if (cp.line >= convergedOld) {
          kept.push({ line: cp.line + delta, state: { ...cp.state, paraStart: cp.state.paraStart + delta } });
        }
      }
    }
    this.checkpoints = kept;
    return changed;
  }
}
