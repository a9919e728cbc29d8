#pragma once

#include "platform/Range.h"
#include "syntax/SyntaxColoring.h"

#include <QString>
#include <QVariantMap>

#include <vector>

/// The colouring pass written out step by step with the scanner and a fresh regular
/// expression per entry: slow and obvious, the model the engine is held to. It paints into
/// one cell per character of the whole text, the way the layout's colour store would.
namespace ReferenceColoring {

inline constexpr int Untouched = -1;
inline constexpr int Cleared = -2;

/// Colours `range` of `text` over `cells` (one per character; Untouched everywhere when
/// empty) and returns the cells.
std::vector<int> color(const QVariantMap& dictionary, const QString& text, Range range,
                       std::vector<int> cells = {});

/// The painted cells as sorted runs (cleared and untouched cells are left out).
std::vector<SyntaxColoring::Run> runs(const std::vector<int>& cells);

} // namespace ReferenceColoring
