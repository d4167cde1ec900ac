// Callouts: a quote whose first line is "> [!note] Titre" is drawn as a box, tinted after its
// kind, with its icon and its title (the kind's French name when none is written). "[!note]-"
// starts folded and "[!note]+" unfolded; a click on the title folds or unfolds it, and the caret
// entering a folded callout unfolds it. Only in documents under 200,000 characters: the boxes are
// read from the whole syntax tree on every change.
import { Decoration, EditorView, WidgetType } from "@codemirror/view";
import { StateEffect, StateField } from "@codemirror/state";
import { syntaxTree } from "@codemirror/language";
import { LARGE_DOCUMENT, showSource } from "./document.js";
import { drawnAnew, selectedLines, touches } from "./caretLines.js";
import { hidden } from "./markupHiding.js";
import { lineDecoration } from "./blockStyles.js";
import infoIcon from "bootstrap-icons/icons/info-circle.svg";
import tipIcon from "bootstrap-icons/icons/lightbulb.svg";
import successIcon from "bootstrap-icons/icons/check-circle.svg";
import importantIcon from "bootstrap-icons/icons/exclamation-circle.svg";
import exampleIcon from "bootstrap-icons/icons/list-ul.svg";
import questionIcon from "bootstrap-icons/icons/question-circle.svg";
import warningIcon from "bootstrap-icons/icons/exclamation-triangle.svg";
import cautionIcon from "bootstrap-icons/icons/exclamation-diamond.svg";
import dangerIcon from "bootstrap-icons/icons/exclamation-octagon.svg";
import chevronIcon from "bootstrap-icons/icons/chevron-down.svg";

// Each kind: its title when none is written, its tint and its icon. Other kinds look like a note
// and take their own name as title.
const KINDS = {
  note: ["Remarque", "blue", infoIcon],
  info: ["Info", "blue", infoIcon],
  abstract: ["Résumé", "blue", exampleIcon],
  summary: ["Résumé", "blue", exampleIcon],
  todo: ["À faire", "blue", successIcon],
  tip: ["Astuce", "green", tipIcon],
  hint: ["Astuce", "green", tipIcon],
  success: ["Succès", "green", successIcon],
  important: ["Important", "purple", importantIcon],
  example: ["Exemple", "purple", exampleIcon],
  question: ["Question", "orange", questionIcon],
  faq: ["Question", "orange", questionIcon],
  warning: ["Attention", "orange", warningIcon],
  caution: ["Prudence", "red", cautionIcon],
  danger: ["Danger", "red", dangerIcon],
  error: ["Erreur", "red", dangerIcon],
  bug: ["Bogue", "red", dangerIcon],
  failure: ["Échec", "red", dangerIcon],
  quote: ["Citation", "gray", exampleIcon],
};

const HEAD = /^((?:[ \t]{0,3}>[ \t]?)+)\[!([A-Za-z][\w-]*)\]([+-]?)[ \t]*/;

// What the first line `text` of a quote makes of it, or null when it is a plain quote:
// { kind, title, tone, icon, fold: "" | "+" | "-", head (the length of "> [!kind]- ") }.
export function calloutOf(text) {
  const match = HEAD.exec(text);
  if (!match) return null;
  const kind = match[2].toLowerCase();
  const [name, tone, icon] = KINDS[kind] ?? [match[2][0].toUpperCase() + match[2].slice(1), "blue", infoIcon];
  const written = text.slice(match[0].length).trim();
  return { kind, title: written || name, written: written !== "", tone, icon, fold: match[3], head: match[0].length };
}

// A click on a foldable callout's title folds or unfolds it; the value is the callout's start.
const toggleFold = StateEffect.define({ map: (pos, changes) => changes.mapPos(pos) });

class TitleWidget extends WidgetType {
  constructor(callout) {
    super();
    this.callout = callout;
  }

  eq(other) {
    const a = this.callout;
    const b = other.callout;
    return a.kind === b.kind && a.title === b.title && a.written === b.written && a.fold === b.fold && a.folded === b.folded;
  }

  toDOM(view) {
    const span = document.createElement("span");
    span.className = "cm-callout-head";
    span.setAttribute("aria-hidden", "true");
    const icon = document.createElement("span");
    icon.className = "cm-callout-icon";
    icon.innerHTML = this.callout.icon;
    span.append(icon);
    if (!this.callout.written) {
      const title = document.createElement("span");
      title.className = "cm-callout-title";
      title.textContent = this.callout.title;
      span.append(title);
    }
    if (this.callout.fold) {
      const chevron = document.createElement("span");
      chevron.className = "cm-callout-chevron" + (this.callout.folded ? " cm-callout-folded" : "");
      chevron.innerHTML = chevronIcon;
      span.append(chevron);
      span.style.cursor = "pointer";
      span.addEventListener("mousedown", (event) => {
        event.preventDefault();
        view.dispatch({ effects: toggleFold.of(view.state.doc.lineAt(view.posAtDOM(span)).from) });
      });
    }
    return span;
  }

  ignoreEvent() {
    return true;
  }
}

class FoldedWidget extends WidgetType {
  eq() {
    return true;
  }

  toDOM() {
    const span = document.createElement("span");
    span.className = "cm-callout-more";
    span.setAttribute("aria-hidden", "true");
    span.textContent = " …";
    return span;
  }
}

const titleMark = Decoration.mark({ class: "cm-callout-title" });

function decorate(state, toggled) {
  if (state.doc.length >= LARGE_DOCUMENT || state.facet(showSource)) return Decoration.none;
  const { doc } = state;
  const selected = selectedLines(state);
  const ranges = [];
  syntaxTree(state).iterate({
    enter(node) {
      if (node.name !== "Blockquote") return node.name === "Document" || node.name.endsWith("List") || node.name === "ListItem";
      const first = doc.lineAt(node.from);
      const callout = calloutOf(first.text);
      if (!callout) return false;
      const last = doc.lineAt(Math.max(node.from, node.to - (doc.sliceString(node.to - 1, node.to) === "\n" ? 1 : 0)));
      const inside = touches(selected, state, first.from, last.to);
      callout.folded = callout.fold !== "" && (callout.fold === "-") !== toggled.has(first.from) && last.number > first.number;
      const folded = callout.folded && !inside;
      const end = folded ? first.number : last.number;
      for (let n = first.number; n <= end; n++) {
        let cls = `cm-callout cm-callout-${callout.tone}`;
        if (n === first.number) cls += " cm-callout-first";
        if (n === end) cls += " cm-callout-last";
        ranges.push(lineDecoration(cls).range(doc.line(n).from));
      }
      const onTitle = selected.some(([a, b]) => a <= first.to && b >= first.from);
      if (!onTitle) {
        const head = first.from + callout.head;
        ranges.push(hidden.range(first.from, head));
        ranges.push(Decoration.widget({ widget: new TitleWidget(callout), side: 1 }).range(head));
        if (head < first.to) ranges.push(titleMark.range(head, first.to));
      }
      if (folded) ranges.push(Decoration.replace({ widget: new FoldedWidget() }).range(first.to, last.to));
      return false;
    },
  });
  return Decoration.set(ranges, true);
}

const calloutField = StateField.define({
  create: (state) => ({ toggled: new Set(), decorations: decorate(state, new Set()) }),
  update(value, tr) {
    let toggled = value.toggled;
    if (tr.docChanged && toggled.size) toggled = new Set([...toggled].map((pos) => tr.changes.mapPos(pos)));
    for (const effect of tr.effects) {
      if (!effect.is(toggleFold)) continue;
      toggled = new Set(toggled);
      if (toggled.has(effect.value)) toggled.delete(effect.value);
      else toggled.add(effect.value);
    }
    if (toggled === value.toggled && !drawnAnew(tr.startState, tr.state, tr.docChanged, !!tr.selection)) return value;
    return { toggled, decorations: decorate(tr.state, toggled) };
  },
  provide: (field) => EditorView.decorations.from(field, (value) => value.decorations),
});

const TONES = {
  blue: ["#0a5fc2", "#6cb2ff"],
  green: ["#2f7d32", "#7fce86"],
  purple: ["#7b3fb5", "#c29bf0"],
  orange: ["#b35c00", "#f0a35e"],
  red: ["#c4262e", "#ff8f8f"],
  gray: ["#6e6e73", "#a1a1a6"],
};

const toneStyles = {};
for (const [tone, [light, dark]] of Object.entries(TONES)) {
  toneStyles[`&light .cm-line.cm-callout-${tone}`] = { "--callout": light, "--callout-frame": `${light}4d`, backgroundColor: `${light}12` };
  toneStyles[`&dark .cm-line.cm-callout-${tone}`] = { "--callout": dark, "--callout-frame": `${dark}4d`, backgroundColor: `${dark}1c` };
}

const calloutTheme = EditorView.baseTheme({
  ...toneStyles,
  ".cm-line.cm-callout": {
    borderLeft: "3px solid var(--callout)",
    borderRight: "1px solid var(--callout-frame)",
    paddingLeft: "0.8em !important",
    paddingRight: "0.8em !important",
    color: "inherit",
  },
  ".cm-line.cm-callout-first": {
    borderTop: "1px solid var(--callout-frame)",
    borderTopRightRadius: "6px",
    paddingTop: "0.35em !important",
  },
  ".cm-line.cm-callout-last": {
    borderBottom: "1px solid var(--callout-frame)",
    borderBottomRightRadius: "6px",
    paddingBottom: "0.35em !important",
  },
  ".cm-callout-head": { color: "var(--callout)", fontWeight: "600" },
  ".cm-callout-icon svg, .cm-callout-chevron svg": { width: "0.95em", height: "0.95em", verticalAlign: "-0.12em" },
  ".cm-callout-icon": { marginRight: "0.45em" },
  ".cm-callout-chevron": { display: "inline-block", marginLeft: "0.4em", transition: "transform 0.1s" },
  ".cm-callout-chevron.cm-callout-folded": { transform: "rotate(-90deg)" },
  ".cm-callout-title": { color: "var(--callout)", fontWeight: "600" },
  ".cm-callout-more": { color: "var(--callout)" },
});

export const callouts = [calloutField, calloutTheme];
