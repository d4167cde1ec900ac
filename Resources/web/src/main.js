// The page's entry point: the global `window.Pagewell` the host calls, wired to the editor and to
// the message bridge.
import { createBridge } from "./bridge.js";
import { createEditor } from "./editor.js";

const bridge = createBridge(window);
const editor = createEditor(document.getElementById("editor"), { post: (message) => bridge.post(message) });

window.Pagewell = Object.freeze({
  init: (markdown, isDark) => editor.init(markdown, isDark),
  setContent: (markdown, filePath) => editor.setContent(markdown, filePath),
  setTheme: (name) => editor.setTheme(name),
  setShowSource: (shown) => editor.setShowSource(shown),
  insertText: (text) => editor.insertText(text),
  replaceContent: (markdown) => editor.replaceContent(markdown),
  requestSave: () => editor.requestSave(),
  sendContent: () => editor.sendContent(),
  focus: () => editor.focus(),
  scrollToHeading: (id) => editor.scrollToHeading(id),
  restorePosition: () => editor.restorePosition(),
  setFolder: (path) => editor.setFolder(path),
  setLinkFacts: (facts, path) => editor.setLinkFacts(facts, path),
  setDocumentPath: (path) => editor.setDocumentPath(path),
  revealLine: (line) => editor.revealLine(line),
  revealMatch: (line, from, to) => editor.revealMatch(line, from, to),
});
// Read-only access for tests and the developer tools.
Object.defineProperty(window, "__pagewellEditor", { value: editor });

// The page never leaves itself: nothing dropped outside the editor is opened, and no link
// navigates.
for (const type of ["dragover", "drop"]) {
  window.addEventListener(type, (event) => {
    if (!event.defaultPrevented) event.preventDefault();
  });
}
document.addEventListener(
  "click",
  (event) => {
    if (event.target instanceof Element && event.target.closest("a[href]")) event.preventDefault();
  },
  true,
);

// Ctrl+click (Cmd+click) on a link follows it.
document.addEventListener(
  "mousedown",
  (event) => {
    const view = editor.view;
    if (!view || event.button !== 0 || !(event.ctrlKey || event.metaKey)) return;
    const pos = view.posAtCoords({ x: event.clientX, y: event.clientY });
    if (pos != null && editor.followLinkAt(pos)) event.preventDefault();
  },
  true,
);
