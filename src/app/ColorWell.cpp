#include "app/ColorWell.h"

#include <QColorDialog>
#include <QPainter>
#include <QPixmap>

ColorWell::ColorWell(QWidget* parent)
    : QToolButton(parent)
{
    setIconSize(QSize(36, 14));
    setAutoRaise(false);
    connect(this, &QToolButton::clicked, this, &ColorWell::chooseColor);
}

void ColorWell::setColor(const QColor& color)
{
    _color = color;
    QPixmap swatch(iconSize());
    swatch.fill(color.isValid() ? color : QColor(Qt::transparent));
    QPainter painter(&swatch);
    painter.setPen(palette().color(QPalette::Mid));
    painter.drawRect(swatch.rect().adjusted(0, 0, -1, -1));
    painter.end();
    setIcon(QIcon(swatch));
    setToolTip(color.isValid() ? color.name(QColor::HexArgb) : QString());
}

void ColorWell::chooseColor()
{
    const QColor chosen =
        QColorDialog::getColor(_color, window(), QString(), QColorDialog::ShowAlphaChannel);
    if (chosen.isValid()) {
        setColor(chosen);
        Q_EMIT colorChosen(chosen);
    }
}
