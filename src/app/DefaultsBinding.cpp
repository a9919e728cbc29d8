#include "app/DefaultsBinding.h"

#include "app/ColorWell.h"
#include "platform/ColorArchive.h"
#include "platform/UserDefaults.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QSignalBlocker>
#include <QSpinBox>

namespace {

UserDefaults& store()
{
    return UserDefaults::standardUserDefaults();
}

} // namespace

DefaultsBinding::DefaultsBinding(QObject* parent)
    : QObject(parent)
{}

void DefaultsBinding::reload()
{
    for (const auto& reloader : _reloaders) {
        reloader();
    }
}

QCheckBox* DefaultsBinding::checkBox(const QString& title, const QString& key, QWidget* parent)
{
    auto* box = new QCheckBox(title, parent);
    box->setObjectName(key);
    _reloaders.push_back([box, key] {
        const QSignalBlocker blocker(box);
        box->setChecked(store().boolForKey(key));
    });
    _reloaders.back()();
    connect(box, &QCheckBox::toggled, this, [key](bool on) { store().setBool(on, key); });
    return box;
}

QSpinBox* DefaultsBinding::spinBox(const QString& key, int minimum, int maximum, QWidget* parent)
{
    auto* spin = new QSpinBox(parent);
    spin->setObjectName(key);
    spin->setRange(minimum, maximum);
    _reloaders.push_back([spin, key] {
        const QSignalBlocker blocker(spin);
        spin->setValue(int(store().integerForKey(key)));
    });
    _reloaders.back()();
    connect(spin, &QSpinBox::valueChanged, this,
            [key](int value) { store().setInteger(value, key); });
    return spin;
}

QLineEdit* DefaultsBinding::lineEdit(const QString& key, QWidget* parent)
{
    auto* edit = new QLineEdit(parent);
    edit->setObjectName(key);
    _reloaders.push_back([edit, key] {
        const QSignalBlocker blocker(edit);
        edit->setText(store().stringForKey(key));
    });
    _reloaders.back()();
    connect(edit, &QLineEdit::textEdited, this,
            [key](const QString& text) { store().setObject(text, key); });
    return edit;
}

QComboBox* DefaultsBinding::indexPopUp(const QStringList& titles, const QString& key,
                                       QWidget* parent)
{
    auto* popUp = new QComboBox(parent);
    popUp->setObjectName(key);
    popUp->addItems(titles);
    _reloaders.push_back([popUp, key] {
        const QSignalBlocker blocker(popUp);
        popUp->setCurrentIndex(int(store().integerForKey(key)));
    });
    _reloaders.back()();
    connect(popUp, &QComboBox::activated, this,
            [key](int index) { store().setInteger(index, key); });
    return popUp;
}

ColorWell* DefaultsBinding::colorWell(const QString& key, QWidget* parent)
{
    auto* well = new ColorWell(parent);
    well->setObjectName(key);
    _reloaders.push_back(
        [well, key] { well->setColor(ColorArchive::unarchive(store().dataForKey(key))); });
    _reloaders.back()();
    connect(well, &ColorWell::colorChosen, this, [key](const QColor& color) {
        store().setObject(ColorArchive::archivedData(color), key);
    });
    return well;
}
