import { test } from "node:test";
import assert from "node:assert/strict";
import { parser, GFM } from "@lezer/markdown";
import { frontMatter } from "../../src/frontMatter.js";

const markdown = parser.configure([GFM, frontMatter]);
const frontMatterOf = (text) => {
  const node = markdown.parse(text).topNode.firstChild;
  return node && node.name === "FrontMatter" ? text.slice(node.from, node.to) : null;
};

test("front matter is closed on one of its first thousand lines, however long they are", () => {
  assert.equal(frontMatterOf("---\ntitre: essai\n---\n\n# Titre"), "---\ntitre: essai\n---");
  // A carriage return before the line break is a space, as to the Markdown parser: the closing
  // line's is part of it.
  assert.equal(frontMatterOf("---\r\ntitre: essai\r\n...\r\n"), "---\r\ntitre: essai\r\n...\r");
  // A file mixing line ends: the closing line ends in a carriage return the parser keeps. The
  // front matter still ends there, and does not swallow the document.
  const mixed = "---\ntitre: essai\r\n---\r\n\n# Titre\n";
  assert.equal(frontMatterOf(mixed), "---\ntitre: essai\r\n---\r");
  assert.equal(markdown.parse(mixed).topNode.lastChild.name, "ATXHeading1");
  // Not closed: a rule, and the rest is the document's.
  assert.equal(frontMatterOf("---\ntitre: essai\n\n# Titre"), null);
  // Lines long enough to be read in several pieces: closed on line 1000, it is front matter; on
  // line 1001, it is not.
  for (const end of ["\n", "\r\n"]) {
    const fields = Array.from({ length: 998 }, (_, i) => `champ${i}: ${"valeur ".repeat(5)}`);
    const closedAt1000 = ["---", ...fields, "---", "", "Texte"].join(end);
    assert.equal(frontMatterOf(closedAt1000), ["---", ...fields, "---"].join(end) + end.slice(0, -1));
    assert.equal(frontMatterOf(["---", ...fields, "x: 1", "---", "", "Texte"].join(end)), null);
  }
});
