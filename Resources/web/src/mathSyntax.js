// Formulas in the Markdown syntax: "$…$" inline, "$$…$$" inline or as a block of lines. The
// dollar rules are those of pandoc and KaTeX's auto-render: an opening "$" has no space after it,
// a closing one none before it and no digit right after it, so "5 $ et 10 $" is text, and "\$"
// is a dollar sign wherever it stands.
import { tags } from "@lezer/highlight";
import { lookAhead } from "./lookAhead.js";

const DOLLAR = 36;
const BACKSLASH = 92;
const LOOK_AHEAD = 64 * 1024; // a block's closing "$$" comes within these characters
const isSpace = (code) => code === 32 || code === 9 || code === 10 || code === 13;
const isDigit = (code) => code >= 48 && code <= 57;

// Where the unescaped "$$" after `from` in `text` starts, or -1.
export function closingPair(text, from) {
  for (let i = from; i < text.length - 1; i++) {
    const code = text.charCodeAt(i);
    if (code === BACKSLASH) i++;
    else if (code === DOLLAR && text.charCodeAt(i + 1) === DOLLAR) return i;
  }
  return -1;
}

// The end of the inline formula opening at `pos` (past its closing mark), or -1.
function inlineFormula(cx, pos) {
  if (cx.char(pos + 1) === DOLLAR) {
    // "$$…$$" within a paragraph: the content runs to the next unescaped "$$".
    const close = closingPair(cx.slice(pos + 2, cx.end), 0);
    return close > 0 ? pos + 2 + close + 2 : -1;
  }
  if (pos + 1 >= cx.end || isSpace(cx.char(pos + 1))) return -1;
  for (let i = pos + 1; i < cx.end; i++) {
    const code = cx.char(i);
    if (code === BACKSLASH) i++;
    else if (code === DOLLAR) {
      if (!isSpace(cx.char(i - 1)) && !isDigit(cx.char(i + 1))) return i + 1;
    }
  }
  return -1;
}

function blockFormula(cx, line) {
  if (line.next !== DOLLAR || line.text.charCodeAt(line.pos + 1) !== DOLLAR) return false;
  const from = cx.lineStart + line.pos;
  const sameLine = closingPair(line.text, line.pos + 2);
  if (sameLine >= 0) {
    // "$$ x $$" alone on its line is a block; followed by text it is inline, in a paragraph.
    if (line.text.slice(sameLine + 2).trim() !== "") return false;
    const marks = [cx.elt("MathMark", from, from + 2), cx.elt("MathMark", cx.lineStart + sameLine, cx.lineStart + sameLine + 2)];
    const end = cx.lineStart + sameLine + 2;
    cx.nextLine();
    cx.addElement(cx.elt("BlockMath", from, end, marks));
    return true;
  }
  // The closing "$$" must come before a blank line, or the opening is text.
  const closes = lookAhead(cx.input, cx.lineStart + line.text.length, LOOK_AHEAD, (l) => (closingPair(l, 0) >= 0 ? true : /^[\s>]*$/.test(l) ? false : undefined));
  if (!closes) return false;
  const marks = [cx.elt("MathMark", from, from + 2)];
  while (cx.nextLine()) {
    const close = closingPair(line.text, line.pos);
    if (close >= 0) {
      const end = cx.lineStart + close + 2;
      marks.push(cx.elt("MathMark", cx.lineStart + close, end));
      cx.nextLine();
      cx.addElement(cx.elt("BlockMath", from, end, marks));
      return true;
    }
  }
  cx.addElement(cx.elt("BlockMath", from, cx.prevLineEnd(), marks));
  return true;
}

export const mathSyntax = {
  defineNodes: [
    { name: "BlockMath", block: true, style: tags.special(tags.content) },
    { name: "InlineMath", style: tags.special(tags.content) },
    { name: "MathMark", style: tags.processingInstruction },
  ],
  parseBlock: [
    {
      name: "BlockMath",
      before: "FencedCode",
      parse: blockFormula,
      // A "$$" line ends the paragraph above it, as a fence does.
      endLeaf: (cx, line) => line.next === DOLLAR && line.text.charCodeAt(line.pos + 1) === DOLLAR && line.indent - line.baseIndent < 4,
    },
  ],
  parseInline: [
    {
      name: "InlineMath",
      before: "Emphasis",
      parse(cx, next, pos) {
        if (next !== DOLLAR) return -1;
        const end = inlineFormula(cx, pos);
        if (end < 0) return -1;
        const width = cx.char(pos + 1) === DOLLAR ? 2 : 1;
        return cx.addElement(cx.elt("InlineMath", pos, end, [cx.elt("MathMark", pos, pos + width), cx.elt("MathMark", end - width, end)]));
      },
    },
  ],
};
