// Where the blocks of a Markdown document end: lines where every block has ended (after a blank
// line, a line starting a heading or a paragraph at the left edge, outside fenced code, HTML blocks
// and front matter). The text after such a line parses the same alone as within the whole
// document, which is what lets a large document be parsed, or searched for headings, in pieces.
const FIRST_READ = 1024;
const READ_AHEAD = 65536;
const FENCE = /^ {0,3}(`{3,}|~{3,})/;
const HTML_OPEN = /^ {0,3}(?:<(script|pre|style|textarea)(?=[\s>]|$)|(<!--)|(<\?)|(<!\[CDATA\[)|(<![A-Za-z]))/i;
const HTML_CLOSE = { script: /<\/script>/i, pre: /<\/pre>/i, style: /<\/style>/i, textarea: /<\/textarea>/i };
const OTHER_CLOSE = [/-->/, /\?>/, /\]\]>/, />/];
// Front matter's opening and closing lines. (A carriage return left at a line's end, in a file
// mixing line ends, is a space to the Markdown parser, as here.)
export const FRONT_MATTER_OPEN = /^---[ \t\r]*$/;
export const FRONT_MATTER_CLOSE = /^(?:---|\.\.\.)[ \t\r]*$/;
// A line a chunk may start with: a heading or a paragraph at the left edge.
const CHUNK_START = /^(?:#{1,6}(?:[ \t]|$)|\p{L})/u;
// The Markdown parser takes a carriage return for a space: a line holding one is blank.
const BLANK = /^[ \t\r]*$/;

const LETTER = /\p{L}/u;

// Whether a chunk may start at the line `line`, after the line `before`, outside any block.
export const canStartAt = (before, line) => BLANK.test(before) && CHUNK_START.test(line);

// The lines of `input` from `from`, one at a time from an input made of lines, else read a block
// at a time, the first ones small: a reader may want only a few lines. `next()` moves to the next
// line: its text is `buffer` from `at` to `end`, at `start` in the document. Most lines are only
// looked at, never copied.
export class Lines {
  constructor(input, from) {
    this.input = input;
    this.block = FIRST_READ;
    this.buffer = "";
    this.bufferStart = from;
    this.pos = from;
    this.start = from;
    this.at = 0;
    this.end = 0;
  }

  next() {
    const { input } = this;
    if (this.pos >= input.length) return false;
    if (input.lineChunks) {
      // The editor's text hands out its lines as they are stored: no copy at all. An empty line
      // gives its line break.
      const line = input.chunk(this.pos);
      this.buffer = line === "\n" ? "" : line;
      this.start = this.pos;
      this.at = 0;
      this.end = this.buffer.length;
      this.pos += this.end + 1;
      return true;
    }
    let end = this.buffer.indexOf("\n", this.pos - this.bufferStart);
    if (end < 0 && this.bufferStart + this.buffer.length < input.length) {
      this.buffer = input.read(this.pos, Math.min(input.length, this.pos + this.block));
      this.block = Math.min(READ_AHEAD, this.block * 4);
      this.bufferStart = this.pos;
      end = this.buffer.indexOf("\n");
      // A line longer than the block: read it whole.
      while (end < 0 && this.bufferStart + this.buffer.length < input.length) {
        const read = this.bufferStart + this.buffer.length;
        this.buffer += input.read(read, Math.min(input.length, read + READ_AHEAD));
        end = this.buffer.indexOf("\n");
      }
    }
    this.start = this.pos;
    this.at = this.pos - this.bufferStart;
    this.end = end < 0 ? this.buffer.length : end;
    this.pos = this.bufferStart + this.end + 1;
    return true;
  }

  text() {
    return this.buffer.slice(this.at, this.end);
  }

  // Whether the line holds only spaces, tabs and carriage returns.
  blank() {
    for (let i = this.at; i < this.end; i++) {
      const c = this.buffer.charCodeAt(i);
      if (c !== 32 && c !== 9 && c !== 13) return false;
    }
    return true;
  }

  // The line's first character after at most three spaces, as a code unit (NaN at the line end).
  lead() {
    let i = this.at;
    while (i < this.end && i - this.at < 3 && this.buffer.charCodeAt(i) === 32) i++;
    return i < this.end ? this.buffer.charCodeAt(i) : NaN;
  }

  // CHUNK_START on the line, mostly without a copy of it.
  startsChunk() {
    if (this.at === this.end) return false;
    const c = this.buffer.charCodeAt(this.at);
    if (c === 35) return CHUNK_START.test(this.buffer.slice(this.at, Math.min(this.end, this.at + 8))); // "#"
    if (c < 128) return ((c | 32) >= 97 && (c | 32) <= 122);
    return LETTER.test(String.fromCodePoint(this.buffer.codePointAt(this.at)));
  }
}

const BACKTICK = 96;
const TILDE = 126;
const LESS_THAN = 60;

// HTML blocks that end at a blank line: a line starting with one of these tags opens one, also
// within a paragraph; a line holding a single whole tag opens one unless a paragraph runs there.
const HTML_BLOCK_TAG = new RegExp(
  "^ {0,3}</?(?:address|article|aside|basefont|blockquote|body|caption|center|col|colgroup|dd|details|dialog|dir|div|dl|dt|fieldset|figcaption|figure|footer|form|frame|frameset|h[1-6]|head|header|hr|html|iframe|legend|li|link|main|menu|menuitem|nav|noframes|ol|optgroup|option|p|param|section|source|summary|table|tbody|td|tfoot|th|thead|title|tr|track|ul)(?:[ \\t>]|/>|$)",
  "i",
);
const HTML_WHOLE_TAG = /^ {0,3}(?:<\/[a-z][\w-]*\s*>|<[a-z][\w-]*(?:\s+[a-z:_][\w.:-]*(?:\s*=\s*(?:[^\s"'=<>`]+|'[^']*'|"[^"]*"))?)*\s*\/?>)\s*$/i;

// One reading of the blocks, line by line: outside them, or in front matter, fenced code or an
// HTML block, the blocks that run over blank lines. Only lines that may open or close such a block
// are read as text.
class Reading {
  constructor(state) {
    this.state = state;
    this.fence = "";
    this.atEdge = false; // the fence was opened at the left edge
    this.close = null;
    this.blankBefore = true;
  }

  same(other) {
    return (
      this.state === other.state &&
      this.fence === other.fence &&
      this.atEdge === other.atEdge &&
      this.close === other.close &&
      this.blankBefore === other.blankBefore
    );
  }

  // Takes the line `lines` is on; true when a chunk may start with it. A line that may or may
  // not open an HTML block adds the reading where it does to `forks`.
  take(lines, forks) {
    const { blankBefore } = this;
    const free = this.state === null && blankBefore && lines.startsChunk();
    if (this.state === "start") {
      // Front matter opens only on the first line; any other first line is read as any line.
      this.state = FRONT_MATTER_OPEN.test(lines.text()) ? "front" : null;
      if (this.state === "front") {
        this.blankBefore = false;
        return false;
      }
    }
    this.blankBefore = false;
    if (this.state === "front") {
      if (FRONT_MATTER_CLOSE.test(lines.text())) this.state = null;
      return false;
    }
    if (this.state === "htmlUntilBlank") {
      if (lines.blank()) {
        this.state = null;
        this.blankBefore = true;
      }
      return false;
    }
    const lead = lines.lead();
    if (this.state === "fence") {
      if (lead === BACKTICK || lead === TILDE) {
        const text = lines.text();
        const fence = FENCE.exec(text);
        const closes = fence && fence[1][0] === this.fence[0] && fence[1].length >= this.fence.length && BLANK.test(text.slice(fence[0].length));
        if (closes) this.state = null;
      }
      return false;
    }
    if (this.state === "html") {
      if (this.close.test(lines.text())) this.state = null;
      return false;
    }
    if (lead === BACKTICK || lead === TILDE) {
      const text = lines.text();
      const fence = FENCE.exec(text);
      // A backtick after a run of backticks makes it inline code, not a fence.
      if (fence && !(lead === BACKTICK && text.includes("`", fence[0].length))) {
        this.state = "fence";
        this.fence = fence[1];
        this.atEdge = lines.buffer.charCodeAt(lines.at) === lead;
        return free;
      }
    } else if (lead === LESS_THAN) {
      const text = lines.text();
      const html = HTML_OPEN.exec(text);
      if (html) {
        this.close = html[1] ? HTML_CLOSE[html[1].toLowerCase()] : OTHER_CLOSE[html.slice(2).findIndex(Boolean)];
        if (!this.close.test(text.slice(html[0].length))) this.state = "html";
      } else if (HTML_BLOCK_TAG.test(text) || (blankBefore && HTML_WHOLE_TAG.test(text))) {
        this.state = "htmlUntilBlank";
        return false;
      } else if (HTML_WHOLE_TAG.test(text)) {
        // After a line of text, whether a paragraph runs there is more than this reading knows:
        // both readings are followed.
        const fork = new Reading("htmlUntilBlank");
        fork.blankBefore = false;
        forks.push(fork);
      }
    }
    this.blankBefore = lines.blank();
    return free;
  }
}

// Finds where the next chunk may start. Where a line leaves the blocks in doubt, every reading of
// them is followed, and a chunk starts only where they all allow it; they become one again once
// they agree.
export class Scanner {
  constructor(atDocumentStart) {
    this.readings = [new Reading(atDocumentStart ? "start" : null)];
  }

  // Whether the lines now are surely those of a fenced block opened at the left edge. Such a block
  // is in no list or quote: it ends only at its closing line. (Indented, it may be in a list item
  // that ends before it does.)
  get inFenceAtEdge() {
    const [reading, other] = this.readings;
    return !other && reading.state === "fence" && reading.atEdge;
  }

  // Takes the line `lines` is on; true when a chunk may start with it.
  take(lines) {
    const forks = [];
    let free = true;
    for (const reading of this.readings) if (!reading.take(lines, forks)) free = false;
    for (const fork of forks) this.readings.push(fork);
    if (this.readings.length > 1) this.readings = this.readings.filter((r, i) => this.readings.findIndex((o) => o.same(r)) === i);
    return free;
  }
}
