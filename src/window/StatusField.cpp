#include "window/StatusField.h"

StatusField::StatusField(QWidget* parent)
    : QLabel(parent)
{}

void StatusField::enterEvent(QEnterEvent* event)
{
    setTextInteractionFlags(Qt::TextSelectableByMouse);
    QLabel::enterEvent(event);
}

void StatusField::leaveEvent(QEvent* event)
{
    // A selection stays until the text changes or the user clicks elsewhere.
    if (!hasSelectedText()) {
        setTextInteractionFlags(Qt::NoTextInteraction);
    }
    QLabel::leaveEvent(event);
}
