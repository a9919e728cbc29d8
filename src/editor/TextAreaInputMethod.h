#pragma once

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
};
