import { test } from "node:test";
import assert from "node:assert/strict";
import { addressAt } from "../../src/links.js";

test("finds the address under the pointer, without the sentence's punctuation", () => {
  const text = "Voir https://exemple.org/doc?a=1, puis http://x.fr.";
  assert.equal(addressAt(text, 5), "https://exemple.org/doc?a=1");
  assert.equal(addressAt(text, 31), "https://exemple.org/doc?a=1");
  assert.equal(addressAt(text, 45), "http://x.fr");
  assert.equal(addressAt(text, 2), null);
  assert.equal(addressAt(text, 33), null); // the space after the comma
});

test("only web addresses, and addresses inside Markdown links", () => {
  assert.equal(addressAt("file:///etc/passwd", 3), null);
  assert.equal(addressAt("javascript:alert(1)", 3), null);
  assert.equal(addressAt("[doc](https://a.org/x)", 10), "https://a.org/x");
  assert.equal(addressAt("<https://a.org/y>", 3), "https://a.org/y");
});

test("the link under the caret, its target as written", async () => {
  const { EditorState } = await import("@codemirror/state");
  const { markdown, markdownLanguage } = await import("@codemirror/lang-markdown");
  const { ensureSyntaxTree } = await import("@codemirror/language");
  const { linkAt } = await import("../../src/links.js");
  const text = [
    "Voir [l'installation](../guide/install.md#linux) et [[Installation#Sous Linux|ici]].",
    "Aussi [deux mots](<mes notes.md>), [web](https://a.org/x) et <mailto:a@b.fr>, [réf][r], [sans][nulle].",
    "",
    '[R]: ../notes/réf.md "titre"',
  ].join("\n");
  const state = EditorState.create({ doc: text, extensions: [markdown({ base: markdownLanguage })] });
  ensureSyntaxTree(state, state.doc.length, 1e9);
  const at = (word) => linkAt(state, text.indexOf(word) + 1);
  assert.deepEqual(at("installation]"), { target: "../guide/install.md#linux" });
  assert.deepEqual(at("Sous"), { target: "[[Installation#Sous Linux|ici]]" });
  assert.deepEqual(at("deux"), { target: "<mes notes.md>" });
  assert.deepEqual(at("web"), { address: "https://a.org/x" });
  assert.deepEqual(at("mailto"), { address: "mailto:a@b.fr" });
  assert.deepEqual(at("réf"), { target: "../notes/réf.md" }); // where its definition says
  assert.equal(at("sans"), null); // a reference nothing defines
  assert.equal(at("Voir"), null);

  // Code shows links as text, as the host reads it: nothing there is followed.
  const code = "Un `[[Dans le code]]` et `[x](y.md)`.\n\n```\n[[Bloc]] [z](z.md)\n```\n\n    [[Indenté]]\n";
  const coded = EditorState.create({ doc: code, extensions: [markdown({ base: markdownLanguage })] });
  ensureSyntaxTree(coded, coded.doc.length, 1e9);
  for (const word of ["Dans", "x]", "Bloc", "z]", "Indenté"]) assert.equal(linkAt(coded, code.indexOf(word) + 1), null, word);
});
