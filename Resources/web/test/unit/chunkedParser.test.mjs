import { test } from "node:test";
import assert from "node:assert/strict";
import { parser as commonmark, GFM } from "@lezer/markdown";
import { Tree, TreeFragment } from "@lezer/common";
import { Text } from "@codemirror/state";
import { DocInput } from "@codemirror/language";
import { ChunkedParser } from "../../src/chunkedParser.js";
import { frontMatter } from "../../src/frontMatter.js";
import { mathSyntax } from "../../src/mathSyntax.js";

const markdown = commonmark.configure([GFM, frontMatter, mathSyntax]);
const chunked = new ChunkedParser(markdown, 1000, 2048);

// Every named node of a tree as "name from-to", in document order.
function nodes(tree) {
  const out = [];
  tree.iterate({ enter: (node) => void out.push(`${node.name} ${node.from}-${node.to}`) });
  return out;
}

// Where a chunked tree was cut: the starts of its chunks, also those grouped under a balancing node.
function cutsOf(tree) {
  const cuts = [];
  const visit = (node, offset) =>
    node.children.forEach((child, i) => {
      const at = offset + node.positions[i];
      if (!(child instanceof Tree) || !child.type.isAnonymous) return;
      const first = child.children[0];
      if (first instanceof Tree && first.type.isAnonymous) visit(child, at);
      else cuts.push(at);
    });
  visit(tree, 0);
  return cuts;
}

// A large document mixing the blocks that run over blank lines with headings and paragraphs
// that start chunks, and traps: a heading inside code, an HTML comment, a list continued after a
// blank line.
function documentText(sections) {
  const parts = ["---", "titre: essai", "", "# pas un titre (propriétés)", "---", ""];
  for (let i = 0; i < sections; i++) {
    parts.push(`## Section ${i}`, "", `Un paragraphe **gras** et $x_${i}$, [lien](#s${i}).`, "");
    if (i % 5 === 0) parts.push("```js", "", "# pas un titre (code)", "", "const x = 1;", "```", "");
    if (i % 7 === 0) parts.push("<!--", "", "# pas un titre (commentaire)", "", "-->", "");
    if (i % 3 === 0) parts.push("- un", "", "- deux, la même liste", "", "  suite de deux", "");
    if (i % 4 === 0) parts.push("> citée", "", "Paragraphe après la citation.", "");
    if (i % 6 === 0) parts.push("$$", "\\frac{a}{b}", "$$", "", "| a | b |", "|---|---|", "| 1 | 2 |", "");
    // A fence indented by spaces, lines blank with a tab, lines starting with an accent, a line
    // too short to close the fence, and a fence too indented to open one.
    if (i % 8 === 0) parts.push("  ~~~~", "\t", "Été (code)", "", "  ~~~", "\t", "Été (code)", "", "    ```", "", "  ~~~~", "\t", "Été comme hiver.", "", "    ```", "", "Après.", "");
    // Lines ending in a carriage return, as in a file mixing line ends: blank to the parser.
    if (i % 9 === 0) parts.push("```sh\r", "# pas un titre (code)\r", "```\r", "\r", "Après une ligne CR.\r", "\r", "Encore.", "");
    // A backtick in the info string: no fence, so the next "```" opens one.
    if (i % 10 === 0) parts.push("```un`deux", "", "```", "", "# pas un titre (code)", "", "```", "");
    // A fence line in an HTML block is text: the block ends at the blank line, the next "```"
    // opens a fence.
    if (i % 11 === 0) parts.push("<div>", "```", "", "# Titre après le bloc", "", "```", "", "Texte (code)", "", "```", "");
    // A whole tag after a line of text is text, and the fence after it is one.
    if (i === 190) parts.push("Texte", "<span>", "```", "", "Texte (code)", "", "```", "");
  }
  return parts.join("\n");
}

// A document that opens with a fenced block, or an HTML block, holding what would start a chunk.
const opening = (first) => [first, "", "# pas un titre", "", "Texte", "", first === "```" ? "```" : "</div>", "", "# Titre", ""].join("\n") + documentText(20);

// The editor hands the parser its text a line at a time; a plain string is read in blocks.
const inputs = {
  string: (text) => text,
  lines: (text) => new DocInput(Text.of(text.split("\n"))),
};

for (const [kind, input] of Object.entries(inputs)) {
  test(`a large document parsed in chunks reads as the Markdown parser reads it whole (${kind})`, () => {
    const text = documentText(200);
    assert.ok(text.length > 20_000);
    const tree = chunked.parse(input(text));
    assert.deepEqual(nodes(tree), nodes(markdown.parse(text)));
    assert.equal(tree.length, text.length);
    // It was cut: the top node holds chunks, not the blocks themselves.
    assert.ok(tree.topNode.firstChild, "blocks under the top node");
    assert.ok(tree.children.length < 200, `${tree.children.length} children at the top`);
    // Each cut is at the start of a heading or a paragraph after a blank line.
    for (const at of tree.positions.slice(1)) {
      assert.match(text.slice(Math.max(0, at - 20), at + 1), /\n[ \t\r]*\n(?:#|\p{L})$/u, `cut at ${at}`);
    }
    // Cut wherever it may be, it still reads the same. A fence closed by a line ending in CR is
    // closed, and a line holding a CR is blank: both are followed by cuts.
    const whole = markdown.parse(text);
    const fine = new ChunkedParser(markdown, 1000, 1).parse(input(text));
    assert.deepEqual(nodes(fine), nodes(whole));
    const cuts = new Set(cutsOf(fine));
    const paragraphs = (words) => [...text.matchAll(new RegExp(words, "g"))].map((m) => m.index).filter((at) => whole.resolve(at, 1).name === "Paragraph");
    const afterCR = [...paragraphs("Après une ligne CR"), ...paragraphs("Encore")];
    assert.ok(afterCR.length >= 10 && afterCR.every((at) => cuts.has(at)), "cuts after the CR lines");
    for (const first of ["```", "<div>"]) {
      const start = opening(first);
      assert.deepEqual(nodes(new ChunkedParser(markdown, 1000, 1).parse(input(start))), nodes(markdown.parse(start)), `opening with ${first}`);
    }
  });

  test(`edits parse again only what they touch, and the tree stays the whole parse's (${kind})`, () => {
    let text = `${documentText(150)}\nDernier paragraphe`;
    let tree = chunked.parse(input(text));
    const edits = [
      [Math.floor(text.length / 2), 0, "mot "],
      [text.indexOf("## Section 40"), 0, "```\n"], // a fence opened: everything after it is code
      [text.indexOf("## Section 90"), 0, "```\n\n"], // and closed again further down
      [text.indexOf("## Section 100"), 3, ""], // a heading made a paragraph
      [text.indexOf("Un paragraphe", text.indexOf("## Section 120")), 0, "- "], // a paragraph made a list item
      [text.indexOf("  ~~~~", text.indexOf("## Section 128")), 2, ""], // a fence no longer indented
      [text.length, 0, "\n\n# Fin"],
      [text.length, 0, "suite"], // the last paragraph goes on
      [text.length, 0, "\n===="], // and becomes a heading
      [10, 0, "x"], // inside the front matter
    ];
    for (const [at, length, insert] of edits) {
      const next = text.slice(0, at) + insert + text.slice(at + length);
      const fragments = TreeFragment.applyChanges(TreeFragment.addTree(tree), [{ fromA: at, toA: at + length, fromB: at, toB: at + insert.length }]);
      tree = chunked.parse(input(next), fragments);
      text = next;
      assert.deepEqual(nodes(tree), nodes(markdown.parse(text)), `after inserting ${JSON.stringify(insert)} at ${at}`);
    }
  });
}

test("a parse stopped at a position gives the tree up to there, and small documents are parsed whole", () => {
  const text = documentText(100);
  const parse = chunked.startParse(text);
  parse.stopAt(5000);
  let tree;
  while (!(tree = parse.advance()));
  assert.ok(tree.length >= 5000 && tree.length < text.length, `stopped at ${tree.length}`);
  const whole = markdown.parse(text);
  const inWhole = nodes(whole).filter((n) => Number(n.split(" ")[1].split("-")[1]) < 4000);
  const inStopped = nodes(tree).filter((n) => Number(n.split(" ")[1].split("-")[1]) < 4000);
  assert.deepEqual(inStopped, inWhole);
  const small = "# Titre\n\nTexte.";
  assert.deepEqual(nodes(chunked.parse(small)), nodes(markdown.parse(small)));
});

test("a key in a large document reads the chunk it falls in, not the chunks it takes whole", () => {
  // The editor's input, counting the characters the parse reads from it.
  class CountingInput extends DocInput {
    count = 0;
    chunk(from) {
      const piece = super.chunk(from);
      this.count += piece.length;
      return piece;
    }
    read(from, to) {
      this.count += to - from;
      return super.read(from, to);
    }
  }
  let text = documentText(2000);
  let tree = chunked.parse(text);
  for (const at of [Math.floor(text.length / 3), Math.floor(text.length / 2), text.indexOf("## Section 1500")]) {
    const next = text.slice(0, at) + "x" + text.slice(at);
    const fragments = TreeFragment.applyChanges(TreeFragment.addTree(tree), [{ fromA: at, toA: at, fromB: at, toB: at + 1 }]);
    const input = new CountingInput(Text.of(next.split("\n")));
    tree = chunked.parse(input, fragments);
    text = next;
    assert.deepEqual(nodes(tree), nodes(markdown.parse(text)), `after a key at ${at}`);
    // The chunk holding the key, the lines scanned for its end and a formula's look ahead: a few
    // chunks' worth. (It was 135–210 KB: each formula read 64 KB ahead, each chunk taken was read
    // around.)
    assert.ok(input.count < 4 * chunked.chunkSize, `${input.count} characters read for a key in ${text.length}`);
  }
});
