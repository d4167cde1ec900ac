#pragma once

#include <QString>
#include <QStringView>

#include <string>
#include <string_view>

// Matches a few typed letters against a document's path, as one looks for a file whose name one
// half remembers: the letters in order, not necessarily together, without regard to case or
// accents. A match scores higher when its letters start the name or its words and when they run
// together; every letter in the file name beats a match that needs the folders.
class FuzzyMatcher
{
public:
    // A path or a query folded for matching: lower case, accents dropped, ligatures spelled out
    // (é = e, ç = c, œ = oe, ß = ss). `starts` marks, per folded unit, where a word begins: 2 at
    // the name's or a folder's start, 1 after a space, dash, underscore or dot, or at a capital
    // after a small letter.
    // A folded path where it is stored: many of them lie side by side in one buffer, so that
    // ranking reads memory in order.
    struct View
    {
        std::u16string_view text;
        std::string_view starts;
        qsizetype nameStart = 0; // where the file name begins in `text`
    };
    struct Folded
    {
        std::u16string text;
        std::string starts;
        qsizetype nameStart = 0;

        View view() const { return {text, starts, nameStart}; }
    };
    static Folded fold(QStringView path);

    explicit FuzzyMatcher(QStringView query);

    bool isEmpty() const { return m_query.empty(); }
    // The letters matched, folded, spaces left out: "Ins" and "ins" are the same query.
    const std::u16string &letters() const { return m_query; }
    // The match's score, higher is better, or -1 when the letters are not all there. Matches
    // that lie wholly in the file name score above every match that does not.
    int score(View path) const;
    int score(const Folded &path) const { return score(path.view()); }

    static constexpr int nameTier = 1 << 20;

private:
    int bestAlignment(View path, qsizetype from) const;

    std::u16string m_query;
};
