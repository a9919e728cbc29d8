#pragma once

#include <QString>

#include <utility>

class QTextCursor;

/// Where the caret stands, as the status line says it: "Line N, Column M". Lines are the
/// text's lines (a wrapped line is one line); columns count characters from the line's
/// start, a tab or a character outside the Basic Multilingual Plane as one each.
class CaretPosition
{
public:
    /// The caret's line and column, both counted from 1.
    static std::pair<qint64, qint64> lineAndColumn(const QTextCursor& cursor);
    /// "Line N, Column M".
    static QString statusText(const QTextCursor& cursor);
};
