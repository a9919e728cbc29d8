#pragma once

#include "platform/Range.h"

#include <QString>

/// An edit worked out from the text alone, for whichever view shows that text to apply as
/// one undo step: what to put where, what to select afterwards, and what to point out once
/// it is in (the "}" that automatic indentation added). `range` is in the text before the
/// edit; `selection` and `shown` are in the text after it.
struct TextEdit {
    Range range;
    QString string;
    Range selection;
    Range shown = Range::notFound();

    bool operator==(const TextEdit&) const = default;
};
