// Front matter ("---" first line, closed by "---" or "..."), parsed as a block of its own so that
// it is shown as metadata rather than as a rule and a Setext heading.
import { tags } from "@lezer/highlight";
import { FRONT_MATTER_CLOSE, FRONT_MATTER_OPEN } from "./blockCuts.js";
import { lookAhead } from "./lookAhead.js";

const FRONT_MATTER_MAX_LINES = 1000; // the closing line comes within these

export const frontMatter = {
  defineNodes: [{ name: "FrontMatter", block: true, style: tags.meta }],
  parseBlock: [
    {
      name: "FrontMatter",
      before: "HorizontalRule",
      parse(cx, line) {
        if (cx.lineStart !== 0 || !FRONT_MATTER_OPEN.test(line.text)) return false;
        // Look ahead for the closing line, on lines 2 to 1000, before taking any line.
        let count = 1;
        if (!lookAhead(cx.input, line.text.length, 400000, (l) => (FRONT_MATTER_CLOSE.test(l) ? true : ++count >= FRONT_MATTER_MAX_LINES ? false : undefined))) return false;
        const start = cx.lineStart;
        while (cx.nextLine()) {
          if (FRONT_MATTER_CLOSE.test(line.text)) {
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
