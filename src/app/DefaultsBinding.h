#pragma once

#include <QObject>
#include <QString>
#include <QStringList>

#include <functional>
#include <vector>

class ColorWell;
class QCheckBox;
class QComboBox;
class QLineEdit;
class QSpinBox;
class QWidget;

/// Controls bound to settings: each shows the value of its key in the standard store and
/// writes the store as soon as the user changes it.
class DefaultsBinding : public QObject
{
    Q_OBJECT

public:
    explicit DefaultsBinding(QObject* parent = nullptr);

    QCheckBox* checkBox(const QString& title, const QString& key, QWidget* parent = nullptr);
    QSpinBox* spinBox(const QString& key, int minimum, int maximum, QWidget* parent = nullptr);
    QLineEdit* lineEdit(const QString& key, QWidget* parent = nullptr);
    /// A pop-up whose chosen index is the key's integer value.
    QComboBox* indexPopUp(const QStringList& titles, const QString& key, QWidget* parent = nullptr);
    /// A colour well for a colour setting (stored as a colour archive).
    ColorWell* colorWell(const QString& key, QWidget* parent = nullptr);

    /// Shows the store's current values in every bound control.
    void reload();

private:
    std::vector<std::function<void()>> _reloaders;
};
