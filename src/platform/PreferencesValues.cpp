#include "platform/PreferencesValues.h"

#include "platform/ColorArchive.h"
#include "platform/UserDefaults.h"

namespace SettingsKey {

// The application.
Q_CONSTINIT const QLatin1StringView ShouldOpenUntitledFile("ShouldOpenUntitledFile");
Q_CONSTINIT const QLatin1StringView OpenDocumentsInTabs("OpenDocumentsInTabs");
Q_CONSTINIT const QLatin1StringView OpenDefaultsTextEncoding("OpenDefaultsTextEncoding");
Q_CONSTINIT const QLatin1StringView FirstStartupApplication("FirstStartupApplication");

// Documents.
Q_CONSTINIT const QLatin1StringView DefaultsTextEncoding("DefaultsTextEncoding");
Q_CONSTINIT const QLatin1StringView DefaultsLineBreaks("DefaultsLineBreaks");
Q_CONSTINIT const QLatin1StringView PriorityToJapaneseEncoding("PriorityToJapaneseEncoding");
Q_CONSTINIT const QLatin1StringView UTF8AppendByBOM("UTF8AppendByBOM");
Q_CONSTINIT const QLatin1StringView SavePanelExtensionHidden("SavePanelExtensionHidden");
Q_CONSTINIT const QLatin1StringView AutosavingDelay("AutosavingDelay");

// Editor panes.
Q_CONSTINIT const QLatin1StringView DefaultFont("DefaultFont");
Q_CONSTINIT const QLatin1StringView DefaultFontSize("DefaultFontSize");
Q_CONSTINIT const QLatin1StringView DefaultTabWidth("DefaultTabWidth");
Q_CONSTINIT const QLatin1StringView AutoIndent("AutoIndent");
Q_CONSTINIT const QLatin1StringView AutoIndentBraces("AutoIndentBraces");
Q_CONSTINIT const QLatin1StringView AutoIndentClosingBraces("AutoIndentClosingBraces");
Q_CONSTINIT const QLatin1StringView AutoBraceMatching("AutoBraceMatching");
Q_CONSTINIT const QLatin1StringView UsedChevronsMatching("UsedChevronsMatching");
Q_CONSTINIT const QLatin1StringView SpaceTab("SpaceTab");
Q_CONSTINIT const QLatin1StringView CharacterEntity("CharacterEntity");
Q_CONSTINIT const QLatin1StringView AutoComplete("AutoComplete");
Q_CONSTINIT const QLatin1StringView DefaultWrapLines("DefaultWrapLines");
Q_CONSTINIT const QLatin1StringView DefaultTextColor("DefaultTextColor");
Q_CONSTINIT const QLatin1StringView DefaultInsertionPointColor("DefaultInsertionPointColor");
Q_CONSTINIT const QLatin1StringView DefaultBackgroundColor("DefaultBackgroundColor");
Q_CONSTINIT const QLatin1StringView InvisibleCharacterColor("InvisibleCharacterColor");
Q_CONSTINIT const QLatin1StringView GutterTextColor("GutterTextColor");
Q_CONSTINIT const QLatin1StringView GutterBorderColor("GutterBorderColor");
Q_CONSTINIT const QLatin1StringView GutterBackgroundColor("GutterBackgroundColor");
Q_CONSTINIT const QLatin1StringView NewLineCharacter("NewLineCharacter");
Q_CONSTINIT const QLatin1StringView TabCharacter("TabCharacter");
Q_CONSTINIT const QLatin1StringView SpaceCharacter("SpaceCharacter");
Q_CONSTINIT const QLatin1StringView FullwidthSpaceCharacter("FullwidthSpaceCharacter");

// Windows.
Q_CONSTINIT const QLatin1StringView ShowGutterView("ShowGutterView");
Q_CONSTINIT const QLatin1StringView ShowInvisibleCharacters("ShowInvisibleCharacters");
Q_CONSTINIT const QLatin1StringView AllowSpellChecking("AllowSpellChecking");
Q_CONSTINIT const QLatin1StringView SpellCheckLanguage("SpellCheckLanguage");
Q_CONSTINIT const QLatin1StringView UseVerticalforSplitView("UseVerticalforSplitView");
Q_CONSTINIT const QLatin1StringView SyntaxColouring("SyntaxColouring");
Q_CONSTINIT const QLatin1StringView DefaultForFileType("DefaultForFileType");
Q_CONSTINIT const QLatin1StringView DefaultsSyntaxName("DefaultsSyntaxName");

// Syntax colours.
Q_CONSTINIT const QLatin1StringView BlockwordsColor("BlockwordsColor");
Q_CONSTINIT const QLatin1StringView KeywordsColor("KeywordsColor");
Q_CONSTINIT const QLatin1StringView CommandsColor("CommandsColor");
Q_CONSTINIT const QLatin1StringView ValuesColor("ValuesColor");
Q_CONSTINIT const QLatin1StringView NumbersColor("NumbersColor");
Q_CONSTINIT const QLatin1StringView StringsColor("StringsColor");
Q_CONSTINIT const QLatin1StringView CharactersColor("CharactersColor");
Q_CONSTINIT const QLatin1StringView PreprocessorColor("PreprocessorColor");
Q_CONSTINIT const QLatin1StringView CommentsColor("CommentsColor");

// Search.
Q_CONSTINIT const QLatin1StringView SearchReplaceAndFindNext("SearchReplaceAndFindNext");
Q_CONSTINIT const QLatin1StringView SearchReplaceAll("SearchReplaceAll");
Q_CONSTINIT const QLatin1StringView SearchCaseSensitive("SearchCaseSensitive");
Q_CONSTINIT const QLatin1StringView SearchRegularExpression("SearchRegularExpression");
Q_CONSTINIT const QLatin1StringView SearchPrevious("SearchPrevious");
Q_CONSTINIT const QLatin1StringView SearchWholeWord("SearchWholeWord");
Q_CONSTINIT const QLatin1StringView AllowMultiLineSearching("AllowMultiLineSearching");

// What the editor keeps between runs (not settings of the preferences window).
Q_CONSTINIT const QLatin1StringView RecentDocumentPaths("RecentDocumentPaths");
Q_CONSTINIT const QLatin1StringView RestorableDocuments("RestorableDocuments");
Q_CONSTINIT const QLatin1StringView RestorableDocumentTabs("RestorableDocumentTabs");
Q_CONSTINIT const QLatin1StringView OpenPanelFolder("OpenPanelFolder");
Q_CONSTINIT const QLatin1StringView RecentSearchStrings("RecentSearchStrings");
Q_CONSTINIT const QLatin1StringView ScriptAllItems("ScriptAllItems");
} // namespace SettingsKey

namespace {

QColor colorOf(const UserDefaults& store, QLatin1StringView key)
{
    return ColorArchive::unarchive(store.dataForKey(key));
}

} // namespace

PreferencesValues PreferencesValues::read(const UserDefaults& store)
{
    using namespace SettingsKey;
    PreferencesValues values;

    ApplicationSettings& application = values.application;
    application.shouldOpenUntitledFile = store.boolForKey(ShouldOpenUntitledFile);
    application.openDocumentsInTabs = store.boolForKey(OpenDocumentsInTabs);
    application.openDefaultsTextEncoding = store.unsignedIntegerForKey(OpenDefaultsTextEncoding);
    application.firstStartupApplication = store.boolForKey(FirstStartupApplication);

    DocumentSettings& document = values.document;
    document.defaultsTextEncoding = store.unsignedIntegerForKey(DefaultsTextEncoding);
    document.defaultsLineBreaks = store.integerForKey(DefaultsLineBreaks);
    document.priorityToJapaneseEncoding = store.boolForKey(PriorityToJapaneseEncoding);
    document.UTF8AppendByBOM = store.boolForKey(UTF8AppendByBOM);
    document.savePanelExtensionHidden = store.boolForKey(SavePanelExtensionHidden);
    document.autosavingDelay = store.integerForKey(AutosavingDelay);

    EditorSettings& editor = values.editor;
    editor.fontName = store.stringForKey(DefaultFont);
    editor.fontSize = store.integerForKey(DefaultFontSize);
    editor.tabWidth = store.integerForKey(DefaultTabWidth);
    editor.autoIndent = store.boolForKey(AutoIndent);
    editor.autoIndentBraces = store.boolForKey(AutoIndentBraces);
    editor.autoIndentClosingBraces = store.boolForKey(AutoIndentClosingBraces);
    editor.autoBraceMatching = store.boolForKey(AutoBraceMatching);
    editor.usedChevronsMatching = store.boolForKey(UsedChevronsMatching);
    editor.spaceTab = store.boolForKey(SpaceTab);
    editor.characterEntity = store.boolForKey(CharacterEntity);
    editor.autoComplete = store.boolForKey(AutoComplete);
    editor.wrapLines = store.boolForKey(DefaultWrapLines);
    editor.textColor = colorOf(store, DefaultTextColor);
    editor.insertionPointColor = colorOf(store, DefaultInsertionPointColor);
    editor.backgroundColor = colorOf(store, DefaultBackgroundColor);
    editor.invisibleCharacterColor = colorOf(store, InvisibleCharacterColor);
    editor.gutterTextColor = colorOf(store, GutterTextColor);
    editor.gutterBorderColor = colorOf(store, GutterBorderColor);
    editor.gutterBackgroundColor = colorOf(store, GutterBackgroundColor);
    editor.newLineCharacter = store.stringForKey(NewLineCharacter);
    editor.tabCharacter = store.stringForKey(TabCharacter);
    editor.spaceCharacter = store.stringForKey(SpaceCharacter);
    editor.fullwidthSpaceCharacter = store.stringForKey(FullwidthSpaceCharacter);

    WindowSettings& window = values.window;
    window.showGutterView = store.boolForKey(ShowGutterView);
    window.showInvisibleCharacters = store.boolForKey(ShowInvisibleCharacters);
    window.allowSpellChecking = store.boolForKey(AllowSpellChecking);
    window.spellCheckLanguage = store.stringForKey(SpellCheckLanguage);
    window.useVerticalforSplitView = store.boolForKey(UseVerticalforSplitView);
    window.syntaxColouring = store.boolForKey(SyntaxColouring);
    window.defaultForFileType = store.boolForKey(DefaultForFileType);
    window.defaultsSyntaxName = store.stringForKey(DefaultsSyntaxName);

    SyntaxColors& colors = values.syntaxColors;
    colors.blockwords = colorOf(store, BlockwordsColor);
    colors.keywords = colorOf(store, KeywordsColor);
    colors.commands = colorOf(store, CommandsColor);
    colors.values = colorOf(store, ValuesColor);
    colors.numbers = colorOf(store, NumbersColor);
    colors.strings = colorOf(store, StringsColor);
    colors.characters = colorOf(store, CharactersColor);
    colors.preprocessor = colorOf(store, PreprocessorColor);
    colors.comments = colorOf(store, CommentsColor);

    SearchSettings& search = values.search;
    search.replaceAndFindNext = store.boolForKey(SearchReplaceAndFindNext);
    search.replaceAll = store.boolForKey(SearchReplaceAll);
    search.caseSensitive = store.boolForKey(SearchCaseSensitive);
    search.regularExpression = store.boolForKey(SearchRegularExpression);
    search.previous = store.boolForKey(SearchPrevious);
    search.wholeWord = store.boolForKey(SearchWholeWord);
    search.allowMultiLine = store.boolForKey(AllowMultiLineSearching);
    return values;
}
