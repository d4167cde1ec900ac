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
import { Lines, Scanner, canStartAt } from "./blockCuts.js";

const Chunk = NodeType.define({ id: 0 });
const PartChunk = NodeType.define({ id: 0 }); // a chunk a stop cut short, never taken again
const chunkedTrees = new WeakSet();
const REUSE_WITHIN = 65536;

// The chunks of the previous tree whose text is unchanged, in the new document's positions, with
// the fragment (the stretch of unchanged text) each lies in.
function unchangedChunks(fragments) {
  const chunks = [];
  for (const fragment of fragments) {
    const visit = (tree, offset) => {
      tree.children.forEach((child, i) => {
        if (!(child instanceof Tree)) return;
        const from = offset + tree.positions[i];
        if (child.type === Chunk) {
          const start = from - fragment.offset;
          if (start >= fragment.from && start + child.length <= fragment.to) chunks.push({ from: start, to: start + child.length, tree: child, fragment });
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
    // Followed by the chunk it was followed by, in the same unchanged text: the cut between them
    // holds as before, and nothing needs reading. (Most of a large document, on every key.)
    const following = this.unchanged[this.next + 1];
    if (following && following.from === chunk.to && following.fragment === chunk.fragment) return chunk;
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

// The chunks of a chunked tree that overlap [from, to], in order, as {from, to, tree}; null for a
// tree that was not parsed in chunks. A chunk an edit left alone is the same tree object after it.
export function chunksOf(tree, from, to) {
  if (!chunkedTrees.has(tree)) return null;
  const chunks = [];
  const visit = (node, offset) => {
    node.children.forEach((child, i) => {
      const start = offset + node.positions[i];
      if (start > to || start + child.length < from || !(child instanceof Tree)) return;
      if (child.type === NodeType.none) visit(child, start);
      else chunks.push({ from: start, to: start + child.length, tree: child });
    });
  };
  visit(tree, 0);
  return chunks;
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
