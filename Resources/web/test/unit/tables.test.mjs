import { test } from "node:test";
import assert from "node:assert/strict";
import { alignmentsOf, cellsOf } from "../../src/tables.js";

test("a table line's cells and a delimiter row's alignments", () => {
  assert.deepEqual(cellsOf("| a | b \\| c |  |"), ["a", "b | c", ""]);
  assert.deepEqual(cellsOf("a | b"), ["a", "b"]);
  assert.deepEqual(alignmentsOf("|:--|:-:|--:|---|"), ["left", "center", "right", ""]);
});
