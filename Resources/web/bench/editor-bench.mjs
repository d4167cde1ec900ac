// Measures the editor page in Chromium: time from setContent to the first painted frame for 1 MB
// and 10 MB documents, the time per typed key (transaction, listeners, and the next frame) in the
// 10 MB one, and in 1 MB documents with 2,000 pictures, or with 300 formulas and 50 diagrams,
// the time per key and per frame while scrolling. Prints medians; asserts nothing.
import { readFileSync, readdirSync, statSync } from "node:fs";
import { join } from "node:path";
import { launch, openEditor } from "../test/browser/page.mjs";

// Real documents when a corpus is given (bench/editor-bench.mjs TREE), else generated prose.
function sample(bytes, tree) {
  const parts = [];
  let size = 0;
  const walk = (dir) => {
    for (const name of readdirSync(dir)) {
      if (size >= bytes || name.startsWith(".") || name === "node_modules" || name === "dist") continue;
      const path = join(dir, name);
      const st = statSync(path);
      if (st.isDirectory()) walk(path);
      else if (name.endsWith(".md")) {
        const text = readFileSync(path, "utf8");
        parts.push(text);
        size += text.length;
      }
    }
  };
  if (tree) walk(tree);
  for (let i = 0; size < bytes; i++) {
    const text = `## Section ${i}\n\nUn paragraphe de **texte** avec du \`code\` et une [référence](#s${i}).\n\n- point un\n- point deux\n\n\`\`\`js\nconst x = ${i};\n\`\`\`\n\n`;
    parts.push(text);
    size += text.length;
  }
  return parts.join("\n").slice(0, bytes);
}

const median = (values) => values.slice().sort((a, b) => a - b)[Math.floor(values.length / 2)];

const browser = await launch();
const editor = await openEditor(browser, { width: 1200, height: 900 });
const { page } = editor;
await page.evaluate(() => window.Pagewell.init("", false));
for (const megabytes of [1, 10]) {
  const text = sample(megabytes * 1_000_000, process.argv[2]);
  await page.evaluate((t) => (window.__benchText = t), text);
  const loads = [];
  for (let i = 0; i < 5; i++) {
    loads.push(
      await page.evaluate(async () => {
        const start = performance.now();
        window.Pagewell.setContent(window.__benchText, "/bench.md");
        await new Promise((done) => requestAnimationFrame(() => setTimeout(done, 0)));
        return performance.now() - start;
      }),
    );
  }
  console.log(`setContent ${megabytes} MB: median ${median(loads).toFixed(0)} ms (${loads.map((t) => t.toFixed(0)).join(", ")})`);
}
// Keys a quarter of a second apart, as a brisk typist's: the time to handle each one, and to the
// next painted frame.
async function typeAt(where, settleMs) {
  return page.evaluate(
    async ([where, settleMs]) => {
      const view = window.__pagewellEditor.view;
      const line = view.state.doc.line(Math.max(1, Math.floor(view.state.doc.lines * where)));
      view.dispatch({ selection: { anchor: line.to }, scrollIntoView: true });
      await new Promise((done) => setTimeout(done, settleMs));
      const times = [];
      const handling = [];
      for (let i = 0; i < 40; i++) {
        await new Promise((done) => setTimeout(done, 250));
        const start = performance.now();
        const at = view.state.selection.main.head;
        view.dispatch({ changes: { from: at, insert: i % 10 === 9 ? "\n" : "a" }, selection: { anchor: at + 1 }, userEvent: "input.type", scrollIntoView: true });
        handling.push(performance.now() - start);
        await new Promise((done) => requestAnimationFrame(() => setTimeout(done, 0)));
        times.push(performance.now() - start);
      }
      return { times, handling };
    },
    [where, settleMs],
  );
}
for (const [label, where, settleMs] of [["near the top", 0.001, 100], ["in the middle, once parsed that far", 0.5, 8000]]) {
  const keys = await typeAt(where, settleMs);
  console.log(
    `typing in 10 MB, ${label}: handled in ${median(keys.handling).toFixed(1)} ms (worst ${Math.max(...keys.handling).toFixed(1)}), ` +
      `painted in ${median(keys.times).toFixed(1)} ms (worst ${Math.max(...keys.times).toFixed(1)}), medians per key`,
  );
}

// 2,000 picture lines among 1 MB of prose, the pictures real files in a folder.
const { mkdtempSync, mkdirSync, writeFileSync, rmSync } = await import("node:fs");
const { tmpdir } = await import("node:os");
const folder = mkdtempSync(`${tmpdir()}/pagewell-bench-pictures-`);
mkdirSync(`${folder}/img`);
const png = Buffer.from("iVBORw0KGgoAAAANSUhEUgAAAAIAAAABCAIAAAB7QOjdAAAAEElEQVR4nGP4z8DAwMDAAAAN/QH/ZtN3bgAAAABJRU5ErkJggg==", "base64");
for (let i = 0; i < 50; i++) writeFileSync(`${folder}/img/p${i}.png`, png);
const prose = sample(1_000_000, process.argv[2]).split("\n");
const step = Math.floor(prose.length / 2000);
const lines = [];
prose.forEach((line, i) => {
  lines.push(line);
  if (i % step === 0) lines.push("", `![figure ${i}](img/p${i % 50}.png)`, "");
});
// Scrolls down 120 px a frame; counts the frames where the text's height changed under the reader
// (a picture's box taking its size as it loads).
const scroll = (count = 240) =>
  page.evaluate(async (count) => {
    const view = window.__pagewellEditor.view;
    const gaps = [];
    let jumps = 0;
    let last = performance.now();
    let height = view.contentHeight;
    for (let i = 0; i < count; i++) {
      view.scrollDOM.scrollTop += 120;
      await new Promise((done) => requestAnimationFrame(done));
      const now = performance.now();
      gaps.push(now - last);
      last = now;
      if (view.contentHeight !== height) jumps++;
      height = view.contentHeight;
    }
    return { gaps, jumps, pictures: document.querySelectorAll(".cm-picture img").length };
  }, count);
const text = lines.join("\n");
const sources = Object.fromEntries(Array.from({ length: 50 }, (_, i) => [`img/p${i}.png`, { path: `${folder}/img/p${i}.png`, width: 640, height: 320 }]));
for (const told of [false, true]) {
  await page.evaluate(([f, t]) => (window.Pagewell.setFolder(f), window.Pagewell.setContent(t, `${f}/doc.md`)), [folder, text]);
  if (told) await page.evaluate(([s, f]) => window.Pagewell.setLinkFacts({ missing: [], pictures: s }, `${f}/doc.md`), [sources, folder]);
  const pictureKeys = await typeAt(0.5, 500);
  const frames = await scroll();
  const sorted = frames.gaps.slice().sort((a, b) => a - b);
  console.log(
    `1 MB with 2,000 pictures, ${told ? "sizes told by the host" : "sizes unknown"}: typing painted in ${median(pictureKeys.times).toFixed(1)} ms per key (worst ${Math.max(...pictureKeys.times).toFixed(1)}); ` +
      `scrolling 120 px a frame: median frame ${median(frames.gaps).toFixed(1)} ms, 95th percentile ${sorted[Math.floor(sorted.length * 0.95)].toFixed(1)} ms, ` +
      `${frames.jumps} frames of 240 where the text's height changed, ${frames.pictures} pictures in the page at the end`,
  );
}
rmSync(folder, { recursive: true, force: true });

// 1 MB of prose with 300 formulas (250 blocks, 50 inline) and 50 diagrams, each its own text:
// typing, and scrolling through all of them, twice: as they are drawn, then drawn.
const drawn = [];
prose.forEach((line, i) => {
  drawn.push(line);
  if (i % 5 !== 0 || i / 5 >= 350) return;
  const n = i / 5;
  if (n % 7 === 3) drawn.push("", "```mermaid", `graph LR\n  A${n}[Début ${n}] --> B${n}{Choix}\n  B${n} -->|oui| C${n}[Fin]`, "```", "");
  else if (n % 7 === 5) drawn.push("", `Soit $x_{${n}}^2 + \\sqrt{${n}}$ dans le texte.`, "");
  else drawn.push("", "$$", `\\int_0^{${n}} x^2\\,dx = \\frac{${n}^3}{3}`, "$$", "");
});
await page.evaluate((t) => window.Pagewell.setContent(t, "/drawn.md"), drawn.join("\n"));
const counts = () => page.evaluate(() => [document.querySelectorAll(".cm-math").length, document.querySelectorAll(".cm-diagram svg").length]);
const drawnKeys = await typeAt(0.04, 3000);
await page.evaluate(() => (window.__pagewellEditor.view.scrollDOM.scrollTop = 0));
const first = await scroll(600);
await page.evaluate(() => (window.__pagewellEditor.view.scrollDOM.scrollTop = 0));
const second = await scroll(600);
for (const [label, frames] of [["first pass", first], ["second pass", second]]) {
  const sorted = frames.gaps.slice().sort((a, b) => a - b);
  console.log(
    `1 MB with 300 formulas and 50 diagrams, ${label}: scrolling 120 px a frame: median frame ${median(frames.gaps).toFixed(1)} ms, ` +
      `95th percentile ${sorted[Math.floor(sorted.length * 0.95)].toFixed(1)} ms, ${frames.jumps} frames of 600 where the text's height changed`,
  );
}
console.log(
  `1 MB with 300 formulas and 50 diagrams: typing painted in ${median(drawnKeys.times).toFixed(1)} ms per key (worst ${Math.max(...drawnKeys.times).toFixed(1)}); ` +
    `formulas and diagrams in the page at the end: ${(await counts()).join(", ")}`,
);
await editor.close();
await browser.close();
