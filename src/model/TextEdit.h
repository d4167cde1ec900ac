#pragma once

#include "DocumentStatistics.h"

#include <QList>
#include <QString>

// One change the editor made to a text: the code units [from, to) of the text before the change
// replaced by `inserted`. A list of them is one step of the editor's, every position in the text
// as it was before the step, in order and apart.
struct TextEdit
{
    qsizetype from = 0;
    qsizetype to = 0;
    QString inserted;

    friend bool operator==(const TextEdit &, const TextEdit &) = default;

    // Whether `edits` fit a text of `length` code units (in order, apart, inside it) and leave
    // one of `resultLength`: when not, the text they were made on is another one.
    static bool fit(const QList<TextEdit> &edits, qsizetype length, qsizetype resultLength);
    // Whether `edits`, which fit `text`, leave it as it is.
    static bool changeNothing(const QList<TextEdit> &edits, QStringView text);
    // Applies `edits`, which fit `text`, in place, the last first so that the others' positions
    // still hold. `counts`, the text's counts before, follow from the characters around each
    // edit; they are dropped (reset) where an edit has no settled place near it.
    static void apply(const QList<TextEdit> &edits, QString &text,
                      std::optional<DocumentStatistics::Counts> *counts = nullptr);
};
