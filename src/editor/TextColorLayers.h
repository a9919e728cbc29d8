#pragma once

#include "editor/ColorStore.h"
#include "editor/TextFormatProvider.h"
#include "platform/Range.h"

#include <QList>
#include <QTextCharFormat>

#include <vector>

/// The colours a pane lays over its text without touching it, in three stores: syntax
/// colours, background highlights (search and go-to) and misspelt words. The stores follow
/// edits given as (position, removed, added), so each run keeps covering its characters.
///
/// It knows neither widgets nor the text: a view asks it for the formats of the lines it
/// shows, which costs a look at the runs of those lines only.
class TextColorLayers : public TextFormatProvider
{
public:
    explicit TextColorLayers(qsizetype textLength = 0);

    qsizetype textLength() const { return _syntax.textLength(); }
    /// Drops every colour and takes a new text length.
    void reset(qsizetype textLength);
    /// Follows an edit: `removed` units at `position` were replaced by `added`.
    void contentsChange(qsizetype position, qsizetype removed, qsizetype added);

    ColorStore& syntaxColors() { return _syntax; }
    const ColorStore& syntaxColors() const { return _syntax; }
    ColorStore& backgroundHighlights() { return _background; }
    const ColorStore& backgroundHighlights() const { return _background; }
    ColorStore& misspellings() { return _misspellings; }
    const ColorStore& misspellings() const { return _misspellings; }

    /// Replaces the syntax colours inside `range` by `runs`. Returns the stretch whose
    /// colours changed, empty when the runs were those already there (recolouring the lines
    /// on screen after a key mostly finds what they had).
    Range replaceSyntaxColors(Range range, const std::vector<ColorStore::Run>& runs);
    /// Replaces the misspelt words inside `range` by `words`; whether anything changed.
    bool replaceMisspellings(Range range, const QList<Range>& words);

    /// The formats of the text [lineStart, lineStart + lineLength), columns counted from
    /// lineStart: syntax colours then misspelling underlines in the foreground (overlapping
    /// formats merge, so an underlined word keeps its colour), highlights in the background.
    LineFormats lineFormats(qsizetype lineStart, qsizetype lineLength) const;
    LineFormats formatsForLine(qsizetype line, qsizetype lineStart, qsizetype lineLength) override;

    /// The look of a misspelt word: a red wavy underline.
    static const QTextCharFormat& misspellingFormat();

private:
    ColorStore _syntax;
    ColorStore _background;
    ColorStore _misspellings;
};
