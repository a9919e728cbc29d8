#include "platform/Preferences.h"

#include "platform/SharedInstance.h"

Preferences& Preferences::sharedPreferences()
{
    return SharedInstance<Preferences>::object();
}

Preferences::Preferences(const UserDefaults& store, QObject* parent)
    : QObject(parent)
    , _store(store)
    , _values(PreferencesValues::read(store))
{}

PreferencesValues Preferences::current() const
{
    return PreferencesValues::read(_store);
}

void Preferences::reload()
{
    const PreferencesValues previous = std::exchange(_values, current());
    if (_values.application != previous.application) {
        Q_EMIT applicationSettingsChanged(_values.application);
    }
    if (_values.syntaxColors != previous.syntaxColors) {
        Q_EMIT syntaxColorsChanged(_values.syntaxColors);
    }
    if (_values.document != previous.document) {
        Q_EMIT documentSettingsChanged(_values.document);
    }
    if (_values.editor != previous.editor) {
        Q_EMIT editorSettingsChanged(_values.editor);
    }
    Q_EMIT reloaded(_values);
}
