#pragma once

#include <QLabel>

/// The status line's text: selectable with the mouse like any label's, but only while the
/// pointer is over it. A selectable label keeps a whole text document behind it and lays it
/// out again on every change, and the status text changes with every key; a plain label
/// draws the same pixels for a fraction of that.
class StatusField : public QLabel
{
    Q_OBJECT

public:
    explicit StatusField(QWidget* parent = nullptr);

protected:
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;
};
