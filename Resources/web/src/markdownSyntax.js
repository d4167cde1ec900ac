// The editor's Markdown: CommonMark with GitHub's extensions, front matter and formulas, the code
// of fenced blocks highlighted in its own language, a large document parsed in chunks. And the same
// blocks as the outline reads them.
import { Language, LanguageSupport } from "@codemirror/language";
import { markdown, markdownLanguage } from "@codemirror/lang-markdown";
import { frontMatter } from "./frontMatter.js";
import { mathSyntax } from "./mathSyntax.js";
import { blocksOnly } from "./outline.js";
import { ChunkedParser } from "./chunkedParser.js";
import { LARGE_DOCUMENT } from "./document.js";

const extensions = [frontMatter, mathSyntax];

export function markdownSyntax(codeLanguages) {
  const whole = markdown({ base: markdownLanguage, codeLanguages, extensions });
  const language = new Language(whole.language.data, new ChunkedParser(whole.language.parser, LARGE_DOCUMENT, 4096), [], "markdown");
  return {
    support: new LanguageSupport(language, whole.support),
    // The outline's idle scan needs the blocks only: no inline content, and no parse of the code
    // inside fenced blocks (in a programming book that is most of the work). It is built from the
    // same base and extensions, so its headings are the editor's.
    outlineBlocks: blocksOnly(markdownLanguage.parser.configure([extensions])),
  };
}
