#pragma once

// How a search reads its query: all off, the query is plain text found without regard to case.
struct SearchOptions
{
    bool caseSensitive = false;
    bool wholeWord = false; // not inside a longer word
    bool regularExpression = false;

    friend bool operator==(const SearchOptions &, const SearchOptions &) = default;
};
