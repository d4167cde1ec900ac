// Front matter ("---" first line, closed by "---" or "..."), parsed as a block of its own so that
// it is shown as metadata rather than as a rule and a Setext heading.
import { tags } from "@lezer/highlight";

const OPEN = /^---[ \t]*$/;
const CLOSE = /^(?:---|\.\.\.)[ \t]*$/;
const FRONT_MATTER_MAX_LINES = 1000; // the closing line comes within these

export const frontMatter = {
  defineNodes: [{ name: "FrontMatter", block: true, style: tags.meta }],
  parseBlock: [
    {
      name: "FrontMatter",
      before: "HorizontalRule",
      parse(cx, line) {
        if (cx.lineStart !== 0 || !OPEN.test(line.text)) return false;
        // Look ahead for the closing line before taking any line.
        const ahead = cx.input.read(line.text.length, Math.min(cx.input.length, 400000));
        const lines = ahead.split(/\r\n|\r|\n/, FRONT_MATTER_MAX_LINES).slice(1); // lines 2 to 1000
        if (!lines.some((l) => CLOSE.test(l))) return false;
        const start = cx.lineStart;
        while (cx.nextLine()) {
          if (CLOSE.test(line.text)) {
            const end = cx.lineStart + line.text.length;
            cx.nextLine();
            cx.addElement(cx.elt("FrontMatter", start, end));
            return true;
          }
        }
        cx.addElement(cx.elt("FrontMatter", start, cx.prevLineEnd()));
        return true;
      },
    },
  ],
};
