#pragma once

#include <QColor>

/// The colours of the nine syntax categories; an invalid colour where the setting holds
/// none.
struct SyntaxColors {
    QColor blockwords;
    QColor keywords;
    QColor commands;
    QColor values;
    QColor numbers;
    QColor strings;
    QColor characters;
    QColor preprocessor;
    QColor comments;

    bool operator==(const SyntaxColors&) const = default;
};
