#include "app/FontWell.h"

#include "platform/UserDefaults.h"

#include <QFontDialog>
#include <QFontInfo>
#include <QMouseEvent>

#include <cmath>

FontWell::FontWell(QWidget* parent)
    : QLineEdit(parent)
{
    setReadOnly(true);
    setFocusPolicy(Qt::NoFocus);
    setAlignment(Qt::AlignCenter);
    setCursor(Qt::PointingHandCursor);
    setFontFeild();
}

QFont FontWell::fontOfDefaults()
{
    const UserDefaults& defaults = UserDefaults::standardUserDefaults();
    QFont font(defaults.stringForKey(QStringLiteral("DefaultFont")));
    const qint64 size = defaults.integerForKey(QStringLiteral("DefaultFontSize"));
    // Point sizes are device-independent pixels here, as in the text view.
    font.setPixelSize(size > 0 ? int(size) : 12);
    return font;
}

void FontWell::setFontFeild()
{
    const QFont font = fontOfDefaults();
    const qint64 size =
        UserDefaults::standardUserDefaults().integerForKey(QStringLiteral("DefaultFontSize"));
    setText(QStringLiteral("%1 - %2").arg(QFontInfo(font).family()).arg(size));
    setFont(font);
}

void FontWell::closeFontPanel(const QFont& chosen)
{
    UserDefaults& defaults = UserDefaults::standardUserDefaults();
    const double size = chosen.pointSizeF() > 0 ? chosen.pointSizeF() : chosen.pixelSize();
    defaults.setObject(chosen.family(), QStringLiteral("DefaultFont"));
    defaults.setInteger(qint64(std::trunc(size)), QStringLiteral("DefaultFontSize"));
    setFontFeild();
    Q_EMIT fontChanged();
}

void FontWell::mouseReleaseEvent(QMouseEvent* event)
{
    QLineEdit::mouseReleaseEvent(event);
    if (event->button() == Qt::LeftButton && rect().contains(event->position().toPoint())) {
        openFontPanel();
    }
}

void FontWell::mouseDoubleClickEvent(QMouseEvent* event)
{
    // Only a single click opens the panel.
    event->accept();
}

void FontWell::openFontPanel()
{
    QFontDialog dialog(window());
    dialog.setWindowModality(Qt::WindowModal);
    QFont current = fontOfDefaults();
    current.setPointSize(int(current.pixelSize()));
    dialog.setCurrentFont(current);
    if (dialog.exec() == QDialog::Accepted) {
        closeFontPanel(dialog.selectedFont());
    }
}
