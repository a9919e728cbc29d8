#pragma once

#include <QFont>
#include <QLineEdit>

/// The editor font's field in the preferences window: it shows "name - size" in that font,
/// and a click opens the font dialog, whose choice becomes `SettingsKey::DefaultFont` and
/// `SettingsKey::DefaultFontSize`.
class FontWell : public QLineEdit
{
    Q_OBJECT

public:
    explicit FontWell(QWidget* parent = nullptr);

    /// Shows the font of the settings, in that font.
    void setFontFeild();
    /// Stores `chosen`: its family in `SettingsKey::DefaultFont`, its size truncated to whole
    /// points in `SettingsKey::DefaultFontSize`; then refreshes the field.
    void closeFontPanel(const QFont& chosen);
    /// The font the settings name.
    static QFont fontOfDefaults();

Q_SIGNALS:
    void fontChanged();

protected:
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;

private:
    void openFontPanel();
};
