// The diagram bundle (diagrams.js), which the page loads the first time a document has a diagram.
import mermaid from "mermaid";

window.PagewellDiagramEngine = mermaid;
