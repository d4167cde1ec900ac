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
