// The languages of fenced code blocks that get their own highlighting: those documentation folders
// use most. Each is loaded the first time a block names it. Every language the editor knows is
// bundled into the page, and the page's memory grows with it (about 9 MiB for all of them), so
// the list is kept to these; other blocks show as plain code.
import { LanguageDescription, LanguageSupport, StreamLanguage } from "@codemirror/language";

const legacy = (parser) => new LanguageSupport(StreamLanguage.define(parser));

function describe(name, alias, extensions, load) {
  return LanguageDescription.of({ name, alias, extensions, load });
}

export const codeLanguages = [
  describe("JavaScript", ["js", "node", "ecmascript"], ["js", "mjs", "cjs"], () =>
    import("@codemirror/lang-javascript").then((m) => m.javascript()),
  ),
  describe("JSX", ["jsx"], ["jsx"], () => import("@codemirror/lang-javascript").then((m) => m.javascript({ jsx: true }))),
  describe("TypeScript", ["ts"], ["ts", "mts", "cts"], () =>
    import("@codemirror/lang-javascript").then((m) => m.javascript({ typescript: true })),
  ),
  describe("TSX", ["tsx"], ["tsx"], () =>
    import("@codemirror/lang-javascript").then((m) => m.javascript({ jsx: true, typescript: true })),
  ),
  describe("JSON", ["json5"], ["json", "map"], () => import("@codemirror/lang-json").then((m) => m.json())),
  describe("HTML", ["xhtml"], ["html", "htm"], () => import("@codemirror/lang-html").then((m) => m.html())),
  describe("CSS", [], ["css"], () => import("@codemirror/lang-css").then((m) => m.css())),
  describe("XML", ["svg", "rss", "wsdl", "xsd"], ["xml", "xsl", "xsd", "svg"], () =>
    import("@codemirror/lang-xml").then((m) => m.xml()),
  ),
  describe("YAML", ["yml"], ["yaml", "yml"], () => import("@codemirror/lang-yaml").then((m) => m.yaml())),
  describe("Python", ["py"], ["py", "pyw"], () => import("@codemirror/lang-python").then((m) => m.python())),
  describe("SQL", ["sql"], ["sql"], () => import("@codemirror/lang-sql").then((m) => m.sql())),
  describe("C", ["c", "h"], ["c", "h"], () => import("@codemirror/lang-cpp").then((m) => m.cpp())),
  describe("C++", ["cpp", "c++", "cxx", "hpp"], ["cpp", "cc", "cxx", "hpp", "hh"], () =>
    import("@codemirror/lang-cpp").then((m) => m.cpp()),
  ),
  describe("Java", [], ["java"], () => import("@codemirror/lang-java").then((m) => m.java())),
  describe("Go", ["golang"], ["go"], () => import("@codemirror/lang-go").then((m) => m.go())),
  describe("Rust", ["rs"], ["rs"], () => import("@codemirror/lang-rust").then((m) => m.rust())),
  describe("PHP", [], ["php"], () => import("@codemirror/lang-php").then((m) => m.php())),
  describe("Shell", ["bash", "sh", "zsh", "console", "shell-session"], ["sh", "bash"], () =>
    import("@codemirror/legacy-modes/mode/shell").then((m) => legacy(m.shell)),
  ),
  describe("PowerShell", ["ps1", "pwsh"], ["ps1", "psm1"], () =>
    import("@codemirror/legacy-modes/mode/powershell").then((m) => legacy(m.powerShell)),
  ),
  describe("Dockerfile", ["docker"], [], () =>
    import("@codemirror/legacy-modes/mode/dockerfile").then((m) => legacy(m.dockerFile)),
  ),
  describe("TOML", [], ["toml"], () =>
    import("@codemirror/legacy-modes/mode/toml").then((m) => legacy(m.toml)),
  ),
  describe("INI", ["properties", "conf"], ["ini", "properties"], () =>
    import("@codemirror/legacy-modes/mode/properties").then((m) => legacy(m.properties)),
  ),
  describe("Diff", ["patch"], ["diff", "patch"], () =>
    import("@codemirror/legacy-modes/mode/diff").then((m) => legacy(m.diff)),
  ),
  describe("C#", ["csharp", "cs"], ["cs"], () =>
    import("@codemirror/legacy-modes/mode/clike").then((m) => legacy(m.csharp)),
  ),
  describe("Kotlin", ["kt"], ["kt", "kts"], () =>
    import("@codemirror/legacy-modes/mode/clike").then((m) => legacy(m.kotlin)),
  ),
  describe("Ruby", ["rb"], ["rb"], () => import("@codemirror/legacy-modes/mode/ruby").then((m) => legacy(m.ruby))),
];
