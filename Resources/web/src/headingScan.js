// The headings of a large document, found without parsing all of it. The document is cut where
// every block has ended (blockCuts.js); a piece between two cuts parses as it does within the whole
// document, so only the pieces with a line that may be a heading are parsed. Such a line has a "#"
// after nothing but spaces, quote and list markers, followed by a space or its end, or is a Setext
// underline. Prose and most code hold none, and their lines are only looked at; so are the lines
// of a fenced block that surely holds no heading.
import { DocInput } from "@codemirror/language";
import { Lines, Scanner } from "./blockCuts.js";

const HASH = 35;
// A carriage return is a space to the Markdown parser, as are tabs.
const isSpace = (c) => c === 32 || c === 9 || c === 13;
const EQUALS = 61;
const DASH = 45;

// Whether the line `lines` is on may be a heading or a Setext underline.
function mayBeHeading(lines) {
  const { buffer, end } = lines;
  for (let i = lines.at; i < end; i++) {
    const c = buffer.charCodeAt(i);
    if (c === HASH) {
      let j = i;
      while (j < end && buffer.charCodeAt(j) === HASH) j++;
      const after = buffer.charCodeAt(j);
      return j - i <= 6 && (j === end || isSpace(after));
    }
    if (c === EQUALS || c === DASH) {
      let j = i;
      while (j < end && buffer.charCodeAt(j) === c) j++;
      while (j < end && isSpace(buffer.charCodeAt(j))) j++;
      if (j === end) return true;
      if (c === EQUALS) return false;
      continue; // a list marker
    }
    // Indentation, quote markers, list markers ("-", "*", "+", "1." or "1)").
    const prefix = isSpace(c) || c === 62 || c === 42 || c === 43 || c === 46 || c === 41 || (c >= 48 && c <= 57);
    if (!prefix) return false;
  }
  return false;
}

// The level of the ATX heading the line `lines` is on if it opens at the left edge, as the Markdown
// parser reads one: one to six "#"s, then a space, a tab or the line's end. Else 0.
function atxLevel(lines) {
  const { buffer, at, end } = lines;
  let i = at;
  while (i < end && buffer.charCodeAt(i) === HASH) i++;
  const level = i - at;
  return level <= 6 && (i === end || isSpace(buffer.charCodeAt(i))) ? level : 0;
}

// Reads `doc` in pieces with `parser` (a Markdown parser), handing each parsed piece's tree and
// its position to `read.tree`, which returns the piece's headings. A piece whose only possible
// heading is an ATX heading on its first line is not parsed at all: a piece starts where every
// block has ended, so that line is a heading. `read.atx(from, to, level)` makes its entry. In
// prose most pieces with a heading are such, and parsing them was most of a cold page's scan.
// `work` goes on until a deadline; `edited` keeps what an edit left true, from the last checkpoint
// before it (checkpoints are at least `checkpointEvery` characters apart).
export class HeadingScan {
  constructor(doc, parser, read, checkpointEvery = 65536) {
    this.parser = parser;
    this.read = read;
    this.checkpointEvery = checkpointEvery;
    this.headings = [];
    // Cut lines the scan passed, with how many headings came before each.
    this.checkpoints = [{ pos: 0, count: 0 }];
    this.restart(doc, 0);
  }

  restart(doc, pos) {
    this.doc = doc;
    this.input = new DocInput(doc);
    this.lines = new Lines(this.input, pos);
    this.scanner = new Scanner(pos === 0);
    this.piece = pos;
    this.parseIt = false;
    this.atx = null; // {to, level} of a heading on the piece's first line
  }

  // Scans until `deadline` (a time from performance.now()) or the end; true at the end.
  work(deadline) {
    const { lines, scanner } = this;
    if (!lines) return true;
    for (let count = 0; lines.next(); count++) {
      const { start } = lines;
      // Nothing in a fenced block opened at the left edge is a heading. (Read before the line
      // changes it: the closing line is the block's too.)
      const inCode = scanner.inFenceAtEdge;
      if (scanner.take(lines) && start > this.piece) {
        this.endPiece(start);
        // A stop is at a cut: the next scan takes the line again, from a fresh start.
        if (count >= 512 && performance.now() > deadline) {
          this.restart(this.doc, start);
          return false;
        }
      }
      if (!this.parseIt && !inCode && mayBeHeading(lines)) {
        const level = start === this.piece ? atxLevel(lines) : 0;
        if (level) this.atx = { to: start + lines.end - lines.at, level };
        else this.parseIt = true;
      }
    }
    this.endPiece(this.input.length);
    this.lines = null;
    return true;
  }

  endPiece(end) {
    if (this.parseIt) {
      const parse = this.parser.startParse(this.input, [], [{ from: this.piece, to: end }]);
      let tree;
      while (!(tree = parse.advance()));
      for (const heading of this.read.tree(tree, this.piece)) this.headings.push(heading);
    } else if (this.atx) {
      this.headings.push(this.read.atx(this.piece, this.atx.to, this.atx.level));
    }
    const last = this.checkpoints[this.checkpoints.length - 1];
    if (end - last.pos >= this.checkpointEvery) this.checkpoints.push({ pos: end, count: this.headings.length });
    this.piece = end;
    this.parseIt = false;
    this.atx = null;
  }

  // The document became `doc` through `changes`: the headings before the last cut ahead of the
  // first change stay, and the scan goes on from that cut.
  edited(doc, changes) {
    let first = Infinity;
    changes.iterChangedRanges((fromA) => (first = Math.min(first, fromA)));
    if (first === Infinity) return;
    // Between two slices the scan stands at a cut: one more place to go on from.
    const { checkpoints } = this;
    if (this.lines && this.piece > checkpoints[checkpoints.length - 1].pos) checkpoints.push({ pos: this.piece, count: this.headings.length });
    // A cut depends on its line and the one before: both must lie before the change.
    while (checkpoints.length > 1 && this.doc.lineAt(checkpoints[checkpoints.length - 1].pos).to >= first) checkpoints.pop();
    const { pos, count } = checkpoints[checkpoints.length - 1];
    this.headings.length = count;
    this.restart(doc, pos);
  }
}
