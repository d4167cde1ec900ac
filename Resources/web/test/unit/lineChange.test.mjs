import { test } from "node:test";
import assert from "node:assert/strict";
import { EditorState } from "@codemirror/state";
import { lineChange } from "../../src/lineChange.js";

// Applies the change and returns the new text, joined as the document joins its lines.
function apply(before, after, separator = "\n") {
  const state = EditorState.create({ doc: before, extensions: EditorState.lineSeparator.of(separator) });
  const change = lineChange(state.doc, after.split(separator));
  if (!change) return { text: before, change };
  return { text: state.update({ changes: change }).state.sliceDoc(), change };
}

test("the new version is reached whatever changed: lines added, removed, rewritten, at either end", () => {
  const cases = [
    ["a\nb\nc", "a\nb\nc\nd"],
    ["a\nb\nc", "z\na\nb\nc"],
    ["a\nb\nc", "a\nx\ny\nc"],
    ["a\nb\nc", "a\nc"],
    ["a\nb\nc", "a\nb"],
    ["a\nb\nc", "b\nc"],
    ["a\na\na", "a\na"],
    ["a", ""],
    ["", "a\nb"],
    ["a\nb\n", "a\nb\nc\n"],
  ];
  for (const [before, after] of cases) assert.equal(apply(before, after).text, after, JSON.stringify([before, after]));
  for (const [before, after] of cases) {
    const crlf = (t) => t.replaceAll("\n", "\r\n");
    assert.equal(apply(crlf(before), crlf(after), "\r\n").text, crlf(after));
  }
});
