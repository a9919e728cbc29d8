#include "app/AppRoot.h"

#include "app/AppDelegate.h"
#include "app/DocumentController.h"
#include "app/PreferencesController.h"
#include "app/ScriptHost.h"
#include "app/ScriptingService.h"
#include "document/EncodingManager.h"
#include "document/RecoveryStore.h"
#include "editor/CompletionManager.h"
#include "editor/TextView.h"
#include "platform/NotificationCenter.h"
#include "platform/Preferences.h"
#include "platform/SpellChecker.h"
#include "platform/UserDefaults.h"
#include "scripts/ScriptManager.h"
#include "search/SearchManager.h"
#include "syntax/SyntaxManager.h"

#include <QThreadPool>

namespace {

std::unique_ptr<UserDefaults> makeUserDefaults(const QString& path)
{
    auto store = std::make_unique<UserDefaults>(path);
    AppDelegate::registerDefaults(QStringLiteral(":/DefaultValues.plist"), *store);
    return store;
}

// Each NotifUpdatePreferences has the settings read once, and each changed part pushed to
// its followers, before anyone else hears of it: connected first, it is answered first.
std::unique_ptr<Preferences> makePreferences(const UserDefaults& store, NotificationCenter& center)
{
    auto preferences = std::make_unique<Preferences>(store);
    QObject::connect(&center, &NotificationCenter::NotifUpdatePreferences, preferences.get(),
                     &Preferences::reload);
    return preferences;
}

} // namespace

AppRoot::AppRoot(const QString& settingsPath)
    : _userDefaults(makeUserDefaults(settingsPath))
    , _notificationCenter(std::make_unique<NotificationCenter>())
    , _preferences(makePreferences(*_userDefaults, *_notificationCenter))
    , _encodingManager(std::make_unique<EncodingManager>())
    , _spellChecker(std::make_unique<SpellChecker>())
    , _syntaxManager(std::make_unique<SyntaxManager>(_preferences->values().syntaxColors))
    , _completionManager(std::make_unique<CompletionManager>())
    , _searchManager(std::make_unique<SearchManager>(_preferences->values().search))
    , _recoveryStore(std::make_unique<RecoveryStore>(RecoveryStore::standardRoot()))
    , _scriptManager(std::make_unique<ScriptManager>(*_userDefaults, *_encodingManager))
    , _documentController(std::make_unique<DocumentController>())
    , _scriptHost(std::make_unique<ScriptHost>(*_documentController))
    , _scriptingService(std::make_unique<ScriptingService>())
    , _preferencesController(std::make_unique<PreferencesController>())
{
    QObject::connect(
        &*_preferences, &Preferences::syntaxColorsChanged, &*_preferences,
        [this](const SyntaxColors& colors) { _syntaxManager->updatePreferences(colors); });
    _scriptManager->setTarget(_scriptHost.get());
}

AppRoot::~AppRoot()
{
    // Windows and their panes go first, while everything they use is still there.
    _documentController->discardAllDocuments();
    // Scripts find no document from here on: the host goes before the controller it reads.
    _scriptManager->setTarget(nullptr);
    _scriptHost.reset();
    // Workers (completion words, function lists, counts) use the managers below.
    QThreadPool::globalInstance()->waitForDone();
    // The settings reach the disk before anything else goes, while the program's folders
    // are certain to be there.
    _userDefaults->synchronize();
}
