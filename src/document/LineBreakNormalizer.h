#pragma once

#include <QString>

/// Turns CR LF and CR into LF in a text that arrives in pieces, as
/// EncodingManager::replaceLineBreaks(0, …) does for a whole text: a CR at the end of one
/// piece and an LF at the start of the next are one line break. U+2028, U+2029 and NEL stay
/// as they are.
class LineBreakNormalizer
{
public:
    /// Normalizes the next piece in place.
    void normalize(QString& piece);

private:
    bool _afterCarriageReturn = false;
};
