#pragma once

#include "platform/ApplicationSettings.h"
#include "platform/DocumentSettings.h"
#include "platform/EditorSettings.h"
#include "platform/SearchSettings.h"
#include "platform/SyntaxColors.h"
#include "platform/WindowSettings.h"

#include <QLatin1StringView>

class UserDefaults;

/// The names of the settings in the store. The names are written out in this one place
/// (and in DefaultValues.plist); everything else names a setting through these.
namespace SettingsKey {
// The application.
extern const QLatin1StringView ShouldOpenUntitledFile;
extern const QLatin1StringView OpenDocumentsInTabs;
extern const QLatin1StringView OpenDefaultsTextEncoding;
extern const QLatin1StringView FirstStartupApplication;

// Documents.
extern const QLatin1StringView DefaultsTextEncoding;
extern const QLatin1StringView DefaultsLineBreaks;
extern const QLatin1StringView PriorityToJapaneseEncoding;
extern const QLatin1StringView UTF8AppendByBOM;
extern const QLatin1StringView SavePanelExtensionHidden;
extern const QLatin1StringView AutosavingDelay;

// Editor panes.
extern const QLatin1StringView DefaultFont;
extern const QLatin1StringView DefaultFontSize;
extern const QLatin1StringView DefaultTabWidth;
extern const QLatin1StringView AutoIndent;
extern const QLatin1StringView AutoIndentBraces;
extern const QLatin1StringView AutoIndentClosingBraces;
extern const QLatin1StringView AutoBraceMatching;
extern const QLatin1StringView UsedChevronsMatching;
extern const QLatin1StringView SpaceTab;
extern const QLatin1StringView CharacterEntity;
extern const QLatin1StringView AutoComplete;
extern const QLatin1StringView DefaultWrapLines;
extern const QLatin1StringView DefaultTextColor;
extern const QLatin1StringView DefaultInsertionPointColor;
extern const QLatin1StringView DefaultBackgroundColor;
extern const QLatin1StringView InvisibleCharacterColor;
extern const QLatin1StringView GutterTextColor;
extern const QLatin1StringView GutterBorderColor;
extern const QLatin1StringView GutterBackgroundColor;
extern const QLatin1StringView NewLineCharacter;
extern const QLatin1StringView TabCharacter;
extern const QLatin1StringView SpaceCharacter;
extern const QLatin1StringView FullwidthSpaceCharacter;

// Windows.
extern const QLatin1StringView ShowGutterView;
extern const QLatin1StringView ShowInvisibleCharacters;
extern const QLatin1StringView AllowSpellChecking;
extern const QLatin1StringView SpellCheckLanguage;
extern const QLatin1StringView UseVerticalforSplitView;
extern const QLatin1StringView SyntaxColouring;
extern const QLatin1StringView DefaultForFileType;
extern const QLatin1StringView DefaultsSyntaxName;

// Syntax colours.
extern const QLatin1StringView BlockwordsColor;
extern const QLatin1StringView KeywordsColor;
extern const QLatin1StringView CommandsColor;
extern const QLatin1StringView ValuesColor;
extern const QLatin1StringView NumbersColor;
extern const QLatin1StringView StringsColor;
extern const QLatin1StringView CharactersColor;
extern const QLatin1StringView PreprocessorColor;
extern const QLatin1StringView CommentsColor;

// Search.
extern const QLatin1StringView SearchReplaceAndFindNext;
extern const QLatin1StringView SearchReplaceAll;
extern const QLatin1StringView SearchCaseSensitive;
extern const QLatin1StringView SearchRegularExpression;
extern const QLatin1StringView SearchPrevious;
extern const QLatin1StringView SearchWholeWord;
extern const QLatin1StringView AllowMultiLineSearching;

// What the editor keeps between runs (not settings of the preferences window).
extern const QLatin1StringView RecentDocumentPaths;
extern const QLatin1StringView RestorableDocuments;
extern const QLatin1StringView RestorableDocumentTabs;
extern const QLatin1StringView OpenPanelFolder;
extern const QLatin1StringView RecentSearchStrings;
extern const QLatin1StringView ScriptAllItems;
} // namespace SettingsKey

/// Every setting as a typed value, in the parts that the objects following them take: the
/// one reading of the settings store by name.
struct PreferencesValues {
    ApplicationSettings application;
    DocumentSettings document;
    EditorSettings editor;
    WindowSettings window;
    SyntaxColors syntaxColors;
    SearchSettings search;

    /// The values `store` holds now: the user's, else the registered ones; a setting with
    /// neither reads as false, 0, empty, or an invalid colour.
    static PreferencesValues read(const UserDefaults& store);

    bool operator==(const PreferencesValues&) const = default;
};
