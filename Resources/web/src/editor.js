// The Markdown editor: CodeMirror set up for documents, and the five calls the host makes.
import { EditorSelection, EditorState, Compartment } from "@codemirror/state";
import {
  EditorView,
  keymap,
  drawSelection,
  dropCursor,
  highlightSpecialChars,
  rectangularSelection,
  crosshairCursor,
} from "@codemirror/view";
import { defaultKeymap, history, historyKeymap, indentWithTab, isolateHistory } from "@codemirror/commands";
import { bracketMatching, indentOnInput } from "@codemirror/language";
import { closeBrackets, closeBracketsKeymap } from "@codemirror/autocomplete";
import { search, searchKeymap } from "@codemirror/search";
import { markdown, markdownLanguage } from "@codemirror/lang-markdown";
import { codeLanguages } from "./codeLanguages.js";

import { appearance } from "./theme.js";
import { blockStyles } from "./blockStyles.js";
import { frontMatter } from "./frontMatter.js";
import { frenchPhrases } from "./phrases.js";
import { wrapSelectionInMarkers } from "./emphasis.js";
import { HeadingIndex, withIds } from "./headings.js";
import { detectLineSeparator, normalizeLineBreaks, splitByteOrderMark } from "./lineBreaks.js";
import { lineChange } from "./lineChange.js";

// Above this size the whole text is sent at most every few hundred milliseconds while typing,
// not on every key: copying a large text per key would make the key wait for it to be painted,
// and the host parse it on its main thread.
const LARGE_DOCUMENT = 200_000;

// Pasted or dropped text takes the document's own line breaks, so a CRLF file stays CRLF.
const pastedLineBreaks = EditorState.transactionFilter.of((tr) => {
  if (!tr.docChanged || !(tr.isUserEvent("input.paste") || tr.isUserEvent("input.drop"))) return tr;
  const separator = tr.startState.lineBreak;
  const specs = [];
  let stray = false;
  let lastTo = 0;
  tr.changes.iterChanges((fromA, toA, _fromB, _toB, inserted) => {
    const text = inserted.sliceString(0, inserted.length, separator);
    const normalized = normalizeLineBreaks(text, separator);
    stray ||= normalized !== text;
    specs.push({ from: fromA, to: toA, insert: normalized });
    lastTo = toA;
  });
  if (!stray) return tr;
  const changes = tr.startState.changes(specs);
  return {
    changes,
    selection: EditorSelection.cursor(changes.mapPos(lastTo, 1)),
    userEvent: tr.isUserEvent("input.drop") ? "input.drop" : "input.paste",
    scrollIntoView: true,
  };
});

export function createEditor(parent, { post }) {
  const theme = new Compartment();
  let themeName = "light";
  let view = null;
  let bom = false;
  let filePath = "";
  let index = null;
  let indexTimer = 0;
  let contentTimer = 0;

  function currentText() {
    return (bom ? "\ufeff" : "") + view.state.sliceDoc(); // joined with the document's own line breaks
  }

  // The text carries the path of its document: text still waiting when another document
  // arrives is sent for the document it belongs to.
  function sendContent() {
    clearTimeout(contentTimer);
    contentTimer = 0;
    post({ type: "contentChanged", markdown: currentText(), path: filePath });
  }

  function sendHeadings() {
    const headings = withIds(index.headings).map(({ id, level, text }) => ({ id, level, text }));
    post({ type: "headingsUpdated", headings });
  }

  // Each loaded text gets its outline posted once. A large one is outlined just after it shows,
  // so that it is on screen at once; typing before then is caught up by the full scan.
  function rebuildIndex() {
    clearTimeout(indexTimer);
    index = null;
    const build = () => {
      index = new HeadingIndex(view.state.doc);
      sendHeadings();
    };
    if (view.state.doc.length < LARGE_DOCUMENT) build();
    else indexTimer = setTimeout(build, 0);
  }

  function onUpdate(update) {
    if (!update.docChanged) return;
    const outlineChanged = index
      ? index.update(update.startState.doc, update.state.doc, update.changes)
      : false;
    if (update.state.doc.length < LARGE_DOCUMENT) {
      sendContent();
    } else if (!contentTimer) {
      contentTimer = setTimeout(sendContent, 300);
    }
    if (outlineChanged) sendHeadings();
  }

  function save() {
    if (contentTimer) sendContent(); // the store must hold the text before it saves
    post({ type: "saveRequested" });
    return true;
  }

  const extensions = () => [
    history(),
    drawSelection(),
    dropCursor(),
    rectangularSelection(),
    crosshairCursor(),
    highlightSpecialChars(),
    EditorView.lineWrapping,
    EditorState.allowMultipleSelections.of(true),
    indentOnInput(),
    bracketMatching(),
    closeBrackets(),
    EditorState.languageData.of(() => [{ closeBrackets: { brackets: ["(", "[", "{", '"'] } }]),
    wrapSelectionInMarkers,
    search({ top: true }),
    markdown({ base: markdownLanguage, codeLanguages, extensions: [frontMatter] }),
    keymap.of([
      { key: "Mod-s", run: save, preventDefault: true },
      ...closeBracketsKeymap,
      ...defaultKeymap,
      ...searchKeymap,
      ...historyKeymap,
      indentWithTab,
    ]),
    EditorState.phrases.of(frenchPhrases),
    // CodeMirror turns the browser's spell checker off; documents want it, in French.
    EditorView.contentAttributes.of({ spellcheck: "true", lang: "fr" }),
    EditorView.editorAttributes.of({ lang: "fr" }),
    blockStyles,
    pastedLineBreaks,
    theme.of(appearance(themeName)),
    EditorView.updateListener.of(onUpdate),
  ];

  function makeState(markdownText) {
    const split = splitByteOrderMark(markdownText);
    bom = split.bom;
    return EditorState.create({
      doc: split.text,
      extensions: [extensions(), EditorState.lineSeparator.of(detectLineSeparator(split.text))],
    });
  }

  // A new document: its text, a fresh undo history, the top of the text in view. Typing not yet
  // sent goes first, for the document it was typed in.
  function load(markdownText, path) {
    if (contentTimer) sendContent();
    filePath = path;
    const state = makeState(markdownText);
    if (view) {
      view.setState(state);
    } else {
      view = new EditorView({ state, parent });
    }
    view.scrollDOM.scrollTop = 0;
    rebuildIndex();
  }

  return {
    init(markdownText, isDark) {
      themeName = isDark ? "dark" : "light";
      load(String(markdownText ?? ""), filePath);
    },

    setContent(markdownText, path) {
      load(String(markdownText ?? ""), String(path ?? ""));
    },

    setTheme(name) {
      themeName = name === "dark" ? "dark" : "light";
      if (view) view.dispatch({ effects: theme.reconfigure(appearance(themeName)) });
    },

    // The document's text changed outside the page (on disk, or a draft taken back): only the
    // lines that differ are replaced, in one change undo can take back, so the view stays where
    // it was wherever the text allows.
    replaceContent(markdownText) {
      if (!view) return;
      const split = splitByteOrderMark(String(markdownText ?? ""));
      clearTimeout(contentTimer);
      contentTimer = 0;
      if (split.bom !== bom || detectLineSeparator(split.text) !== view.state.lineBreak) {
        const top = view.scrollDOM.scrollTop;
        load(String(markdownText ?? ""), filePath);
        view.scrollDOM.scrollTop = top;
        return;
      }
      const change = lineChange(view.state.doc, split.text.split(view.state.lineBreak));
      if (!change) return;
      view.dispatch({
        changes: change,
        userEvent: "input.replace",
        annotations: isolateHistory.of("full"),
      });
    },

    // The keyboard to the text, as a click would give it.
    focus() {
      if (view) view.focus();
    },

    // A save asked for outside the page: the text first, then the request, in one order.
    requestSave() {
      return view ? save() : false;
    },

    insertText(text) {
      if (!view) return;
      const insert = normalizeLineBreaks(String(text ?? ""), view.state.lineBreak);
      view.dispatch(view.state.replaceSelection(insert), { scrollIntoView: true, userEvent: "input.paste" });
      view.focus();
    },

    scrollToHeading(id) {
      if (!view) return;
      if (!index) {
        clearTimeout(indexTimer);
        index = new HeadingIndex(view.state.doc);
        sendHeadings();
      }
      const heading = withIds(index.headings).find((h) => h.id === id);
      if (!heading || heading.line > view.state.doc.lines) return;
      const from = view.state.doc.line(heading.line).from;
      view.dispatch({
        selection: EditorSelection.cursor(from),
        effects: EditorView.scrollIntoView(from, { y: "start", yMargin: 16 }),
      });
      view.focus();
    },

    get view() {
      return view;
    },
  };
}
