#pragma once

#include "platform/PreferencesValues.h"

#include <QObject>

class UserDefaults;

/// The settings as typed values, for whatever follows them: read from the settings store
/// when the application starts and again once per NotifUpdatePreferences, each part pushed
/// to its followers only when it changed.
class Preferences : public QObject
{
    Q_OBJECT

public:
    /// The preferences of the application's root.
    static Preferences& sharedPreferences();

    /// Reads `store` now.
    explicit Preferences(const UserDefaults& store, QObject* parent = nullptr);

    /// The values of the last reading.
    const PreferencesValues& values() const { return _values; }
    /// The values the store holds now. An object made while the preferences window is open
    /// starts from them; the objects made before take them up when the window closes.
    PreferencesValues current() const;

    /// Reads the store again, tells the followers of each part that changed, then everyone
    /// that a reading took place.
    void reload();

Q_SIGNALS:
    void applicationSettingsChanged(const ApplicationSettings& settings);
    void documentSettingsChanged(const DocumentSettings& settings);
    void editorSettingsChanged(const EditorSettings& settings);
    void syntaxColorsChanged(const SyntaxColors& colors);
    /// After every reading, changed or not: windows set their toggles back to the settings
    /// and read their syntax definitions again.
    void reloaded(const PreferencesValues& values);

private:
    const UserDefaults& _store;
    PreferencesValues _values;
};
