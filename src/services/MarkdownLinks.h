#pragma once

#include <QList>
#include <QStringView>

#include <functional>

// Where a Markdown text points: the destination of every link, reference definition, wiki link
// and picture, by its place in the text, so that it can be read or rewritten without touching
// any other byte. Nothing inside code is a link: fenced and indented code blocks and inline code
// spans are passed over, as a Markdown reader shows them.
namespace MarkdownLinks {

enum class Form : quint8 {
    Inline, // [text](destination "title"), ![alt](destination)
    Definition, // [label]: destination "title"
    Wiki, // [[Name#Heading|alias]], ![[picture.png]]: the span is what stands between the brackets
    Html, // <img src="destination">
};

struct Span
{
    Form form;
    bool picture;
    int line; // from 0
    qsizetype start; // of the destination as written, "<...>" included
    qsizetype length;

    friend bool operator==(const Span &, const Span &) = default;
};

QList<Span> scan(QStringView text);
// The same reading over UTF-8 bytes, for a whole folder's worth of documents: only lines that may
// hold a link are decoded; `found` gets each such line with its spans (offsets in that line).
void scanUtf8(
    QByteArrayView text,
    const std::function<void(int line, QStringView lineText, const QList<Span> &spans)> &found);

// The line of the text holding `position`, without its line ending.
QStringView lineAt(QStringView text, qsizetype position);

} // namespace MarkdownLinks
