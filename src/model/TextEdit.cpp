#include "TextEdit.h"

#include <algorithm>

bool TextEdit::fit(const QList<TextEdit> &edits, qsizetype length, qsizetype resultLength)
{
    qsizetype end = 0;
    qsizetype result = length;
    for (const TextEdit &edit : edits) {
        if (edit.from < end || edit.to < edit.from || edit.to > length)
            return false;
        end = edit.to;
        result += edit.inserted.size() - (edit.to - edit.from);
    }
    return result == resultLength;
}

bool TextEdit::changeNothing(const QList<TextEdit> &edits, QStringView text)
{
    return std::all_of(edits.begin(), edits.end(), [text](const TextEdit &edit) {
        return text.sliced(edit.from, edit.to - edit.from) == edit.inserted;
    });
}

void TextEdit::apply(const QList<TextEdit> &edits, QString &text,
                     std::optional<DocumentStatistics::Counts> *counts)
{
    for (auto edit = edits.rbegin(); edit != edits.rend(); ++edit) {
        std::optional<DocumentStatistics::Span> span;
        if (counts && *counts) {
            span = DocumentStatistics::settledSpan(text, edit->from, edit->to);
            if (span)
                **counts -= DocumentStatistics::count(
                    QStringView(text).sliced(span->start, span->end - span->start));
            else
                counts->reset();
        }
        text.replace(edit->from, edit->to - edit->from, edit->inserted);
        if (span) {
            span->end += edit->inserted.size() - (edit->to - edit->from);
            **counts += DocumentStatistics::count(
                QStringView(text).sliced(span->start, span->end - span->start));
        }
    }
}
