#include "app/FontWell.h"

#include "platform/Preferences.h"
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
    // As the text view shows it.
    return Preferences::sharedPreferences().current().editor.font();
}

void FontWell::setFontFeild()
{
    const QFont font = fontOfDefaults();
    const qint64 size = Preferences::sharedPreferences().current().editor.fontSize;
    setText(QStringLiteral("%1 - %2").arg(QFontInfo(font).family()).arg(size));
    setFont(font);
}

void FontWell::closeFontPanel(const QFont& chosen)
{
    UserDefaults& defaults = UserDefaults::standardUserDefaults();
    const double size = chosen.pointSizeF() > 0 ? chosen.pointSizeF() : chosen.pixelSize();
    defaults.setObject(chosen.family(), SettingsKey::DefaultFont);
    defaults.setInteger(qint64(std::trunc(size)), SettingsKey::DefaultFontSize);
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
