#pragma once

#include <QString>
#include <QStringView>

#include <optional>

// The figures the editor header shows for a document's text. Each call reads the whole text, so
// they are written to keep up with typing in a 10 MB document.
namespace DocumentStatistics {

// A text's words (pieces between white space) and user-perceived characters.
struct Counts
{
    qsizetype words = 0;
    qsizetype characters = 0;

    Counts &operator+=(const Counts &other)
    {
        words += other.words;
        characters += other.characters;
        return *this;
    }
    Counts &operator-=(const Counts &other)
    {
        words -= other.words;
        characters -= other.characters;
        return *this;
    }
    friend bool operator==(const Counts &, const Counts &) = default;
};

Counts count(QStringView text);

// Where a count can start or stop around [from, to) so that what lies outside counts the same
// whatever replaces the inside: a place after a line break, or after a space or tab followed by
// a character nothing attaches to. Only characters outside [from, to) decide it. Empty when
// none lies within `reach` code units of either end (one line of encoded data, say): the text
// is then best counted whole.
struct Span
{
    qsizetype start = 0;
    qsizetype end = 0;
};
std::optional<Span> settledSpan(QStringView text, qsizetype from, qsizetype to,
                                qsizetype reach = 4096);

// User-perceived characters (grapheme clusters): "é" written as e + U+0301, a flag or a family
// emoji each count once, and so does a CR LF pair.
qsizetype characterCount(QStringView text);
// Minutes to read `words` at 200 words a minute, rounded up, at least 1.
qsizetype readingMinutes(qsizetype words);

QString wordsText(qsizetype words); // "152 mots"
QString charactersText(qsizetype characters); // "1024 car."
QString readingTimeText(qsizetype words); // "~1 min de lecture"

} // namespace DocumentStatistics
