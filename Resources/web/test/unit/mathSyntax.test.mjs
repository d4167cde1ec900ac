import { test } from "node:test";
import assert from "node:assert/strict";
import { parser, GFM } from "@lezer/markdown";
import { mathSyntax } from "../../src/mathSyntax.js";

const markdown = parser.configure([GFM, mathSyntax]);

// The formulas of `text`: [node name, its text].
function formulas(text) {
  const found = [];
  markdown.parse(text).iterate({
    enter(node) {
      if (node.name === "InlineMath" || node.name === "BlockMath") found.push([node.name, text.slice(node.from, node.to)]);
    },
  });
  return found;
}

test("inline formulas follow the dollar rules: currency, escapes and code are text", () => {
  assert.deepEqual(formulas("Soit $E = mc^2$ et $x$."), [
    ["InlineMath", "$E = mc^2$"],
    ["InlineMath", "$x$"],
  ]);
  // A space after the opening dollar, before the closing one, or a digit after it: no formula.
  assert.deepEqual(formulas("Prix 5 $ et 10 $."), []);
  assert.deepEqual(formulas("De $5 à $10 la pièce."), []);
  assert.deepEqual(formulas("$a $ et $ b"), []);
  assert.deepEqual(formulas("$x$5 puis $y$"), [["InlineMath", "$x$5 puis $y$"]]);
  // Escaped dollars, inside and outside a formula.
  assert.deepEqual(formulas("\\$5 et \\$6"), []);
  assert.deepEqual(formulas("$\\$ + 1$"), [["InlineMath", "$\\$ + 1$"]]);
  // Code wins over a formula that starts inside it; a formula holds what looks like emphasis.
  assert.deepEqual(formulas("`$x$` et $a_1 * b_2$ et *gras*"), [["InlineMath", "$a_1 * b_2$"]]);
  // "$$…$$" within a paragraph is an inline display formula.
  assert.deepEqual(formulas("Voir $$\\sum_k k$$ ici"), [["InlineMath", "$$\\sum_k k$$"]]);
  assert.deepEqual(formulas("Un $ seul"), []);
});

test("formula blocks: closed, on one line, ending a paragraph; an unclosed one stays text", () => {
  assert.deepEqual(formulas("$$\n\\int_0^1 x\n$$\nAprès"), [["BlockMath", "$$\n\\int_0^1 x\n$$"]]);
  assert.deepEqual(formulas("$$ x^2 $$"), [["BlockMath", "$$ x^2 $$"]]);
  assert.deepEqual(formulas("Texte\n$$\nx\n$$"), [["BlockMath", "$$\nx\n$$"]]);
  assert.deepEqual(formulas("> $$\n> a\n> $$"), [["BlockMath", "$$\n> a\n> $$"]]);
  // No closing "$$" before a blank line: the lines are a paragraph, nothing swallowed after.
  const unclosed = formulas("$$\nx\n\n# Titre\n\n$y$");
  assert.deepEqual(unclosed, [["InlineMath", "$y$"]]);
  // CR LF lines.
  assert.deepEqual(formulas("$$\r\na\r\n$$\r\n"), [["BlockMath", "$$\r\na\r\n$$"]]);
  // Indented four spaces: code, not a formula.
  assert.deepEqual(formulas("    $$ x $$"), []);
  // The closing "$$" far down. The text after the opening is read in growing blocks, the first of
  // 1,024 characters: with lines of 32 characters, line break included, a block ends right after a
  // line break, and the nothing read after it is no blank line.
  for (const end of ["\n", "\r\n"]) {
    const body = Array.from({ length: 1900 }, (_, i) => `x${i}`.padEnd(32 - end.length, "+")).join(end);
    assert.deepEqual(formulas(`$$${end}${body}${end}$$`), [["BlockMath", `$$${end}${body}${end}$$`]]);
    // A blank line down there, before the closing: the opening is text.
    assert.deepEqual(formulas(`$$${end}${body}${end}${end}$$ x $$`), [["BlockMath", "$$ x $$"]]);
  }
});
