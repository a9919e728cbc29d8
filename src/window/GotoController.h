#pragma once

#include <QWidget>

class QLineEdit;
class WindowController;

/// The sidebar's go-to pane: one field for a line description ("12", "3-5", "+2",
/// "10:20:30", "start", "end"). Each edit hands the description to the shared engine;
/// the field's action paints the named lines and steps through them.
class GotoController : public QWidget
{
    Q_OBJECT

public:
    explicit GotoController(WindowController* windowController, QWidget* parent = nullptr);

    QLineEdit* gotoField() const { return _gotoField; }

    /// Hands the field's text to the engine, which starts again at the first component.
    void controlTextDidChange();
    /// Goes to the described lines in the window's main text view, unless its text is empty.
    void gotoLine(QObject* sender);

private:
    WindowController* _windowController;
    QLineEdit* _gotoField;
};
