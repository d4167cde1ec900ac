// How the page reads the paths and addresses written in a document, by the host's rules: the
// host and the page are held to one table of cases (tests/data/links.json).

// An address for the desktop rather than a file of the folder: a link with a scheme other than
// "file:" (https:, mailto:, ftp:, ...), in <...> or not. "javascript:" is code, not an address,
// and goes nowhere.
export function isWebAddress(written) {
  const text = String(written).replace(/^</, "");
  return /^[a-z][a-z0-9+.-]*:/i.test(text) && !/^(?:file|javascript):/i.test(text);
}

export function decode(text) {
  try {
    return decodeURI(text);
  } catch {
    return text;
  }
}

// Folders of a path, with "." and ".." worked out; null when ".." climbs above the top.
export function normalize(path) {
  const parts = [];
  for (const part of path.split("/")) {
    if (part === "" || part === ".") continue;
    if (part === "..") {
      if (!parts.length) return null;
      parts.pop();
    } else parts.push(part);
  }
  return "/" + parts.join("/");
}
