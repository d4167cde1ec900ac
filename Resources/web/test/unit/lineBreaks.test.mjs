import { test } from "node:test";
import assert from "node:assert/strict";
import { detectLineSeparator, normalizeLineBreaks, splitByteOrderMark } from "../../src/lineBreaks.js";

test("the most common separator wins", () => {
  assert.equal(detectLineSeparator("a\r\nb\r\nc\nd"), "\r\n");
  assert.equal(detectLineSeparator("a\nb\nc\r\nd"), "\n");
  assert.equal(detectLineSeparator("a\rb\rc"), "\r");
  assert.equal(detectLineSeparator("une seule ligne"), "\n");
  assert.equal(detectLineSeparator(""), "\n");
  assert.equal(detectLineSeparator("\r\n"), "\r\n");
});

test("line breaks are rewritten, a CRLF counting once", () => {
  assert.equal(normalizeLineBreaks("a\nb\r\nc\rd", "\r\n"), "a\r\nb\r\nc\r\nd");
  assert.equal(normalizeLineBreaks("a\r\n\r\nb", "\n"), "a\n\nb");
});

test("a byte-order mark is split off and reported", () => {
  assert.deepEqual(splitByteOrderMark("\ufeff# T"), { bom: true, text: "# T" });
  assert.deepEqual(splitByteOrderMark("# T\ufeff"), { bom: false, text: "# T\ufeff" });
});
