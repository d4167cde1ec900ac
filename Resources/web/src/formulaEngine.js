// The formula bundle (formulas.js), which the page loads the first time a document shows a formula.
import katex from "katex";

window.PagewellFormulaEngine = katex;
