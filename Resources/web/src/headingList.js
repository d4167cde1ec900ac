// The outline's headings, kept through edits without copying them: a book of 10 MB can hold a
// hundred thousand headings, and a key changes only the few near it. The headings are held in
// chunks shared between versions of the list; a chunk after an edit is shared as it is, with the
// distance its headings moved.
//
// A heading is `{from, to, level, text}`; a chunk holds them as they were when it was made, and
// its `shift` is added to their positions.
const CHUNK = 256;

function moved(heading, shift) {
  return shift === 0 ? heading : { ...heading, from: heading.from + shift, to: heading.to + shift };
}

class Chunk {
  constructor(items, shift) {
    this.items = items;
    this.shift = shift;
  }
}

// `headings` as chunks of at most `size`, with their positions as they are.
function chunked(headings, size) {
  const chunks = [];
  for (let i = 0; i < headings.length; i += size) chunks.push(new Chunk(headings.slice(i, i + size), 0));
  return chunks;
}

export class HeadingList {
  constructor(chunks, size = CHUNK) {
    this.chunks = chunks;
    this.size = size;
    // The index of each chunk's first heading.
    this.starts = new Array(chunks.length);
    let count = 0;
    chunks.forEach((chunk, i) => {
      this.starts[i] = count;
      count += chunk.items.length;
    });
    this.length = count;
  }

  static of(headings, size = CHUNK) {
    return new HeadingList(chunked(headings, size), size);
  }

  // The chunk holding heading `index`.
  chunkOf(index) {
    let low = 0;
    let high = this.chunks.length - 1;
    while (low < high) {
      const mid = (low + high + 1) >> 1;
      if (this.starts[mid] <= index) low = mid;
      else high = mid - 1;
    }
    return low;
  }

  at(index) {
    if (index < 0 || index >= this.length) return undefined;
    const c = this.chunkOf(index);
    const chunk = this.chunks[c];
    return moved(chunk.items[index - this.starts[c]], chunk.shift);
  }

  // The index of the first heading whose start, as `start` gives it, is `pos` or later (`start`
  // must grow with the heading's position).
  firstFrom(pos, start = (h) => h.from) {
    let low = 0;
    let high = this.length;
    while (low < high) {
      const mid = (low + high) >> 1;
      if (start(this.at(mid)) < pos) low = mid + 1;
      else high = mid;
    }
    return low;
  }

  // Headings `from` to `to` (exclusive) as an array.
  toArray(from = 0, to = this.length) {
    const out = [];
    if (to <= from) return out;
    for (let c = this.chunkOf(from); c < this.chunks.length && this.starts[c] < to; c++) {
      const { items, shift } = this.chunks[c];
      const first = Math.max(0, from - this.starts[c]);
      const end = Math.min(items.length, to - this.starts[c]);
      for (let i = first; i < end; i++) out.push(moved(items[i], shift));
    }
    return out;
  }

  // The list of headings `from` to `to` (exclusive), sharing the whole chunks between them.
  slice(from = 0, to = this.length) {
    from = Math.max(0, from);
    to = Math.min(this.length, to);
    if (to <= from) return new HeadingList([], this.size);
    if (from === 0 && to === this.length) return this;
    const chunks = [];
    for (let c = this.chunkOf(from); c < this.chunks.length && this.starts[c] < to; c++) {
      const chunk = this.chunks[c];
      const first = Math.max(0, from - this.starts[c]);
      const end = Math.min(chunk.items.length, to - this.starts[c]);
      chunks.push(first === 0 && end === chunk.items.length ? chunk : new Chunk(chunk.items.slice(first, end), chunk.shift));
    }
    return new HeadingList(chunks, this.size);
  }

  // The headings where `changes` (a ChangeSet) moves them: a start goes after text inserted at
  // it, an end stays before. Chunks wholly before the changes are shared as they are, and those
  // wholly after them with a new shift; only a chunk the changes reach is mapped heading by
  // heading.
  mapped(changes) {
    if (changes.empty || this.length === 0) return this;
    let firstA = Infinity;
    let lastA = -1;
    changes.iterChangedRanges((fromA, toA) => {
      firstA = Math.min(firstA, fromA);
      lastA = Math.max(lastA, toA);
    });
    const delta = changes.newLength - changes.length;
    const chunks = this.chunks.map((chunk) => {
      const { items, shift } = chunk;
      if (items[items.length - 1].to + shift <= firstA) return chunk;
      if (items[0].from + shift > lastA) return delta === 0 ? chunk : new Chunk(items, shift + delta);
      const mapped = items.map((h) => ({ ...h, from: changes.mapPos(h.from + shift, 1), to: changes.mapPos(h.to + shift, -1) }));
      return new Chunk(mapped, 0);
    });
    return new HeadingList(chunks, this.size);
  }

  // `parts` (lists and arrays of headings) one after the other. Where two parts meet, their
  // headings are chunked again, so that edits do not leave the list in crumbs: every chunk but a
  // lone one holds from half a chunk to two.
  static join(parts, size = CHUNK) {
    const chunks = [];
    let loose = []; // headings not yet in a chunk, at their positions
    const flush = () => {
      if (!loose.length) return;
      if (loose.length < size / 2 && chunks.length) {
        const before = chunks.pop();
        loose = before.items.map((h) => moved(h, before.shift)).concat(loose);
      }
      for (let i = 0; i < loose.length; i += size) {
        // The last piece takes a remainder under half a chunk.
        const rest = loose.length - i;
        chunks.push(new Chunk(loose.slice(i, i + (rest < size + size / 2 ? rest : size)), 0));
        if (rest < size + size / 2) break;
      }
      loose = [];
    };
    for (const part of parts) {
      if (Array.isArray(part)) {
        for (const h of part) loose.push(h);
        continue;
      }
      part.chunks.forEach((chunk, i) => {
        const edge = i === 0 || i === part.chunks.length - 1;
        if (loose.length || chunk.items.length < (edge ? size : size / 2)) {
          for (const h of chunk.items) loose.push(moved(h, chunk.shift));
          if (loose.length >= size) flush();
        } else {
          chunks.push(chunk);
        }
      });
    }
    flush();
    return new HeadingList(chunks, size);
  }
}
