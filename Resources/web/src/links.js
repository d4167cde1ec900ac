// Web addresses written in the text, for Ctrl+click: the page never navigates, it asks the host
// to open the address in the desktop's browser.

const ADDRESS = /\bhttps?:\/\/[^\s<>()[\]`"']+/g;
// Punctuation that ends a sentence rather than the address.
const TRAILING = /[.,;:!?]+$/;

// The http(s) address in `text` that covers the offset `at`, or null.
export function addressAt(text, at) {
  for (const match of text.matchAll(ADDRESS)) {
    const address = match[0].replace(TRAILING, "");
    const from = match.index;
    if (at >= from && at <= from + address.length) return address;
  }
  return null;
}
