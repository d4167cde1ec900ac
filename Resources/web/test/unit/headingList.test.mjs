import { test } from "node:test";
import assert from "node:assert/strict";
import { ChangeSet } from "@codemirror/state";
import { HeadingList } from "../../src/headingList.js";
import { randomSource } from "./random.mjs";

// Headings from `from` on, one every few characters, up to `to`.
function headingsIn(random, from, to, name) {
  const out = [];
  for (let pos = from + random(6); pos + 3 <= to; pos += 3 + random(40)) {
    out.push({ from: pos, to: pos + 2 + random(2), level: 1 + random(6), text: `${name} ${pos}` });
  }
  return out;
}

// Edits as the outline makes them: the headings before a change kept, those of the text around
// it read again, those after it moved. Each version must hold what a plain array of the same
// edits holds, and stay in chunks of a sensible size.
test("a heading list edited again and again holds what an array would", () => {
  for (const size of [4, 16]) {
    const random = randomSource(size);
    let length = 20_000;
    let model = headingsIn(random, 0, length, "h");
    let list = HeadingList.of(model, size);
    const versions = [];
    for (let round = 0; round < 400; round++) {
      const from = random(length);
      const to = Math.min(length, from + (random(5) === 0 ? random(2000) : random(30)));
      const inserted = random(3) === 0 ? 0 : random(random(6) === 0 ? 3000 : 20);
      const changes = ChangeSet.of([{ from, to, insert: "x".repeat(inserted) }], length);
      // The headings wholly before the change stay; those starting after it move; the text in
      // between, a little wider than the change, is read again.
      const readFrom = Math.max(0, from - random(50));
      const readTo = Math.min(length + inserted - (to - from), from + inserted + random(50));
      const kept = model.findIndex((h) => h.to > readFrom);
      const keptCount = kept < 0 ? model.length : kept;
      const resumedAt = model.findIndex((h) => h.from >= to && changes.mapPos(h.from, 1) >= readTo);
      const resumed = resumedAt < 0 ? model.length : resumedAt;
      const read = headingsIn(random, Math.max(readFrom, keptCount ? model[keptCount - 1].to : 0), readTo, `r${round}`);

      assert.equal(list.firstFrom(readFrom + 1, (h) => h.to), keptCount, `size ${size}, round ${round}: firstFrom`);
      assert.deepEqual(list.toArray(keptCount, resumed), model.slice(keptCount, resumed));
      const next = HeadingList.join([list.slice(0, keptCount), read, list.slice(resumed).mapped(changes)], size);
      const moved = model.slice(resumed).map((h) => ({ ...h, from: changes.mapPos(h.from, 1), to: changes.mapPos(h.to, -1) }));
      model = [...model.slice(0, keptCount), ...read, ...moved];
      length = changes.newLength;
      versions.push([list, list.toArray()]);
      list = next;

      assert.equal(list.length, model.length);
      assert.deepEqual(list.toArray(), model, `size ${size}, round ${round}`);
      for (const i of [0, random(model.length), model.length - 1]) assert.deepEqual(list.at(i), model[i]);
      // No crumbs: every chunk holds half a chunk or more, so a key never costs more chunks.
      if (list.chunks.length > 1) {
        for (const chunk of list.chunks) assert.ok(chunk.items.length >= size / 2 && chunk.items.length <= 3 * size, `a chunk of ${chunk.items.length}`);
      }
    }
    // Earlier versions share chunks with later ones, and are never changed by them.
    for (const [old, headings] of versions) assert.deepEqual(old.toArray(), headings);
    assert.ok(list.length > 100, `${list.length} headings at the end`);
  }
});

test("a heading list shares what an edit does not reach", () => {
  const headings = [];
  for (let i = 0; i < 10_000; i++) headings.push({ from: i * 10, to: i * 10 + 5, level: 2, text: `t${i}` });
  const list = HeadingList.of(headings);
  const changes = ChangeSet.of([{ from: 50_002, to: 50_004, insert: "abc" }], 100_000);
  const mapped = list.mapped(changes);
  const at = list.firstFrom(50_000);
  // Chunks wholly before or after the change keep their headings' array.
  assert.equal(mapped.chunks[0], list.chunks[0]);
  assert.equal(mapped.chunks.at(-1).items, list.chunks.at(-1).items);
  assert.deepEqual(mapped.at(at), { from: 50_000, to: 50_006, level: 2, text: "t5000" });
  assert.deepEqual(mapped.at(9_999), { from: 100_000 - 10 + 1, to: 100_000 - 5 + 1, level: 2, text: "t9999" });
  // Cut and joined again, all but the chunks at the cut are shared.
  const joined = HeadingList.join([list.slice(0, at + 3), [], list.slice(at + 3)]);
  assert.deepEqual(joined.toArray(), headings);
  assert.ok(joined.chunks.filter((c) => list.chunks.includes(c)).length >= list.chunks.length - 3);
});

// The outline also moves headings a change lies among: those it keeps standing in past the tree.
test("a heading list maps every heading through changes anywhere", () => {
  const random = randomSource(7);
  const headings = headingsIn(random, 0, 5_000, "h");
  const list = HeadingList.of(headings, 8);
  for (let round = 0; round < 50; round++) {
    const specs = [];
    for (let at = random(800); at < 5_000; at += 1 + random(1_500)) {
      const to = Math.min(5_000, at + random(20));
      specs.push({ from: at, to, insert: "y".repeat(random(15)) });
      at = to;
    }
    const changes = ChangeSet.of(specs, 5_000);
    const expected = headings.map((h) => ({ ...h, from: changes.mapPos(h.from, 1), to: changes.mapPos(h.to, -1) }));
    assert.deepEqual(list.mapped(changes).toArray(), expected, `round ${round}`);
  }
});
