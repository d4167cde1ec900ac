// The editor's Markdown: CommonMark with GitHub's extensions, front matter and formulas, the code of fenced
// blocks highlighted in its own language. And the same blocks as the outline reads them.
import { markdown, markdownLanguage } from "@codemirror/lang-markdown";
import { frontMatter } from "./frontMatter.js";
import { mathSyntax } from "./mathSyntax.js";
import { blocksOnly } from "./outline.js";

const extensions = [frontMatter, mathSyntax];

export function markdownSyntax(codeLanguages) {
  return {
    support: markdown({ base: markdownLanguage, codeLanguages, extensions }),
    // The outline's idle parse needs the blocks only: no inline content, and no parse of the code
    // inside fenced blocks (in a programming book that is most of the work). Built from the same
    // base and extensions, it has the editor's node types, so it can take over the editor's tree.
    outlineBlocks: blocksOnly(markdownLanguage.parser.configure([extensions])),
  };
}
