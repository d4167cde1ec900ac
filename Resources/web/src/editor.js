// The Markdown editor: CodeMirror set up for documents, and the calls the host makes.
import { EditorSelection, EditorState, Compartment } from "@codemirror/state";
import {
  EditorView,
  ViewPlugin,
  keymap,
  drawSelection,
  dropCursor,
  highlightSpecialChars,
  rectangularSelection,
  crosshairCursor,
} from "@codemirror/view";
import { defaultKeymap, history, historyKeymap, indentWithTab, isolateHistory } from "@codemirror/commands";
import { bracketMatching, ensureSyntaxTree, indentOnInput, syntaxTreeAvailable } from "@codemirror/language";
import { closeBrackets, closeBracketsKeymap } from "@codemirror/autocomplete";
import { search, searchKeymap } from "@codemirror/search";
import { codeLanguages } from "./codeLanguages.js";
import { markdownSyntax } from "./markdownSyntax.js";

import { appearance } from "./theme.js";
import { blockStyles } from "./blockStyles.js";
import { frenchPhrases } from "./phrases.js";
import { wrapSelectionInMarkers } from "./emphasis.js";
import { completeOutline, outlineBlocks, outlineComplete, outlineField, outlineParser, slugify, withIds } from "./outline.js";
import { linkAt, linkHints } from "./links.js";
import { readFacts, setLinkFacts } from "./linkFacts.js";
import { pictures } from "./pictures.js";
import { LARGE_DOCUMENT, byteOrderMark, documentPath, openFolder, showSource } from "./document.js";
import { tableGrids } from "./tables.js";
import { blockDrawings } from "./blockDrawings.js";
import { formulas } from "./math.js";
import { diagrams } from "./diagrams.js";
import { detectLineSeparator, normalizeLineBreaks, splitByteOrderMark } from "./lineBreaks.js";
import { lineChange } from "./lineChange.js";
import { markupHiding } from "./markupHiding.js";
import { callouts } from "./callouts.js";
import { properties } from "./properties.js";

// The characters a new state's own parse covers, about a screen.
const FIRST_SCREEN = 3000;

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

// A large document's change as the edits of the text the host holds, every position in that
// text before the change, in UTF-16 code units: CodeMirror counts a line break as one, the host's
// text has the document's own (two for CR LF) and the byte-order mark before the first line.
export function editsMessage(update) {
  const before = update.startState;
  const separator = before.lineBreak;
  const extra = separator.length - 1;
  const mark = before.facet(byteOrderMark) ? 1 : 0;
  const at = (pos) => mark + pos + (extra && (before.doc.lineAt(pos).number - 1) * extra);
  const changes = [];
  update.changes.iterChanges((fromA, toA, _fromB, _toB, inserted) => {
    changes.push([at(fromA), at(toA), inserted.sliceString(0, inserted.length, separator)]);
  });
  const { doc } = update.state;
  const length = mark + doc.length + (doc.lines - 1) * extra;
  return { type: "contentEdited", changes, length, path: update.state.facet(documentPath) };
}

function outlineMessage(state) {
  const headings = withIds(state.field(outlineField).headings.toArray()).map(({ id, level, text }) => ({ id, level, text }));
  return { type: "headingsUpdated", headings };
}

export function createEditor(parent, { post }) {
  const theme = new Compartment();
  // The open folder, which the page is told of apart from the documents.
  const folderSetting = new Compartment();
  // The path of the document shown, which a rename on the host changes in place.
  const pathSetting = new Compartment();
  // Every line as source, or the markup away from the caret; the host's choice for all documents.
  const sourceSetting = new Compartment();
  let sourceShown = false;
  let folder = "";
  let themeName = "light";
  let view = null;

  // The whole text, as the host holds it: the byte-order mark, and the lines joined with the
  // document's own line breaks. The text carries the path of its document.
  function sendContent(state = view.state) {
    const markdown = (state.facet(byteOrderMark) ? "\ufeff" : "") + state.sliceDoc();
    post({ type: "contentChanged", markdown, path: state.facet(documentPath) });
  }

  // What the page posts as the document changes: its text (a large one as its edits), then its
  // outline. The outline goes once for each loaded text, as far as it is parsed, then whenever a
  // heading is added, removed or changed, once it holds the whole document.
  const poster = ViewPlugin.fromClass(
    class {
      constructor(editorView) {
        post(outlineMessage(editorView.state));
        this.waiting = false;
      }

      update(update) {
        if (update.docChanged) {
          if (update.state.doc.length < LARGE_DOCUMENT) sendContent(update.state);
          else post(editsMessage(update));
        }
        const outline = update.state.field(outlineField);
        if (outline !== update.startState.field(outlineField) && outline.changed) this.waiting = true;
        if (this.waiting && outlineComplete(update.state)) {
          this.waiting = false;
          post(outlineMessage(update.state));
        }
      }
    },
  );

  // Follows the link at `pos`: a web address opens in the desktop's browser (the host opens the
  // new window's address outside), any other target goes to the host as written.
  function followLinkAt(pos) {
    const link = linkAt(view.state, pos);
    if (!link) return false;
    if (link.address) window.open(link.address, "_blank", "noopener");
    else post({ type: "openLink", target: link.target, path: view.state.facet(documentPath) });
    return true;
  }

  // Every change has been posted as it was made: the store holds what the page shows.
  function save() {
    post({ type: "saveRequested" });
    return true;
  }

  const syntax = markdownSyntax(codeLanguages);
  // Editing as people expect it of a text editor, in French.
  const editingBasics = [
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
    syntax.support,
    outlineBlocks.of(syntax.outlineBlocks),
    keymap.of([
      { key: "Mod-s", run: save, preventDefault: true },
      { key: "Mod-Enter", run: () => followLinkAt(view.state.selection.main.head) },
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
    pastedLineBreaks,
  ];

  // What a document shows beyond its text, each with the state it reads: the outline, pictures,
  // tables, formulas, diagrams and links. Made once for this view, so what they measure outlives
  // a document.
  const documentFeatures = [
    blockStyles,
    outlineField,
    outlineParser,
    pictures(),
    blockDrawings,
    tableGrids,
    formulas,
    diagrams,
    linkHints,
    markupHiding,
    callouts,
    properties,
  ];

  // The host's wiring: what the page posts, and what the host sets apart from the documents.
  const hostWiring = () => [
    poster,
    theme.of(appearance(themeName)),
    folderSetting.of(openFolder.of(folder)),
    sourceSetting.of(showSource.of(sourceShown)),
  ];

  const extensions = () => [editingBasics, documentFeatures, hostWiring()];

  // A text shows at once; CodeMirror parses what is on screen, and the rest follows in idle time.
  function makeState(markdownText, path) {
    const split = splitByteOrderMark(markdownText);
    return EditorState.create({
      doc: split.text,
      extensions: [
        extensions(),
        EditorState.lineSeparator.of(detectLineSeparator(split.text)),
        byteOrderMark.of(split.bom),
        pathSetting.of(documentPath.of(path)),
      ],
    });
  }

  // Where each document was left when another replaced it: the line at the top and the caret.
  const positions = new Map();

  // A new state parses its first screen within 20 ms, which a page whose scripts have not warmed
  // up can overrun on a busy machine: the document would show its raw markup until the idle
  // parse reached it. The first screen gets a quarter of a second instead.
  function withFirstScreenParsed(state) {
    const upto = Math.min(state.doc.length, FIRST_SCREEN);
    if (syntaxTreeAvailable(state, upto) || !ensureSyntaxTree(state, upto, 250)) return state;
    return state.update({}).state; // takes the tree the parse has gone on to
  }

  // A new document: its text, a fresh undo history, the top of the text in view.
  function load(markdownText, path) {
    if (view) {
      const top = view.lineBlockAtHeight(view.scrollDOM.getBoundingClientRect().top - view.documentTop).from;
      positions.set(view.state.facet(documentPath), { top, head: view.state.selection.main.head });
    }
    const state = withFirstScreenParsed(makeState(markdownText, path));
    if (view) {
      view.setState(state);
    } else {
      view = new EditorView({ state, parent });
    }
    view.scrollDOM.scrollTop = 0;
  }

  const currentPath = () => (view ? view.state.facet(documentPath) : "");

  // The host starts the page with init(text) and, when a document is open, setContent(text, path)
  // right after in the same script: the text given to init is shown only if no document follows
  // in that task, so a large document is not loaded twice.
  let initText = null;
  function showInitText() {
    if (initText === null) return;
    const text = initText;
    initText = null;
    load(text, currentPath());
  }

  // The host's calls beyond the two that bring a text: each first shows the text init() brought,
  // when no document followed it.
  const calls = {
    // The folder pictures may be shown from.
    setFolder(path) {
      folder = String(path ?? "").replace(/\/+$/, "");
      if (view) view.dispatch({ effects: folderSetting.reconfigure(openFolder.of(folder)) });
    },

    // What the host found about the links and pictures of the document at `path`; facts about
    // another document than the one shown came too late, and are dropped.
    setLinkFacts(facts, path) {
      if (view && String(path ?? "") === currentPath()) view.dispatch({ effects: setLinkFacts.of(readFacts(facts)) });
    },

    // "Afficher la source": every line as written, or the markup shown only where the caret is.
    setShowSource(shown) {
      sourceShown = shown === true;
      if (view) view.dispatch({ effects: sourceSetting.reconfigure(showSource.of(sourceShown)) });
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
      if (split.bom !== view.state.facet(byteOrderMark) || detectLineSeparator(split.text) !== view.state.lineBreak) {
        const top = view.scrollDOM.scrollTop;
        load(String(markdownText ?? ""), currentPath());
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

    // The host's text no longer matches the page's edits: the whole text, once.
    sendContent() {
      if (view) sendContent();
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
      // An id from the outline, or a heading as a link names it ("#Installation sous Linux").
      const wanted = [String(id ?? ""), slugify(String(id ?? ""))];
      const find = () => {
        const headings = withIds(view.state.field(outlineField).headings.toArray());
        for (const key of wanted) {
          const heading = headings.find((h) => h.id === key);
          if (heading) return heading;
        }
        return null;
      };
      let heading = find();
      if (!heading && !outlineComplete(view.state)) {
        completeOutline(view);
        heading = find();
      }
      if (!heading) return;
      const from = view.state.doc.lineAt(heading.from).from;
      view.dispatch({
        selection: EditorSelection.cursor(from),
        effects: EditorView.scrollIntoView(from, { y: "start", yMargin: 16 }),
      });
      view.focus();
    },

    // Back to where the open document was left, when it was shown before.
    // The document's file was renamed or moved by the host: the same text, undo history and
    // caret, under its new path.
    setDocumentPath(path) {
      if (!view) return;
      const old = currentPath();
      const next = String(path ?? "");
      if (positions.has(old)) positions.set(next, positions.get(old));
      view.dispatch({ effects: pathSetting.reconfigure(documentPath.of(next)) });
    },

    // The line `line` (from 0) at the top of the view, the caret at its start.
    revealLine(line) {
      if (!view) return;
      const doc = view.state.doc;
      const at = doc.line(Math.min(Math.max(0, Number(line) || 0) + 1, doc.lines)).from;
      view.dispatch({
        selection: EditorSelection.cursor(at),
        effects: EditorView.scrollIntoView(at, { y: "start", yMargin: 24 }),
      });
      view.focus();
    },

    // A search hit: [from, to) of the line `line` (from 0) selected, in the middle of the view.
    // The page may hold edits the search did not see: the range stays within the line.
    revealMatch(line, from, to) {
      if (!view) return;
      const doc = view.state.doc;
      const at = doc.line(Math.min(Math.max(0, Number(line) || 0) + 1, doc.lines));
      const clamp = (offset) => at.from + Math.min(Math.max(0, Number(offset) || 0), at.length);
      const anchor = clamp(from);
      const head = Math.max(anchor, clamp(to));
      view.dispatch({
        selection: EditorSelection.range(anchor, head),
        effects: EditorView.scrollIntoView(EditorSelection.range(anchor, head), { y: "center" }),
      });
      view.focus();
    },

    restorePosition() {
      const left = view && positions.get(view.state.facet(documentPath));
      if (!left) return;
      const length = view.state.doc.length;
      view.dispatch({
        selection: EditorSelection.cursor(Math.min(left.head, length)),
        effects: EditorView.scrollIntoView(Math.min(left.top, length), { y: "start", yMargin: 0 }),
      });
    },

    followLinkAt(pos) {
      return view ? followLinkAt(pos) : false;
    },
  };

  const editor = {
    init(markdownText, isDark) {
      themeName = isDark ? "dark" : "light";
      initText = String(markdownText ?? "");
      queueMicrotask(showInitText);
    },

    setContent(markdownText, path) {
      initText = null;
      load(String(markdownText ?? ""), String(path ?? ""));
    },

    get view() {
      showInitText();
      return view;
    },
  };
  for (const [name, call] of Object.entries(calls)) {
    editor[name] = (...args) => {
      showInitText();
      return call(...args);
    };
  }
  return editor;
}
