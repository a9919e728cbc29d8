#pragma once

#include <QString>
#include <QVariant>

class QInputMethodEvent;
class TextArea;

/// Input methods in a text area: pre-edit text is shown at the caret, underlined, without
/// entering the text; committed text is typed. The queries see the caret's line (a window
/// of it around the caret when it is long).
class TextAreaInputMethod
{
public:
    static void event(TextArea& area, QInputMethodEvent* event);
    static QVariant query(const TextArea& area, Qt::InputMethodQuery query);
    /// Ends a composition by having the input method commit it.
    static void commit(TextArea& area);
    /// Shows `text` grey at `position` the way a composition is shown, outside the text.
    static void propose(TextArea& area, qsizetype position, const QString& text);
};
