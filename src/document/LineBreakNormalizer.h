#pragma once

#include <QString>
#include <QStringView>

/// Turns CR LF and CR into LF in a text that arrives in pieces, as
/// EncodingManager::replaceLineBreaks(0, …) does for a whole text, and notes the file's
/// style as EncodingManager::scanLineBreaks does: a CR at the end of one piece and an LF at
/// the start of the next are one line break. U+2028, U+2029 and NEL stay as they are.
class LineBreakNormalizer
{
public:
    /// Normalizes the next piece in place.
    void normalize(QString& piece);
    /// Whether the next piece, as it is, has nothing to normalize (no CR, and no LF that
    /// completes a CR before it); notes its line feeds.
    bool isNormal(QStringView piece);
    /// The style of what went through: 2 when it held a CR LF, else 1 when it held a CR,
    /// else 0 when it held an LF, else NSNotFound.
    qsizetype lineBreaks() const;

private:
    bool _afterCarriageReturn = false;
    bool _sawCarriageReturnLineFeed = false;
    bool _sawCarriageReturn = false;
    bool _sawLineFeed = false;
};
