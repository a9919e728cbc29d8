#pragma once

#include <QtGlobal>

class QKeyEvent;
class TextArea;

/// The keyboard of a text area: the caret moves by character, word, visual row, line and
/// page (with Shift, the selection follows), the standard editing keys, and the typed text
/// handed to the area's typing hooks.
class TextAreaKeys
{
public:
    /// Whether the area takes `event` rather than leave it to the window's shortcuts.
    static bool takes(const QKeyEvent* event);
    /// Handles a key press; false when the key is none of the area's.
    static bool press(TextArea& area, QKeyEvent* event);
    /// Moves the caret `rows` visual rows down (up when negative), keeping its column as the
    /// arrow keys do, and keeps it in sight.
    static void moveRows(TextArea& area, qsizetype rows);

private:
    static bool navigate(TextArea& area, QKeyEvent* event);
    /// Where the caret goes `rows` visual rows away, at the column it keeps while it moves
    /// up and down.
    static qsizetype verticalTarget(TextArea& area, qsizetype position, qsizetype rows);
};
