#pragma once

#include <QColor>
#include <QToolButton>

/// A button showing a colour; clicking it lets the user choose another.
class ColorWell : public QToolButton
{
    Q_OBJECT

public:
    explicit ColorWell(QWidget* parent = nullptr);

    QColor color() const { return _color; }
    /// Shows `color` without telling anyone.
    void setColor(const QColor& color);

Q_SIGNALS:
    /// The user chose a colour.
    void colorChosen(const QColor& color);

private:
    void chooseColor();

    QColor _color;
};
