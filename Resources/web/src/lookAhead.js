// Reading the lines after a block's opening line, for a block that exists only if its closing line
// comes (a formula, front matter). The lines are read as the block cuts read them (Lines): one at a
// time from the editor's text, in small blocks first from a string. The answer is nearly always a
// few lines down, and the parse of the chunk around a key must not read far past it.
import { Lines } from "./blockCuts.js";

// Hands `take` the text of each line after the line ending at `from` that starts within `limit`
// characters of it, until it answers something other than undefined; returns that answer, or
// undefined after the last line.
export function lookAhead(input, from, limit, take) {
  const end = Math.min(input.length, from + limit);
  for (const lines = new Lines(input, from + 1); lines.pos < end && lines.next(); ) {
    const answer = take(lines.text());
    if (answer !== undefined) return answer;
  }
  return undefined;
}
