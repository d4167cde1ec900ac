// The link and picture cases the host's tests read too: both sides must read links alike.
import { test } from "node:test";
import assert from "node:assert/strict";
import { readFileSync } from "node:fs";
import { destination } from "../../src/links.js";
import { pictureOf } from "../../src/pictures.js";
import { isWebAddress } from "../../src/paths.js";

const table = JSON.parse(readFileSync(new URL("../../../../tests/data/links.json", import.meta.url), "utf8"));
const folder = "/w/docs";

test("addresses go to the desktop, everything else is looked for in the folder, as the host reads them", () => {
  assert.ok(table.links.length > 20);
  for (const { target, from, address = false, tooltip } of table.links) {
    assert.equal(isWebAddress(target), address, target);
    if (tooltip !== undefined) assert.equal(destination(target, `${folder}/${from}`, folder), tooltip, target);
  }
});

test("a picture line asks for the file the host also reads from it", () => {
  for (const { line, from, page } of table.pictures) {
    const picture = pictureOf(line, `${folder}/${from}`, folder);
    if (page === null) {
      assert.equal(picture, null, line);
      continue;
    }
    assert.equal(picture?.kind, page.kind, line);
    if (page.path) assert.equal(picture.path, `${folder}/${page.path}`, line);
  }
});
