import { test } from "node:test";
import assert from "node:assert/strict";
import { pictureOf } from "../../src/pictures.js";

test("a line holding only a picture, read in every form, kept inside the open folder", () => {
  const doc = "/w/docs/guide/page.md";
  const at = (line) => pictureOf(line, doc, "/w/docs");
  assert.deepEqual(at("![Schéma](img/flux%20v2.svg)"), { kind: "file", path: "/w/docs/guide/img/flux v2.svg", alt: "Schéma", source: "img/flux%20v2.svg" });
  assert.deepEqual(at('  ![a](<../img/a b.png> "titre")'), { kind: "file", path: "/w/docs/img/a b.png", alt: "a", source: "../img/a b.png" });
  assert.deepEqual(at("![[capture.PNG|Capture]]"), { kind: "file", path: "/w/docs/guide/capture.PNG", alt: "Capture", source: "[[capture.PNG]]" });
  assert.deepEqual(at('<img alt="logo" src="/img/logo.webp" width="40">'), { kind: "file", path: "/w/docs/img/logo.webp", alt: "logo", source: "/img/logo.webp" });
  assert.deepEqual(at("![x](https://exemple.org/x.png)"), { kind: "web", address: "https://exemple.org/x.png", alt: "x" });
  assert.deepEqual(at("![x](../../../etc/x.png)"), { kind: "outside", written: "../../../etc/x.png", alt: "x" });
  assert.deepEqual(pictureOf("![x](a.png)", doc, ""), { kind: "outside", written: "a.png", alt: "x" });
  // Not a picture alone on its line, or not a picture.
  for (const line of ["Voir ![x](a.png) ici", "![x](a.png) et plus", "[x](a.png)", "![x](notes.md)", "    ![x](a.png)"]) {
    assert.equal(at(line), null, line);
  }
});
