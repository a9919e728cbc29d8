#pragma once

#include <QColor>
#include <QObject>
#include <QString>
#include <QVariantMap>

class UserDefaults;

/// The application's delegate: registers the defaults and answers the application's
/// questions about launching, re-activation and termination.
class AppDelegate : public QObject
{
    Q_OBJECT

public:
    explicit AppDelegate(QObject* parent = nullptr);

    /// Reads the defaults resource at `resourcePath`, adds the sixteen colours, normalises
    /// `SettingsKey::OpenDefaultsTextEncoding` and registers the result with `defaults`. Returns
    /// false, registering nothing, when the resource is missing or is not a dictionary.
    static bool registerDefaults(const QString& resourcePath, UserDefaults& defaults);
    /// The sixteen colour settings and their colours, in order: the defaults (scheme 0), or
    /// one of the preferences' other colour schemes (1 white on grey, 2 white on black, 3 grey
    /// on white, 4 black on white), which differ in the text, caret and background colours.
    static QList<QPair<QString, QColor>> defaultColors(int scheme = 0);

    /// Archives `object` and stores it under `key` in the dictionary being built.
    static void keyedArchiverOfObject(const QColor& object, const QString& key,
                                      QVariantMap& withDefaults);
    /// Archives `object` and stores it under `key` in the settings store.
    static void keyedArchiverOfObject(const QColor& object, const QString& key,
                                      UserDefaults& withDefaults);

    /// Registers the scripting interface on the session bus and starts watching the Script
    /// folder (once, at launch).
    void applicationDidFinishLaunching();
    bool applicationShouldOpenUntitledFile() const;
    /// Re-activating the running application never opens an untitled document.
    bool applicationShouldHandleReopen(bool hasVisibleWindows) const;
    void applicationWillTerminate();
    /// Opens the scripting interface's description (the Scripts menu's last entry).
    void openScriptDictionary(QObject* sender);

    void openUntitledDocument();
    void openDocument(const QString& path);
};
