#pragma once

#include <QList>
#include <QTextLayout>

/// What others lay over a TextArea's text without changing it: syntax colours (foreground)
/// and highlights such as search matches (background). The view asks for the lines it shows
/// only, when it lays a line out and each time it paints it, so an answer should be cheap
/// (kept ready by the provider, not computed on the spot).
///
/// Columns are UTF-16 offsets from the start of the line.
class TextFormatProvider
{
public:
    struct LineFormats {
        /// Laid into the line's layout: a change here lays the line out again, so fonts may
        /// change too (bold keywords).
        QList<QTextLayout::FormatRange> foreground;
        /// Painted under the text: only the background brush of each format is used.
        QList<QTextLayout::FormatRange> background;
    };

    virtual ~TextFormatProvider() = default;

    /// The formats of `line`, which starts at `lineStart` and has `lineLength` units.
    virtual LineFormats formatsForLine(qsizetype line, qsizetype lineStart,
                                       qsizetype lineLength) = 0;
};
