#pragma once

#include <QString>

#include <utility>

class Document;

/// Where the caret stands, as the status line says it: "Line N, Column M". Lines are the
/// text's lines (a wrapped line is one line); columns count characters from the line's
/// start, a tab or a character outside the Basic Multilingual Plane as one each.
class CaretPosition
{
public:
    /// The line and column of the caret at `position` of `text`, both counted from 1.
    static std::pair<qint64, qint64> lineAndColumn(const Document& text, qsizetype position);
    /// "Line N, Column M".
    static QString statusText(const Document& text, qsizetype position);
};
