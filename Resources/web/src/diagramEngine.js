// The diagram bundle (diagrams.js), which the page loads the first time a document has a diagram:
// mermaid, and what it expects of a newer script engine than the web view's.
import "./engineGaps.js";
import mermaid from "mermaid";

window.PagewellDiagramEngine = mermaid;
