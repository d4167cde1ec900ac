// Bundles the editor page into OUTDIR (default: dist/): editor.html, editor.css and one
// editor.js for Chromium 102, the engine of Qt 6.4's web view; and the libraries the page loads
// only for a document that needs them: formulas.js (KaTeX, its style sheet and fonts in katex/)
// and diagrams.js. Everything the page needs is in those files; nothing is fetched at run time. The
// licences of the packages bundled go to licenses.txt beside them. PAGEWELL_NO_MINIFY=1 keeps
// the code readable for profiling.
import { build } from "esbuild";
import { copyFileSync, existsSync, mkdirSync, readFileSync, readdirSync, writeFileSync } from "node:fs";
import { dirname, join } from "node:path";
import { fileURLToPath } from "node:url";

const here = dirname(fileURLToPath(import.meta.url));
const outdir = process.argv[2] || join(here, "dist");
mkdirSync(outdir, { recursive: true });

const bundle = (entry, outfile) =>
  build({
    entryPoints: [join(here, entry)],
    bundle: true,
    format: "iife",
    target: "chrome102",
    minify: process.env.PAGEWELL_NO_MINIFY ? false : true,
    sourcemap: false,
    legalComments: "none",
    outfile: join(outdir, outfile),
    logLevel: "warning",
    metafile: true,
    // Icons drawn in the text (callouts) are bundled as their SVG source.
    loader: { ".svg": "text" },
  });
const results = await Promise.all([
  bundle("src/main.js", "editor.js"),
  bundle("src/formulaEngine.js", "formulas.js"),
  bundle("src/diagramEngine.js", "diagrams.js"),
]);
for (const file of ["editor.html", "editor.css"]) copyFileSync(join(here, file), join(outdir, file));

// KaTeX's style sheet and its fonts, in the one format the web view needs.
const katex = join(here, "node_modules/katex/dist");
mkdirSync(join(outdir, "katex/fonts"), { recursive: true });
copyFileSync(join(katex, "katex.min.css"), join(outdir, "katex/katex.min.css"));
for (const font of readdirSync(join(katex, "fonts")).filter((f) => f.endsWith(".woff2"))) {
  copyFileSync(join(katex, "fonts", font), join(outdir, "katex/fonts", font));
}

// One entry per npm package that ended up in the bundle, with its licence text.
const packages = new Map([["katex", join(here, "node_modules/katex")]]);
for (const input of results.flatMap((result) => Object.keys(result.metafile.inputs))) {
  const match = /node_modules\/((?:@[^/]+\/)?[^/]+)\//.exec(input);
  if (match) packages.set(match[1], join(here, "node_modules", match[1]));
}
const notices = [...packages.keys()].sort().map((name) => {
  const dir = packages.get(name);
  const meta = JSON.parse(readFileSync(join(dir, "package.json"), "utf8"));
  const file = ["LICENSE", "LICENSE.md", "LICENSE.txt", "LICENCE"].map((f) => join(dir, f)).find(existsSync);
  const text = file ? readFileSync(file, "utf8").trim() : `License: ${meta.license}`;
  return `${name} ${meta.version}\n\n${text}\n`;
});
writeFileSync(join(outdir, "licenses.txt"), `The editor page bundles these packages.\n\n${notices.join("\n" + "-".repeat(72) + "\n\n")}`);
