#pragma once

/// The search options the search engine starts with; every window's search pane shows and
/// changes them after.
struct SearchSettings {
    bool replaceAndFindNext = false;
    bool replaceAll = false;
    bool caseSensitive = false;
    bool regularExpression = false;
    bool previous = false;
    bool wholeWord = false;
    /// "." and the anchors of a regular expression reach across lines.
    bool allowMultiLine = false;

    bool operator==(const SearchSettings&) const = default;
};
