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

// Where a path written in the document at `documentPath` leads: from the document's folder, or
// when absolute, inside the open folder, else from the folder's root; null when ".." climbs
// above the top.
export function placePath(path, documentPath, folder) {
  if (!path.startsWith("/")) return normalize(`${documentPath.slice(0, documentPath.lastIndexOf("/"))}/${path}`);
  return normalize(folder && !path.startsWith(folder + "/") ? folder + path : path);
}
