#pragma once

#include "document/TextSnapshot.h"
#include "platform/Range.h"

/// Where the caret stops in a text: characters as a reader sees them (a base character with
/// its marks, a surrogate pair, an emoji sequence) and words, looked up in a window around
/// the position so that a very long line costs no more than a short one.
///
/// Words are runs of letters, digits, marks and "_", or runs of other visible characters;
/// blanks separate them, and a line end is a stop of its own.
class TextBoundaries
{
public:
    static qsizetype nextCharacter(const TextSnapshot& text, qsizetype position);
    static qsizetype previousCharacter(const TextSnapshot& text, qsizetype position);
    /// One code point back (a surrogate pair is one): what Backspace takes, so that a base
    /// character loses its marks one by one.
    static qsizetype previousCodePoint(const TextSnapshot& text, qsizetype position);
    /// The start of the next word (Ctrl+Right): past the rest of this word and the blanks
    /// after it; at a line's end, the start of the next line.
    static qsizetype nextWord(const TextSnapshot& text, qsizetype position);
    /// The start of this word or of the one before (Ctrl+Left); at a line's start, the end
    /// of the line before.
    static qsizetype previousWord(const TextSnapshot& text, qsizetype position);
    /// The word, the run of blanks or the run of other characters at `position` (what a
    /// double-click selects); the one before it at the end of a run.
    static Range wordRange(const TextSnapshot& text, qsizetype position);
    /// The line holding `position`, with its line feed when it has one (a triple-click).
    static Range lineRange(const TextSnapshot& text, qsizetype position);
};
