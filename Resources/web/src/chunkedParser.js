// A large document parsed in chunks. The Markdown parser's tree is flat: every edit parses the
// document again from its start, taking the unchanged blocks one by one from the previous tree,
// so a key in the middle of 10 MB cost a tenth of a second. Here the document is cut into chunks
// at lines where every block has ended (after a blank line, a line starting a heading or a
// paragraph, outside fenced code, HTML blocks and front matter); each chunk is parsed alone, and
// an edit parses again only the chunks it touches, taking the others whole.
//
// A chunk parses as it would within the whole document: a blank line closes paragraphs, and a
// line at the left edge starting with "#" or a letter continues no list, quote or code block.
// The chunks are anonymous nodes, so the tree reads as the Markdown parser's own; its colours are
// read a chunk at a time too (highlightRange).
import { NodeType, Parser, Tree } from "@lezer/common";
import { highlightTree } from "@lezer/highlight";

const Chunk = NodeType.define({ id: 0 });
const PartChunk = NodeType.define({ id: 0 }); // a chunk a stop cut short, never taken again
const chunkedTrees = new WeakSet();
const READ_AHEAD = 65536;
const REUSE_WITHIN = 65536;
const FENCE = /^ {0,3}(`{3,}|~{3,})/;
const HTML_OPEN = /^ {0,3}(?:<(script|pre|style|textarea)(?=[\s>]|$)|(<!--)|(<\?)|(<!\[CDATA\[)|(<![A-Za-z]))/i;
const HTML_CLOSE = { script: /<\/script>/i, pre: /<\/pre>/i, style: /<\/style>/i, textarea: /<\/textarea>/i };
const OTHER_CLOSE = [/-->/, /\?>/, /\]\]>/, />/];
const FRONT_OPEN = /^---[ \t]*$/;
const FRONT_CLOSE = /^(?:---|\.\.\.)[ \t]*$/;
// A line a chunk may start with: a heading or a paragraph at the left edge.
const CHUNK_START = /^(?:#{1,6}(?:[ \t]|$)|\p{L})/u;
const BLANK = /^[ \t]*$/;

const LETTER = /\p{L}/u;

// Whether a chunk may start at the line `line`, after the line `before`, outside any block.
const canStartAt = (before, line) => BLANK.test(before) && CHUNK_START.test(line);

// The lines of `input` from `from`, one at a time from an input made of lines, else read a block
// at a time. `next()` moves to the next line: its text is `buffer` from `at` to `end`, at `start`
// in the document. Most lines are only looked at, never copied.
class Lines {
  constructor(input, from) {
    this.input = input;
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
      this.buffer = input.read(this.pos, Math.min(input.length, this.pos + READ_AHEAD));
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

  // Whether the line holds only spaces and tabs.
  blank() {
    for (let i = this.at; i < this.end; i++) {
      const c = this.buffer.charCodeAt(i);
      if (c !== 32 && c !== 9) return false;
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

// Reads blocks line by line to find where the next chunk may start, following the blocks that
// run over blank lines: front matter, fenced code and HTML blocks. Only lines that may open or
// close such a block are read as text.
class Scanner {
  constructor(atDocumentStart) {
    this.state = atDocumentStart ? "start" : null;
    this.fence = "";
    this.close = null;
    this.blankBefore = true;
  }

  // Takes the line `lines` is on; true when a chunk may start with it.
  take(lines) {
    const free = this.state === null && this.blankBefore && lines.startsChunk();
    if (this.state === "start") {
      this.blankBefore = lines.blank();
      this.state = FRONT_OPEN.test(lines.text()) ? "front" : null;
      return false;
    }
    this.blankBefore = false;
    if (this.state === "front") {
      if (FRONT_CLOSE.test(lines.text())) this.state = null;
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
      const fence = FENCE.exec(lines.text());
      if (fence) {
        this.state = "fence";
        this.fence = fence[1];
        return free;
      }
    } else if (lead === LESS_THAN) {
      const text = lines.text();
      const html = HTML_OPEN.exec(text);
      if (html) {
        this.close = html[1] ? HTML_CLOSE[html[1].toLowerCase()] : OTHER_CLOSE[html.slice(2).findIndex(Boolean)];
        if (!this.close.test(text.slice(html[0].length))) this.state = "html";
      }
    }
    this.blankBefore = lines.blank();
    return free;
  }
}

// The chunks of the previous tree whose text is unchanged, in the new document's positions.
function unchangedChunks(fragments) {
  const chunks = [];
  for (const fragment of fragments) {
    const visit = (tree, offset) => {
      tree.children.forEach((child, i) => {
        if (!(child instanceof Tree)) return;
        const from = offset + tree.positions[i];
        if (child.type === Chunk) {
          const start = from - fragment.offset;
          if (start >= fragment.from && start + child.length <= fragment.to) chunks.push({ from: start, to: start + child.length, tree: child });
        } else if (child.type === NodeType.none) {
          visit(child, from);
        }
      });
    };
    visit(fragment.tree, 0);
  }
  return chunks.sort((a, b) => a.from - b.from);
}

class ChunkedParse {
  constructor(parser, input, fragments) {
    this.parser = parser;
    this.input = input;
    this.fragments = fragments;
    this.unchanged = unchangedChunks(fragments);
    this.next = 0; // the first unchanged chunk not passed
    this.pos = 0; // where the next chunk starts
    this.trees = [];
    this.positions = [];
    this.parse = null;
    this.parseTo = 0;
    this.stoppedAt = null;
  }

  // (A parse of code blocks mixed in says 0 until its Markdown is parsed.)
  get parsedPos() {
    return this.parse ? Math.min(this.parseTo, Math.max(this.pos, this.parse.parsedPos)) : this.pos;
  }

  stopAt(pos) {
    this.stoppedAt = pos;
    if (!this.parse) return;
    // Stopped at the chunk's start: the chunk is left for the next parse.
    if (pos <= this.pos) this.parse = null;
    else if (pos < this.parseTo) this.parse.stopAt(pos);
  }

  // The unchanged chunk starting at `pos` that can be taken as it is: its last line is blank, and
  // the line after it must still be one a chunk may start with.
  takeable(pos) {
    while (this.next < this.unchanged.length && this.unchanged[this.next].from < pos) this.next++;
    const chunk = this.unchanged[this.next];
    if (!chunk || chunk.from !== pos) return null;
    if (chunk.to === this.input.length) return chunk;
    const before = this.input.read(Math.max(chunk.from, chunk.to - 80), chunk.to).split("\n");
    const after = this.input.read(chunk.to, Math.min(this.input.length, chunk.to + 8)).split("\n")[0];
    // (A chunk ends with its line break: the line before that is the last one in `before`.)
    return before.length > 2 && before.pop() === "" && canStartAt(before.pop(), after) ? chunk : null;
  }

  // Where the chunk starting at `from` ends: the first line a chunk may start with, once the chunk
  // is long enough or an unchanged chunk can be taken from there.
  chunkEnd(from) {
    const scanner = new Scanner(from === 0);
    for (const lines = new Lines(this.input, from); lines.next(); ) {
      const { start } = lines;
      if (scanner.take(lines) && start > from && (start - from >= this.parser.chunkSize || this.startsUnchanged(start))) return start;
    }
    return this.input.length;
  }

  startsUnchanged(pos) {
    for (let i = this.next; i < this.unchanged.length && this.unchanged[i].from <= pos; i++) {
      if (this.unchanged[i].from === pos) return true;
    }
    return false;
  }

  end() {
    return this.stoppedAt === null ? this.input.length : Math.min(this.stoppedAt, this.input.length);
  }

  advance() {
    if (!this.parse) {
      // Unchanged chunks are taken a run at a time.
      for (let chunk; this.pos < this.end() && (chunk = this.takeable(this.pos)); ) {
        this.trees.push(chunk.tree);
        this.positions.push(chunk.from);
        this.pos = chunk.to;
      }
      if (this.pos >= this.end()) return this.finish();
      this.parseTo = this.chunkEnd(this.pos);
      // A chunk is small: parsed afresh. Only a long run without a place to cut (a long code block)
      // takes blocks from the previous tree.
      const reuse = this.parseTo - this.pos > REUSE_WITHIN ? this.fragments.filter((f) => f.to > this.pos && f.from < this.parseTo) : [];
      this.parse = this.parser.inner.startParse(this.input, reuse, [{ from: this.pos, to: this.parseTo }]);
      if (this.stoppedAt !== null && this.stoppedAt < this.parseTo) this.parse.stopAt(this.stoppedAt);
    }
    const tree = this.parse.advance();
    if (tree) {
      // A chunk cut short by a stop is no chunk to take again.
      const whole = this.pos + tree.length === this.parseTo;
      this.trees.push(new Tree(whole ? Chunk : PartChunk, tree.children, tree.positions, tree.length));
      this.positions.push(this.pos);
      this.pos += tree.length;
      this.parse = null;
      if (this.pos >= this.end()) return this.finish();
    }
    return null;
  }

  finish() {
    const tree = new Tree(this.parser.documentType, this.trees, this.positions, this.pos).balance();
    chunkedTrees.add(tree);
    return tree;
  }
}

// The parser `inner` for documents under `limit` characters, in chunks of at least `chunkSize`
// characters from there on: small ones for the least work per key, larger ones for the least
// work per chunk.
export class ChunkedParser extends Parser {
  constructor(inner, limit, chunkSize) {
    super();
    this.inner = inner;
    this.limit = limit;
    this.chunkSize = chunkSize;
    this.documentType = inner.nodeSet.types.find((type) => type.isTop);
  }

  createParse(input, fragments, ranges) {
    const whole = ranges.length === 1 && ranges[0].from === 0 && ranges[0].to === input.length;
    if (input.length < this.limit || !whole) return this.inner.createParse(input, fragments, ranges);
    return new ChunkedParse(this, input, fragments);
  }
}

// Highlights [from, to) of `tree` as `highlightTree` does. That walks the tree from its first
// block to the range; a chunked tree is walked from the chunks around the range only.
export function highlightRange(tree, highlighter, put, from, to) {
  if (!chunkedTrees.has(tree)) return highlightTree(tree, highlighter, put, from, to);
  const visit = (node, offset) => {
    node.children.forEach((child, i) => {
      const start = offset + node.positions[i];
      if (start >= to || start + child.length <= from) return;
      if (child.type === NodeType.none) visit(child, start);
      else highlightTree(child, highlighter, (a, b, style) => put(a + start, b + start, style), Math.max(0, from - start), Math.min(child.length, to - start));
    });
  };
  visit(tree, 0);
}
