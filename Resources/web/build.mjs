// Bundles the editor page into OUTDIR (default: dist/): editor.html, editor.css and one
// editor.js for Chromium 102, the engine of Qt 6.4's web view. Everything the page needs is in
// those files; nothing is fetched at run time.
import { build } from "esbuild";
import { copyFileSync, mkdirSync } from "node:fs";
import { dirname, join } from "node:path";
import { fileURLToPath } from "node:url";

const here = dirname(fileURLToPath(import.meta.url));
const outdir = process.argv[2] || join(here, "dist");
mkdirSync(outdir, { recursive: true });

await build({
  entryPoints: [join(here, "src/main.js")],
  bundle: true,
  format: "iife",
  target: "chrome102",
  minify: process.env.PAGEWELL_NO_MINIFY ? false : true,
  sourcemap: false,
  legalComments: "none",
  outfile: join(outdir, "editor.js"),
  logLevel: "warning",
});
for (const file of ["editor.html", "editor.css"]) copyFileSync(join(here, file), join(outdir, file));
