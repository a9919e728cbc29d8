#pragma once

#include "editor/TypingRules.h"
#include "platform/Range.h"

#include <QString>

#include <functional>

class QKeyEvent;
class TextSource;
class TextView;
class TextViewCompletion;

/// The keyboard of a text view: each key goes to completion first, then to one of the view's
/// typing commands (Return, Tab, Backspace, Escape, the arrows, typed text), else to
/// the text area's own handling. The commands run the typing rules on the view's insertion
/// point and show what the rules ask for: the opening bracket of a typed closing one, or a
/// beep when there is none.
class TextViewKeys
{
public:
    TextViewKeys(TextView& view, TextViewCompletion& completion);

    /// A key pressed in the view; `base` is the text area's own handling, for the keys that
    /// are none of the view's.
    void keyPressed(QKeyEvent* event, const std::function<void(QKeyEvent*)>& base);

    // The view's typing commands.
    void insertNewline();
    void autoIndent();
    void insertTab();
    void deleteBackward();
    void cancelOperation();
    void moveUp();
    void moveDown();
    void insertText(const QString& string);
    Range autoBraceMatching(const QString& closing) const;

private:
    void interpretKeyEvent(QKeyEvent* event, const std::function<void(QKeyEvent*)>& base);
    /// Shows the "}" that automatic indentation put in.
    void closingBraceInserted(Range closing);
    TypingRules rules() const;
    /// The view's text as the rules read it.
    TextSource& text() const;

    TextView& _view;
    TextViewCompletion& _completion;
};
