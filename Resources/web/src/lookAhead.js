// Reading the lines after a block's opening line, for a block that exists only if its closing line
// comes (a formula, front matter). The text is read a piece at a time, growing: the answer is
// nearly always a few lines down, and a parse of the chunk around a key must not read far past it.
const LINE_BREAK = /\r\n|\r|\n/;

// Hands `take` the lines after the line ending at `from`, one at a time, as far as `limit`
// characters from there (the last one possibly cut there), until it answers something other than
// undefined; returns that answer, or undefined past the last line.
export function lookAhead(input, from, limit, take) {
  const end = Math.min(input.length, from + limit);
  let taken = 0; // lines handed over already: a piece holds them again
  for (let size = 1024; ; size *= 4) {
    const to = Math.min(end, from + size);
    // The first is the rest of the opening line; the last may go on past `to`, unless that is the
    // end: it is read again, whole, the next time round.
    const lines = input.read(from, to).split(LINE_BREAK);
    const whole = to === end ? lines.length : lines.length - 1;
    for (let i = 1 + taken; i < whole; i++) {
      const answer = take(lines[i]);
      if (answer !== undefined) return answer;
    }
    taken = Math.max(taken, whole - 1);
    if (to === end) return undefined;
  }
}
