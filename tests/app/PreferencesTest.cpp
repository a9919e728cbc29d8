// The settings as typed values: every setting of the store is read into its part, a change
// is pushed once per NotifUpdatePreferences to the objects that follow that part, and a
// reading that finds nothing changed pushes nothing.
#include "platform/Preferences.h"

#include "TestSupport.h"
#include "app/AppDelegate.h"
#include "app/Application.h"
#include "app/DocumentController.h"
#include "editor/GutterView.h"
#include "editor/LayoutManager.h"
#include "editor/SpellCheckingController.h"
#include "editor/TextView.h"
#include "platform/ColorArchive.h"
#include "platform/UserDefaults.h"
#include "syntax/SyntaxManager.h"
#include "window/DocumentWindow.h"
#include "window/WindowController.h"

#include <QSplitter>
#include <QTest>

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <numeric>
#include <vector>

namespace {

/// Which push a change of a setting makes; None for the settings read only when something
/// starts (the application, a window, a pane, a document).
enum class Part { None, Application, Document, Editor, SyntaxColors };

/// What follows the settings: a window opened before the change, and windows opened after it.
struct Followers {
    AppRoot& root;
    WindowController* window;

    TextView* view() const { return window->textView(); }
    Document* document() const { return window->document(); }
    const PreferencesValues& values() const { return root.preferences().values(); }
    WindowController* fresh() const
    {
        DocumentController& documents = root.documentController();
        return documents.windowControllerOf(documents.newDocument());
    }
    /// What the pane shows at `point` of its view (the gutter is at the left).
    QColor pixel(QPoint point) const { return view()->grab().toImage().pixelColor(point); }
};

struct Row {
    const char* key;
    QVariant stored;
    QVariant expected;
    Part part;
    std::function<QVariant(const Followers&)> shown;
};

QVariant color(int red, int green, int blue)
{
    return ColorArchive::archivedData(QColor(red, green, blue));
}

QVariant syntaxColor(const Followers& f, SyntaxColoring::Category category)
{
    return f.root.syntaxManager().colorForCategory(category);
}

/// How many pushes of each part (indexed by Part), and readings, took place while it lives.
struct Pushes {
    std::array<int, 5> of{};
    int readings = 0;
    QObject context;

    explicit Pushes(Preferences& preferences)
    {
        const auto count = [this](Part part) { return [this, part] { ++of[int(part)]; }; };
        QObject::connect(&preferences, &Preferences::applicationSettingsChanged, &context,
                         count(Part::Application));
        QObject::connect(&preferences, &Preferences::documentSettingsChanged, &context,
                         count(Part::Document));
        QObject::connect(&preferences, &Preferences::editorSettingsChanged, &context,
                         count(Part::Editor));
        QObject::connect(&preferences, &Preferences::syntaxColorsChanged, &context,
                         count(Part::SyntaxColors));
        QObject::connect(&preferences, &Preferences::reloaded, &context, [this] { ++readings; });
    }
    int total() const { return std::accumulate(of.begin(), of.end(), 0); }
};

void postUpdatePreferences()
{
    Application::instance()->postUpdatePreferences(nullptr);
}

} // namespace

TEST(Preferences, EverySettingIsReadPushedOnceWhenChangedAndFollowed)
{
    using C = SyntaxColoring;
    std::vector<Row> rows = {
        // The application: its start, the open panel and where documents go.
        {"ShouldOpenUntitledFile", false, false, Part::Application,
         [](const Followers&) {
             return Application::instance()->delegate().applicationShouldOpenUntitledFile();
         }},
        {"OpenDocumentsInTabs", true, true, Part::Application,
         [](const Followers& f) { return f.values().application.openDocumentsInTabs; }},
        {"OpenDefaultsTextEncoding", 8, quint64(8), Part::Application,
         [](const Followers& f) { return f.root.documentController().openDefaultsTextEncoding(); }},
        {"FirstStartupApplication", false, false, Part::Application,
         [](const Followers& f) { return f.values().application.firstStartupApplication; }},
        // Documents: a new one starts from the encoding and line breaks, an open one follows
        // the rest.
        {"DefaultsTextEncoding", 10, quint64(10), Part::Document,
         [](const Followers& f) { return f.fresh()->document()->documentEncoding(); }},
        {"DefaultsLineBreaks", 2, qsizetype(2), Part::Document,
         [](const Followers& f) { return f.fresh()->document()->documentLineBreaks(); }},
        {"PriorityToJapaneseEncoding", true, true, Part::Document,
         [](const Followers& f) {
             return f.document()->documentSettings().priorityToJapaneseEncoding;
         }},
        {"UTF8AppendByBOM", true, true, Part::Document,
         [](const Followers& f) { return f.document()->documentSettings().UTF8AppendByBOM; }},
        {"SavePanelExtensionHidden", true, true, Part::Document,
         [](const Followers& f) { return f.document()->savePanelExtensionHidden(); }},
        // The autosave delay is read when the application starts (see below).
        {"AutosavingDelay", 45, qint64(45), Part::Document,
         [](const Followers&) { return DocumentController().autosavingDelay(); }},
        // Panes: the open ones follow the font, the colours, the marks and the typing rules;
        // the window sets the toggles back; tab width and entities are a new pane's.
        {"DefaultFont", "DejaVu Serif", "DejaVu Serif", Part::Editor,
         [](const Followers& f) { return f.view()->font().family(); }},
        {"DefaultFontSize", 17, 17, Part::Editor,
         [](const Followers& f) { return f.view()->font().pixelSize(); }},
        {"DefaultTabWidth", 8, qint64(8), Part::Editor,
         [](const Followers& f) { return f.fresh()->textView()->tabWidth(); }},
        {"CharacterEntity", false, false, Part::Editor,
         [](const Followers& f) { return f.fresh()->textView()->characterEntity(); }},
        {"AutoIndent", false, false, Part::Editor,
         [](const Followers& f) { return f.view()->autoIndent(); }},
        {"AutoIndentBraces", false, false, Part::Editor,
         [](const Followers& f) { return f.view()->autoIndentBraces(); }},
        {"AutoIndentClosingBraces", false, false, Part::Editor,
         [](const Followers& f) { return f.view()->autoIndentClosingBraces(); }},
        {"AutoBraceMatching", false, false, Part::Editor,
         [](const Followers& f) { return f.view()->autoBraceMatching(); }},
        {"UsedChevronsMatching", true, true, Part::Editor,
         [](const Followers& f) { return f.view()->UsedChevronMatching(); }},
        {"SpaceTab", true, true, Part::Editor,
         [](const Followers& f) { return f.view()->spaceTab(); }},
        {"AutoComplete", false, false, Part::Editor,
         [](const Followers& f) { return f.view()->autoComplete(); }},
        {"DefaultWrapLines", true, true, Part::Editor,
         [](const Followers& f) { return f.view()->wrapLines(); }},
        {"DefaultTextColor", color(255, 0, 0), QColor(255, 0, 0), Part::Editor,
         [](const Followers& f) { return f.view()->colors().text; }},
        {"DefaultInsertionPointColor", color(255, 0, 0), QColor(255, 0, 0), Part::Editor,
         [](const Followers& f) { return f.view()->insertionPointColor(); }},
        {"DefaultBackgroundColor", color(0, 255, 0), QColor(0, 255, 0), Part::Editor,
         [](const Followers& f) {
             return f.pixel({300, 150});
         }},
        {"InvisibleCharacterColor", color(255, 0, 0), QColor(255, 0, 0), Part::Editor,
         [](const Followers& f) {
             return f.view()->layoutManager()->attributes().foreground().color();
         }},
        {"GutterTextColor", color(255, 0, 0), QColor(255, 0, 0), Part::Editor,
         [](const Followers& f) { return f.view()->verticalRulerView()->gutterTextColor(); }},
        {"GutterBorderColor", color(255, 0, 0), QColor(255, 0, 0), Part::Editor,
         [](const Followers& f) { return f.view()->verticalRulerView()->gutterBorderColor(); }},
        {"GutterBackgroundColor", color(0, 0, 255), QColor(0, 0, 255), Part::Editor,
         [](const Followers& f) {
             return f.pixel({10, 150});
         }},
        {"NewLineCharacter", "$", "$", Part::Editor,
         [](const Followers& f) { return f.view()->layoutManager()->characterOfNewLine(); }},
        {"TabCharacter", ">", ">", Part::Editor,
         [](const Followers& f) { return f.view()->layoutManager()->characterOfTab(); }},
        {"SpaceCharacter", "_", "_", Part::Editor,
         [](const Followers& f) { return f.view()->layoutManager()->characterOfSpace(); }},
        {"FullwidthSpaceCharacter", "#", "#", Part::Editor,
         [](const Followers& f) { return f.view()->layoutManager()->characterOfFullwidthSpace(); }},
        // Windows: the open ones set their toggles back at every reading; the syntax choice
        // is a new window's.
        {"ShowGutterView", false, false, Part::None,
         [](const Followers& f) { return f.view()->rulersVisible(); }},
        {"ShowInvisibleCharacters", true, true, Part::None,
         [](const Followers& f) { return f.view()->layoutManager()->showInvisibleCharacters(); }},
        {"AllowSpellChecking", true, true, Part::None,
         [](const Followers& f) {
             return SpellCheckingController::of(f.view())->isContinuousSpellCheckingEnabled();
         }},
        {"SpellCheckLanguage", "de_DE", "de_DE", Part::None,
         [](const Followers& f) { return SpellCheckingController::of(f.view())->language(); }},
        {"UseVerticalforSplitView", true, int(Qt::Horizontal), Part::None,
         [](const Followers& f) { return int(f.window->window()->splitView()->orientation()); }},
        {"SyntaxColouring", false, false, Part::None,
         [](const Followers& f) { return f.fresh()->syntaxColouring(); }},
        {"DefaultForFileType", false, false, Part::None,
         [](const Followers& f) { return f.fresh()->defaultForFileType(); }},
        {"DefaultsSyntaxName", "Perl", "Perl", Part::None,
         [](const Followers& f) { return f.fresh()->selectedSyntaxName(); }},
        // Search: the engine starts from them.
        {"SearchReplaceAndFindNext", false, false, Part::None,
         [](const Followers& f) { return f.values().search.replaceAndFindNext; }},
        {"SearchReplaceAll", true, true, Part::None,
         [](const Followers& f) { return f.values().search.replaceAll; }},
        {"SearchCaseSensitive", true, true, Part::None,
         [](const Followers& f) { return f.values().search.caseSensitive; }},
        {"SearchRegularExpression", true, true, Part::None,
         [](const Followers& f) { return f.values().search.regularExpression; }},
        {"SearchPrevious", true, true, Part::None,
         [](const Followers& f) { return f.values().search.previous; }},
        {"SearchWholeWord", true, true, Part::None,
         [](const Followers& f) { return f.values().search.wholeWord; }},
        {"AllowMultiLineSearching", true, true, Part::None,
         [](const Followers& f) { return f.values().search.allowMultiLine; }},
    };

    // Syntax colours: one per category of the syntax manager.
    const std::pair<const char*, C::Category> categories[] = {
        {"BlockwordsColor", C::Blockwords}, {"KeywordsColor", C::Keywords},
        {"CommandsColor", C::Commands},     {"ValuesColor", C::Values},
        {"NumbersColor", C::Numbers},       {"StringsColor", C::Strings},
        {"CharactersColor", C::Characters}, {"PreprocessorColor", C::Preprocessor},
        {"CommentsColor", C::Comments}};
    for (int red = 1; const auto& [key, category] : categories) {
        rows.push_back({key, color(red, 0, 0), QColor(red, 0, 0), Part::SyntaxColors,
                        [category](const Followers& f) { return syntaxColor(f, category); }});
        ++red;
    }

    TestRoot root;
    UserDefaults& store = root.userDefaults();
    DocumentController& documents = root.documentController();
    Document* document = documents.newDocument();
    document->setLoadedText(QStringLiteral("a\tb\nc"));
    const Followers f{root, documents.windowControllerOf(document)};
    f.window->window()->resize(500, 300);
    ASSERT_TRUE(QTest::qWaitForWindowExposed(f.window->window()));

    // Every shipped setting has its row (the settings the editor only keeps, recent files or
    // the script library, have no default and are no preferences).
    EXPECT_EQ(qsizetype(rows.size()), store.registeredDefaults().size());
    for (const Row& row : rows) {
        EXPECT_TRUE(store.registeredDefaults().contains(row.key)) << row.key;
        const QVariant before = row.shown(f);
        ASSERT_NE(before, row.expected) << row.key << ": the row must change something";

        // Read once, pushed once to the followers of its part, and nothing else pushed.
        store.setObject(row.stored, row.key);
        {
            const Pushes pushes(root.preferences());
            postUpdatePreferences();
            EXPECT_EQ(pushes.readings, 1) << row.key;
            EXPECT_EQ(pushes.of[int(row.part)], row.part == Part::None ? 0 : 1) << row.key;
            EXPECT_EQ(pushes.total(), pushes.of[int(row.part)]) << row.key;
        }
        EXPECT_EQ(row.shown(f), row.expected) << row.key;
        EXPECT_EQ(root.preferences().values(), PreferencesValues::read(store)) << row.key;

        // Read again with nothing changed: nothing is pushed.
        {
            const Pushes pushes(root.preferences());
            postUpdatePreferences();
            EXPECT_EQ(pushes.readings, 1) << row.key;
            EXPECT_EQ(pushes.total(), 0) << row.key;
        }
        EXPECT_EQ(row.shown(f), row.expected) << row.key;

        store.removeObjectForKey(row.key);
        postUpdatePreferences();
        EXPECT_EQ(row.shown(f), before) << row.key << ": back to the shipped value";
    }

    // Open documents, and documents made later, keep the delay the application started with.
    const qint64 startDelay = f.document()->autosavingDelay();
    store.setInteger(startDelay + 15, SettingsKey::AutosavingDelay);
    postUpdatePreferences();
    EXPECT_EQ(f.document()->autosavingDelay(), startDelay);
    EXPECT_EQ(f.fresh()->document()->autosavingDelay(), startDelay);
    store.removeObjectForKey(SettingsKey::AutosavingDelay);
}
