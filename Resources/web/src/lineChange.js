// A new version of a document as the smallest change of whole lines, so that what did not
// change keeps its place, its selection and its scroll position.
import { Text } from "@codemirror/state";

// The smallest run of whole lines that turns `doc` into `lines`, as a change; null when equal.
export function lineChange(doc, lines) {
  const oldCount = doc.lines;
  const newCount = lines.length;
  let head = 0;
  while (head < oldCount && head < newCount && doc.line(head + 1).text === lines[head]) head++;
  let tail = 0;
  while (
    tail < oldCount - head &&
    tail < newCount - head &&
    doc.line(oldCount - tail).text === lines[newCount - 1 - tail]
  )
    tail++;
  const removed = oldCount - head - tail;
  const added = lines.slice(head, newCount - tail);
  if (removed === 0 && added.length === 0) return null;
  if (removed > 0 && added.length > 0) {
    return { from: doc.line(head + 1).from, to: doc.line(oldCount - tail).to, insert: Text.of(added) };
  }
  if (removed === 0) {
    // Whole lines put in before line head + 1, or after the last line.
    if (head < oldCount) return { from: doc.line(head + 1).from, insert: Text.of([...added, ""]) };
    return { from: doc.length, insert: Text.of(["", ...added]) };
  }
  // Whole lines taken out, with the break after them (or before them at the end).
  if (oldCount - tail < oldCount) {
    return { from: doc.line(head + 1).from, to: doc.line(oldCount - tail + 1).from };
  }
  return { from: doc.line(head).to, to: doc.length };
}
