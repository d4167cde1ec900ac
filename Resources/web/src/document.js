// What the editor knows of the document it shows, beside its text.
import { Facet } from "@codemirror/state";

// From this size on, work that reads the whole document (sending its text on every key, drawing
// its tables from the whole syntax tree) is more than a key can afford.
export const LARGE_DOCUMENT = 200_000;

// Where the document stands: its path (whose folder relative links start from), and the open
// folder, which the page is told of apart from the documents.
export const documentPath = Facet.define({ combine: (values) => values[0] ?? "" });
export const openFolder = Facet.define({ combine: (values) => values[0] ?? "" });

// Whether the document's bytes start with a byte-order mark, which its text leaves out.
export const byteOrderMark = Facet.define({ combine: (values) => values[0] ?? false });

// Every line shown as written, in every document ("Afficher la source"), instead of the markup
// stepping aside away from the caret.
export const showSource = Facet.define({ combine: (values) => values.some(Boolean) });
