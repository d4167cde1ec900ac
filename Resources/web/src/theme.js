// Light and dark appearances: the text reads like a document (headings at their sizes, emphasis
// shown as such, code in a fixed-width face) while every markup character stays visible, dimmed.
import { EditorView } from "@codemirror/view";
import { HighlightStyle } from "@codemirror/language";
import { tags as t } from "@lezer/highlight";
import { documentHighlighting } from "./highlighting.js";

const palettes = {
  light: {
    background: "#ffffff",
    text: "#1d1d1f",
    muted: "#6e6e73",
    markup: "#a1a1a8",
    accent: "#0a5fc2",
    caret: "#0a5fc2",
    selection: "#c7dcfb",
    selectionBlurred: "#e3e3e8",
    codeBackground: "#f4f4f6",
    codeBorder: "#e4e4e9",
    quote: "#d2d2d7",
    searchMatch: "#fbe7a1",
    searchCurrent: "#f5c04a",
    panel: "#f5f5f7",
    error: "#c4262e",
    // code
    keyword: "#a626a4",
    string: "#2f7d32",
    number: "#b35c00",
    comment: "#8e8e93",
    type: "#0b7285",
    function: "#3457b8",
    meta: "#8a6d3b",
  },
  dark: {
    background: "#1e1e20",
    text: "#e8e8ea",
    muted: "#a1a1a6",
    markup: "#6b6b73",
    accent: "#6cb2ff",
    caret: "#6cb2ff",
    selection: "#2f4d76",
    selectionBlurred: "#3a3a40",
    codeBackground: "#2a2a2e",
    codeBorder: "#36363c",
    quote: "#48484e",
    searchMatch: "#5b4a16",
    searchCurrent: "#8a6a12",
    panel: "#26262a",
    error: "#ff8f8f",
    keyword: "#d68bd4",
    string: "#8fcf8f",
    number: "#f0a35e",
    comment: "#8b8b92",
    type: "#66c7d4",
    function: "#8ab4ff",
    meta: "#cdb27a",
  },
};

const monospace = '"SF Mono", ui-monospace, "JetBrains Mono", "DejaVu Sans Mono", "Liberation Mono", monospace';

function editorTheme(p, dark) {
  return EditorView.theme(
    {
      "&": { color: p.text, backgroundColor: p.background, height: "100%" },
      ".cm-scroller": {
        fontFamily: '-apple-system, system-ui, "Segoe UI", Cantarell, "Noto Sans", "DejaVu Sans", sans-serif',
        fontSize: "15px",
        lineHeight: "1.65",
      },
      // A comfortable measure, centred; the scroll area keeps the whole width.
      ".cm-content": { maxWidth: "46rem", margin: "0 auto", padding: "2.5rem 2rem 40vh", caretColor: p.caret },
      ".cm-line": { padding: "0" },
      "&.cm-focused": { outline: "none" },
      ".cm-cursor, .cm-dropCursor": { borderLeftColor: p.caret, borderLeftWidth: "2px" },
      "&.cm-focused > .cm-scroller > .cm-selectionLayer .cm-selectionBackground, .cm-selectionBackground, ::selection": {
        backgroundColor: p.selection,
      },
      ".cm-selectionBackground": { backgroundColor: p.selectionBlurred },
      ".cm-activeLine": { backgroundColor: "transparent" },
      ".cm-specialChar": { color: p.error },
      ".cm-searchMatch": { backgroundColor: p.searchMatch, borderRadius: "2px" },
      ".cm-searchMatch.cm-searchMatch-selected": { backgroundColor: p.searchCurrent },
      ".cm-matchingBracket, &.cm-focused .cm-matchingBracket": { backgroundColor: "transparent", outline: `1px solid ${p.markup}` },
      ".cm-panels": { backgroundColor: p.panel, color: p.text, fontSize: "13px" },
      ".cm-panels.cm-panels-top": { borderBottom: `1px solid ${p.codeBorder}` },
      ".cm-panels.cm-panels-bottom": { borderTop: `1px solid ${p.codeBorder}` },
      ".cm-panel.cm-search": { padding: "6px 10px" },
      ".cm-panel.cm-search input, .cm-panel.cm-search button, .cm-panel.cm-search label": { fontSize: "13px" },
      ".cm-textfield": {
        backgroundColor: p.background,
        color: p.text,
        border: `1px solid ${p.codeBorder}`,
        borderRadius: "5px",
        padding: "3px 6px",
      },
      ".cm-button": {
        backgroundImage: "none",
        backgroundColor: p.background,
        color: p.text,
        border: `1px solid ${p.codeBorder}`,
        borderRadius: "5px",
        padding: "3px 10px",
      },
      ".cm-panel.cm-search [name=close]": { color: p.muted, fontSize: "18px" },
      // Blocks decorated line by line (see blockStyles.js).
      ".cm-h1": { fontSize: "1.75em", lineHeight: "1.3", paddingTop: "0.9em !important", paddingBottom: "0.2em !important" },
      ".cm-h2": { fontSize: "1.42em", lineHeight: "1.3", paddingTop: "0.8em !important", paddingBottom: "0.15em !important" },
      ".cm-h3": { fontSize: "1.2em", lineHeight: "1.35", paddingTop: "0.6em !important" },
      ".cm-h4": { fontSize: "1.06em", paddingTop: "0.5em !important" },
      ".cm-h5, .cm-h6": { fontSize: "1em", paddingTop: "0.4em !important" },
      ".cm-codeblock": {
        fontFamily: monospace,
        fontSize: "0.86em",
        backgroundColor: p.codeBackground,
        padding: "0 0.9em !important",
        borderLeft: `1px solid ${p.codeBorder}`,
        borderRight: `1px solid ${p.codeBorder}`,
      },
      ".cm-codeblock-first": { borderTop: `1px solid ${p.codeBorder}`, borderRadius: "6px 6px 0 0", paddingTop: "0.3em !important" },
      ".cm-codeblock-last": { borderBottom: `1px solid ${p.codeBorder}`, borderRadius: "0 0 6px 6px", paddingBottom: "0.3em !important" },
      ".cm-codeblock-first.cm-codeblock-last": { borderRadius: "6px" },
      ".cm-quote": { borderLeft: `3px solid ${p.quote}`, paddingLeft: "0.9em !important", color: p.muted },
      ".cm-frontmatter": { fontFamily: monospace, fontSize: "0.86em", color: p.muted },
      ".cm-table": { fontFamily: monospace, fontSize: "0.9em" },
      // What is drawn away from the caret (see markupHiding.js).
      ".cm-wikilink": { color: p.accent },
      ".cm-bullet::before": { color: `${p.muted} !important` },
      ".cm-task": { borderColor: p.muted },
      ".cm-task.cm-task-checked": { backgroundColor: p.accent, borderColor: p.accent },
      // Formulas and diagrams that do not parse (see math.js and diagrams.js).
      ".cm-math-error, .cm-diagram-message": { color: p.error },
      ".cm-math-error": { fontFamily: monospace, fontSize: "0.9em" },
      ".cm-diagram-source": { fontFamily: monospace, fontSize: "0.86em", color: p.muted },
    },
    { dark },
  );
}

function highlightStyle(p) {
  return HighlightStyle.define([
    // Markdown
    { tag: t.heading1, fontWeight: "700" },
    { tag: [t.heading2, t.heading3], fontWeight: "650" },
    { tag: [t.heading4, t.heading5, t.heading6], fontWeight: "600" },
    { tag: t.heading6, color: p.muted },
    { tag: t.strong, fontWeight: "700" },
    { tag: t.emphasis, fontStyle: "italic" },
    { tag: t.strikethrough, textDecoration: "line-through" },
    { tag: t.processingInstruction, color: p.markup, fontWeight: "400", fontStyle: "normal" },
    { tag: t.monospace, fontFamily: monospace, fontSize: "0.9em", backgroundColor: p.codeBackground, borderRadius: "3px" },
    { tag: t.link, color: p.accent },
    { tag: t.url, color: p.markup, textDecoration: "none" },
    { tag: t.quote, color: p.muted },
    { tag: t.contentSeparator, color: p.markup },
    { tag: t.meta, color: p.meta },
    { tag: t.labelName, color: p.muted },
    { tag: t.character, color: p.markup },
    // Code in fences
    { tag: [t.keyword, t.controlKeyword, t.operatorKeyword, t.modifier], color: p.keyword },
    { tag: [t.string, t.special(t.string), t.regexp], color: p.string },
    { tag: [t.number, t.bool, t.null, t.atom], color: p.number },
    { tag: [t.comment, t.lineComment, t.blockComment, t.docComment], color: p.comment, fontStyle: "italic" },
    { tag: [t.typeName, t.className, t.namespace, t.tagName], color: p.type },
    { tag: [t.function(t.variableName), t.function(t.propertyName), t.macroName], color: p.function },
    { tag: [t.attributeName, t.propertyName], color: p.function },
    { tag: t.invalid, color: p.error },
  ]);
}

export function appearance(name) {
  const dark = name === "dark";
  const palette = dark ? palettes.dark : palettes.light;
  return [editorTheme(palette, dark), documentHighlighting(highlightStyle(palette))];
}
