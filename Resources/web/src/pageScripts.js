// Bundles the page holds only when a document needs them (the diagram and formula libraries),
// loaded once each from beside the page: a script that sets a global, and its style sheet.
const loaded = new Map(); // file → the promise of what it set

// The value the script `file` puts in `window[name]`, once the style sheet `styles` (if any) is in
// as well. Fails with `missing` when a file cannot be read.
export function loadPageScript(file, name, missing, styles = null) {
  let promise = loaded.get(file);
  if (!promise) {
    const load = (element) =>
      new Promise((resolve, reject) => {
        element.onload = resolve;
        element.onerror = () => reject(new Error(missing));
        document.head.append(element);
      });
    const parts = [];
    if (styles) {
      const link = document.createElement("link");
      link.rel = "stylesheet";
      link.href = new URL(styles, document.baseURI).href;
      parts.push(load(link));
    }
    if (!window[name]) {
      const script = document.createElement("script");
      script.src = new URL(file, document.baseURI).href;
      parts.push(load(script));
    }
    promise = Promise.all(parts).then(() => window[name] ?? Promise.reject(new Error(missing)));
    loaded.set(file, promise);
  }
  return promise;
}
