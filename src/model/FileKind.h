#pragma once

#include <QString>
#include <QStringView>

#include <array>

// What a file is by its name, decided here and nowhere else: the tree counts documents, the
// search reads them, links lead to them and pictures show. The naming of a new file is a rule of
// its own (FileSystemService::createNewFile) and does not ask this.
namespace FileKind {

// The extensions of Markdown documents, the one a link may leave out first.
inline constexpr std::array<QStringView, 3> markdownExtensions {u"md", u"markdown", u"mdown"};

// A Markdown document: ".md", ".markdown" or ".mdown", in any case.
bool isMarkdown(QStringView name);
// An SVG picture or a diagram file (".svg", "*.excalidraw*"), which the search also reads.
bool isSvgOrDiagram(QStringView name);
// What the search reads: Markdown documents, SVG pictures and diagrams.
bool isSearched(QStringView name);
// A picture a document can show: PNG, JPEG, GIF, WebP, SVG.
bool isPicture(QStringView name);
// The folder's own introduction, opened first: "README.md" in any case.
bool isReadme(QStringView name);
// `name` without its Markdown extension, as wiki links name documents.
QString withoutMarkdownExtension(const QString &name);

} // namespace FileKind
