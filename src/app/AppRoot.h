#pragma once

#include "platform/SharedInstance.h"

#include <QString>

#include <memory>

class CompletionManager;
class DocumentController;
class EncodingManager;
class NotificationCenter;
class Preferences;
class PreferencesController;
class RecoveryStore;
class ScriptHost;
class ScriptManager;
class ScriptingService;
class SearchManager;
class SpellChecker;
class SyntaxManager;
class UserDefaults;

/// The composition root: the one place that builds the application's shared objects, in a
/// fixed order (each built after what it uses), and takes them down in the reverse order.
/// The application owns one; the shared accessors (sharedX(), standardUserDefaults(),
/// defaultCenter()) answer with its objects. A root built while another one lives stands in
/// for it until it goes, so a test can run on a settings file of its own.
class AppRoot
{
public:
    /// Builds everything on the settings file at `settingsPath`, with the shipped defaults
    /// registered before anything reads a setting.
    explicit AppRoot(const QString& settingsPath);
    ~AppRoot();
    AppRoot(const AppRoot&) = delete;
    AppRoot& operator=(const AppRoot&) = delete;

    UserDefaults& userDefaults() const { return *_userDefaults; }
    NotificationCenter& notificationCenter() const { return *_notificationCenter; }
    Preferences& preferences() const { return *_preferences; }
    EncodingManager& encodingManager() const { return *_encodingManager; }
    SpellChecker& spellChecker() const { return *_spellChecker; }
    SyntaxManager& syntaxManager() const { return *_syntaxManager; }
    CompletionManager& completionManager() const { return *_completionManager; }
    SearchManager& searchManager() const { return *_searchManager; }
    RecoveryStore& recoveryStore() const { return *_recoveryStore; }
    ScriptManager& scriptManager() const { return *_scriptManager; }
    DocumentController& documentController() const { return *_documentController; }
    ScriptingService& scriptingService() const { return *_scriptingService; }
    PreferencesController& preferencesController() const { return *_preferencesController; }

private:
    // In building order; members go in the reverse order.
    SharedInstance<UserDefaults> _userDefaults;
    SharedInstance<NotificationCenter> _notificationCenter;
    SharedInstance<Preferences> _preferences;
    SharedInstance<EncodingManager> _encodingManager;
    SharedInstance<SpellChecker> _spellChecker;
    SharedInstance<SyntaxManager> _syntaxManager;
    SharedInstance<CompletionManager> _completionManager;
    SharedInstance<SearchManager> _searchManager;
    SharedInstance<RecoveryStore> _recoveryStore;
    SharedInstance<ScriptManager> _scriptManager;
    SharedInstance<DocumentController> _documentController;
    /// What scripts act on: the document controller's documents.
    std::unique_ptr<ScriptHost> _scriptHost;
    SharedInstance<ScriptingService> _scriptingService;
    SharedInstance<PreferencesController> _preferencesController;
};
