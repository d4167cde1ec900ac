// Pictures in place: a line holding only a picture (![alt](path), ![[file.png]] or <img src=...>)
// shows it under the line. The text stays as it is and stays editable; the caret passes the
// picture by. Only files inside the open folder are shown (the host also refuses any other file
// the page asks for); web addresses are never fetched, and SVG is drawn as an image, scripts and
// all left out. Once the host has said where each picture is and how large, its box has its size
// before the picture loads, so nothing moves while scrolling.
import { Facet, StateField } from "@codemirror/state";
import { Decoration, EditorView, ViewPlugin, WidgetType } from "@codemirror/view";
import { syntaxTree } from "@codemirror/language";
import { linkFacts, setLinkFacts } from "./linkFacts.js";
import { documentPath, openFolder } from "./document.js";
import { decode, isWebAddress, placePath } from "./paths.js";

const MARKDOWN = /^ {0,3}!\[([^\]]*)\]\(\s*(<[^>\n]*>|[^\s)]+)(?:\s+(?:"[^"]*"|'[^']*'))?\s*\)\s*$/;
const WIKI = /^ {0,3}!\[\[([^\]|\n]+)(?:\|([^\]\n]*))?\]\]\s*$/;
const HTML = /^ {0,3}<img\b[^>]*?\bsrc\s*=\s*(?:"([^"]*)"|'([^']*)')[^>]*>\s*$/i;
const ALT = /\balt\s*=\s*(?:"([^"]*)"|'([^']*)')/i;
const PICTURE = /\.(png|jpe?g|gif|webp|svg)$/i;

// What the line `text` shows, or null when it holds no picture alone:
// { kind: "file", path, alt, source } | { kind: "web", address, alt } |
// { kind: "outside", written, alt }. `source` is the picture as the host's facts name it.
export function pictureOf(text, documentPath, folder) {
  let written;
  let source;
  let alt = "";
  let match;
  if ((match = MARKDOWN.exec(text))) {
    written = match[2].replace(/^<|>$/g, "");
    alt = match[1];
  } else if ((match = WIKI.exec(text))) {
    written = match[1].trim();
    source = `[[${written}]]`;
    alt = match[2] ?? "";
  } else if ((match = HTML.exec(text))) {
    written = match[1] ?? match[2];
    const described = ALT.exec(text);
    alt = described ? described[1] ?? described[2] : "";
  } else {
    return null;
  }
  if (isWebAddress(written)) return { kind: "web", address: written, alt };
  const cleaned = decode(written.replace(/^file:\/\//i, "").replace(/[?#].*$/, ""));
  const normalized = placePath(cleaned, documentPath, folder);
  if (!normalized || !folder || !normalized.startsWith(folder + "/")) return { kind: "outside", written, alt };
  if (!PICTURE.test(normalized)) return null;
  return { kind: "file", path: normalized, alt, source: source ?? written };
}

// The picture as the host's facts place it: another file (a wiki name found elsewhere in the
// folder), its size, or no file at all.
function placed(picture, facts) {
  if (picture?.kind !== "file") return picture;
  const fact = facts.pictures.get(picture.source);
  if (fact === null) return { ...picture, kind: "missing" };
  if (!fact) return picture;
  return { ...picture, path: String(fact.path), width: fact.width, height: fact.height };
}

// The text column's width as its view last measured it, which the boxes of pictures not drawn yet
// are estimated from: one measure per view, handed to the widgets its state makes.
const column = Facet.define({ combine: (values) => values[0] ?? { width: 700 } });
const columnWatch = ViewPlugin.fromClass(
  class {
    constructor(view) {
      this.measure(view);
    }

    update(update) {
      if (update.geometryChanged) this.measure(update.view);
    }

    measure(view) {
      view.requestMeasure({
        read() {
          const style = getComputedStyle(view.contentDOM);
          const width = view.contentDOM.clientWidth - parseFloat(style.paddingLeft) - parseFloat(style.paddingRight);
          if (width > 0) view.state.facet(column).width = width;
        },
      });
    }
  },
);

const fileUrl = (path) => "file://" + path.split("/").map(encodeURIComponent).join("/");

function mark(text, title) {
  const span = document.createElement("span");
  span.className = "cm-picture-mark";
  span.textContent = text;
  span.title = title;
  return span;
}

class PictureWidget extends WidgetType {
  constructor(picture, measured) {
    super();
    this.picture = picture;
    this.column = measured;
  }

  eq(other) {
    const a = this.picture;
    const b = other.picture;
    return ["kind", "path", "address", "written", "alt", "width", "height"].every((key) => a[key] === b[key]);
  }

  toDOM() {
    const box = document.createElement("div");
    box.className = "cm-picture";
    const { kind, alt } = this.picture;
    if (kind === "web") {
      box.append(mark("Image distante non chargée", this.picture.address));
    } else if (kind === "outside") {
      box.append(mark("Image hors du dossier", `« ${this.picture.written} » ne se trouve pas dans le dossier ouvert.`));
    } else if (kind === "missing") {
      box.append(mark("Image introuvable", this.picture.path));
    } else {
      const image = document.createElement("img");
      image.alt = alt;
      image.draggable = false;
      image.loading = "lazy";
      image.decoding = "async";
      image.addEventListener("error", () => image.replaceWith(mark("Image introuvable", this.picture.path)));
      const { width, height } = this.picture;
      if (width > 0 && height > 0) {
        // The box the picture will fill: its own width at most, the column's, and what keeps its
        // height within 60 % of the editor's.
        image.width = width;
        image.height = height;
        image.style.width = `min(${width}px, 100%, calc(60vh * ${width / height}))`;
        image.style.height = "auto";
        image.style.aspectRatio = `${width} / ${height}`;
      }
      image.src = fileUrl(this.picture.path);
      box.append(image);
    }
    return box;
  }

  get estimatedHeight() {
    const { kind, width, height } = this.picture;
    if (kind !== "file") return 28;
    if (!(width > 0 && height > 0)) return 240;
    return Math.min(height, 0.6 * window.innerHeight, (this.column.width * height) / width) + 12;
  }
}

function insideCode(state, pos) {
  for (let node = syntaxTree(state).resolveInner(pos, 1); node; node = node.parent) {
    if (node.name === "FencedCode" || node.name === "CodeBlock" || node.name === "FrontMatter") return true;
  }
  return false;
}

// The picture decoration for the line `text` starting at `from`, or null. Most lines start
// with neither "!" nor "<" and are passed at once.
function pictureLine(state, text, from) {
  let i = 0;
  while (text.charCodeAt(i) === 32) i++;
  if (text[i] !== "!" && text[i] !== "<") return null;
  const picture = placed(pictureOf(text, state.facet(documentPath), state.facet(openFolder)), state.field(linkFacts));
  if (!picture || insideCode(state, from)) return null;
  return Decoration.widget({ widget: new PictureWidget(picture, state.facet(column)), block: true, side: 1 }).range(from + text.length);
}

function allPictures(state) {
  const ranges = [];
  let from = 0;
  for (const lines = state.doc.iterLines(); !lines.next().done; ) {
    const range = pictureLine(state, lines.value, from);
    if (range) ranges.push(range);
    from += lines.value.length + 1;
  }
  return Decoration.set(ranges);
}

const pictureTheme = EditorView.baseTheme({
  ".cm-picture": { padding: "6px 0" },
  ".cm-picture img": { display: "block", maxWidth: "100%", maxHeight: "60vh", objectFit: "contain" },
  ".cm-picture-mark": {
    display: "inline-block",
    padding: "2px 8px",
    border: "1px dashed currentColor",
    borderRadius: "4px",
    fontSize: "85%",
    opacity: "0.7",
  },
});

const pictureField = StateField.define({
  create: allPictures,
  update(set, tr) {
    const moved =
      tr.startState.facet(openFolder) !== tr.state.facet(openFolder) ||
      tr.startState.facet(documentPath) !== tr.state.facet(documentPath);
    if (moved) return allPictures(tr.state);
    const told = tr.effects.some((effect) => effect.is(setLinkFacts));
    // As the parse reaches further, a picture line it finds inside code goes.
    if (syntaxTree(tr.state).length > syntaxTree(tr.startState).length) {
      set = set.map(tr.changes).update({ filter: (from) => !insideCode(tr.state, from) });
      if (!tr.docChanged && !told) return set;
    } else if (!tr.docChanged && !told) {
      return set;
    } else {
      set = set.map(tr.changes);
    }
    // New facts can only change the pictures already found: those lines are read again.
    if (told) {
      const ranges = [];
      for (const cursor = set.iter(); cursor.value; cursor.next()) {
        const line = tr.state.doc.lineAt(cursor.from);
        const range = pictureLine(tr.state, line.text, line.from);
        if (range) ranges.push(range);
      }
      set = Decoration.set(ranges);
    }
    // Only the lines a change touched are read again.
    tr.changes.iterChangedRanges((_fromA, _toA, fromB, toB) => {
      const first = tr.state.doc.lineAt(fromB);
      const last = tr.state.doc.lineAt(toB);
      const added = [];
      for (let n = first.number; n <= last.number; n++) {
        const line = tr.state.doc.line(n);
        const range = pictureLine(tr.state, line.text, line.from);
        if (range) added.push(range);
      }
      set = set.update({ filter: (from) => from < first.from || from > last.to, filterFrom: first.from, filterTo: last.to, add: added });
    });
    return set;
  },
  provide: (field) => EditorView.decorations.from(field),
});

// Pictures in place for one editor view; its column's measure lives as long as the view.
export function pictures() {
  return [linkFacts, column.of({ width: 700 }), pictureField, pictureTheme, columnWatch];
}
