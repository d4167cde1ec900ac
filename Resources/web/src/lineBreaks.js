// Line breaks and the byte-order mark, kept exactly as the document has them.

// The line separator a document uses most: "\r\n", "\n" or "\r" ("\n" for a single line).
// Breaks of another kind stay in the text as characters of their line.
export function detectLineSeparator(text) {
  let crlf = 0;
  let lf = 0;
  let cr = 0;
  for (let i = text.indexOf("\r"); i !== -1; i = text.indexOf("\r", i + 1)) {
    if (text.charCodeAt(i + 1) === 10) crlf++;
    else cr++;
  }
  for (let i = text.indexOf("\n"); i !== -1; i = text.indexOf("\n", i + 1)) lf++;
  lf -= crlf;
  if (crlf > lf && crlf >= cr) return "\r\n";
  if (cr > lf && cr > crlf) return "\r";
  return "\n";
}

// Every line break of `text` written as `separator`.
export function normalizeLineBreaks(text, separator) {
  return text.replace(/\r\n|\r|\n/g, separator);
}

// The text without a leading byte-order mark, and whether it had one.
export function splitByteOrderMark(text) {
  return text.charCodeAt(0) === 0xfeff ? { bom: true, text: text.slice(1) } : { bom: false, text };
}
