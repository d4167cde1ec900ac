#pragma once

#include <QString>
#include <QStringView>

// The figures the editor header shows for a document's text. Each call reads the whole text, so
// they are written to keep up with typing in a 10 MB document.
namespace DocumentStatistics {

// User-perceived characters (grapheme clusters): "é" written as e + U+0301, a flag or a family
// emoji each count once, and so does a CR LF pair.
qsizetype characterCount(QStringView text);
// Minutes to read `words` at 200 words a minute, rounded up, at least 1.
qsizetype readingMinutes(qsizetype words);

QString wordsText(qsizetype words); // "152 mots"
QString charactersText(qsizetype characters); // "1024 car."
QString readingTimeText(qsizetype words); // "~1 min de lecture"

} // namespace DocumentStatistics
