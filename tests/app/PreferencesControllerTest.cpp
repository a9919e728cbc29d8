#include "app/PreferencesController.h"

#include "TestSupport.h"
#include "app/AppDelegate.h"
#include "app/Application.h"
#include "app/ColorWell.h"
#include "app/FontWell.h"
#include "app/SyntaxDefinitionEditor.h"
#include "platform/ColorArchive.h"
#include "platform/FileManager.h"
#include "platform/NotificationCenter.h"
#include "platform/PropertyList.h"
#include "platform/SpellChecker.h"
#include "platform/UserDefaults.h"
#include "window/TestWindow.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QListWidget>
#include <QMainWindow>
#include <QMenu>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTabWidget>
#include <QTest>
#include <QToolBar>

#include <gtest/gtest.h>

#include <limits>

namespace {

// The store of the newest root: each test makes one of its own.
UserDefaults& store()
{
    return UserDefaults::standardUserDefaults();
}

// On the box itself: a check box wider than its title takes no click beyond it.
void clickBox(QCheckBox* box)
{
    QTest::mouseClick(box, Qt::LeftButton, {}, QPoint(6, box->height() / 2));
}

} // namespace

TEST(PreferencesController, TabsKeepTheirHeightsAndTheTopEdge)
{
    PreferencesController controller;
    QMainWindow* window = controller.window();
    window->move(120, 200);
    window->show();
    EXPECT_EQ(window->height(), 440);
    EXPECT_EQ(controller.tabView()->currentIndex(), 0);
    const int top = window->geometry().top();

    // Through the toolbar, as the user does.
    QAction* syntax = controller.toolbar()->findChild<QAction*>("PrefSyntax");
    ASSERT_NE(syntax, nullptr);
    syntax->trigger();
    EXPECT_EQ(controller.tabView()->currentIndex(), 2);
    EXPECT_EQ(window->height(), 520);
    EXPECT_EQ(window->geometry().top(), top);

    controller.changedTabs(1);
    EXPECT_EQ(controller.tabView()->currentIndex(), 1);
    EXPECT_EQ(window->height(), 300);
    EXPECT_EQ(window->geometry().top(), top);

    controller.changedTabs(7);
    EXPECT_EQ(controller.tabView()->currentIndex(), 1);
    EXPECT_EQ(window->height(), 300);
    window->hide();
}

TEST(PreferencesController, EverySettingHasABoundControl)
{
    // The controls write settings of the test's own.
    TestRoot root;
    store().setBool(false, "AutoBraceMatching");
    store().setBool(true, "UsedChevronsMatching");
    store().setUnsignedInteger(4, "OpenDefaultsTextEncoding");
    PreferencesController controller;
    QMainWindow* window = controller.window();
    controller.showWindow();
    controller.changedTabs(3);
    // Chevrons are matched only when braces are.
    EXPECT_FALSE(controller.usingChevronsMatching()->isEnabled());
    clickBox(controller.checkMatchingbraces());
    EXPECT_TRUE(controller.usingChevronsMatching()->isEnabled());
    clickBox(controller.checkMatchingbraces());
    EXPECT_FALSE(controller.usingChevronsMatching()->isEnabled());
    EXPECT_TRUE(store().boolForKey("UsedChevronsMatching"));

    // Keys with a control of their own name; the others are the pop-ups and the font well.
    const char* booleans[] = {"ShouldOpenUntitledFile",  "PriorityToJapaneseEncoding",
                              "UTF8AppendByBOM",         "SavePanelExtensionHidden",
                              "ShowInvisibleCharacters", "ShowGutterView",
                              "DefaultWrapLines",        "AutoIndent",
                              "AutoBraceMatching",       "AutoComplete",
                              "AllowSpellChecking",      "UseVerticalforSplitView",
                              "AutoIndentBraces",        "AutoIndentClosingBraces",
                              "UsedChevronsMatching",    "SpaceTab",
                              "CharacterEntity",         "SearchReplaceAndFindNext",
                              "SearchReplaceAll",        "SearchCaseSensitive",
                              "SearchRegularExpression", "SearchPrevious",
                              "AllowMultiLineSearching", "SearchWholeWord"};
    for (const char* key : booleans) {
        auto* box = window->findChild<QCheckBox*>(key);
        ASSERT_NE(box, nullptr) << key;
        const bool before = store().boolForKey(key);
        EXPECT_EQ(box->isChecked(), before) << key;
        box->setEnabled(true);
        box->click();
        EXPECT_EQ(store().boolForKey(key), !before) << key;
        store().removeObjectForKey(key);
    }
    for (const char* key : {"AutosavingDelay", "DefaultTabWidth"}) {
        auto* spin = window->findChild<QSpinBox*>(key);
        ASSERT_NE(spin, nullptr) << key;
        spin->setValue(spin->value() + 1);
        EXPECT_EQ(store().integerForKey(key), spin->value()) << key;
        store().removeObjectForKey(key);
    }
    for (const char* key :
         {"NewLineCharacter", "TabCharacter", "SpaceCharacter", "FullwidthSpaceCharacter"}) {
        auto* edit = window->findChild<QLineEdit*>(key);
        ASSERT_NE(edit, nullptr) << key;
        edit->selectAll();
        QTest::keyClicks(edit, "~");
        EXPECT_EQ(store().stringForKey(key), "~") << key;
        store().removeObjectForKey(key);
    }
    auto* lineBreaks = window->findChild<QComboBox*>("DefaultsLineBreaks");
    ASSERT_NE(lineBreaks, nullptr);
    Q_EMIT lineBreaks->activated(2);
    EXPECT_EQ(store().integerForKey("DefaultsLineBreaks"), 2);
    store().removeObjectForKey("DefaultsLineBreaks");

    // Only the open panel's encoding may be "Automatic".
    QComboBox* open = controller.openPanelTextEncodingPopUp();
    EXPECT_EQ(open->itemText(0), "Automatic");
    EXPECT_NE(open->currentIndex(), 0);
    Q_EMIT open->activated(0);
    EXPECT_EQ(store().unsignedIntegerForKey("OpenDefaultsTextEncoding"),
              std::numeric_limits<quint64>::max());
    QComboBox* fresh = controller.defaultTextEncodingPopUp();
    EXPECT_EQ(fresh->findText("Automatic"), -1);
    const int utf16 = fresh->findText("Unicode (UTF-16)");
    ASSERT_GE(utf16, 0);
    Q_EMIT fresh->activated(utf16);
    EXPECT_EQ(store().unsignedIntegerForKey("DefaultsTextEncoding"),
              fresh->itemData(utf16).toULongLong());

    // The spelling languages are the dictionaries'.
    const QStringList languages = SpellChecker::sharedSpellChecker().availableLanguages();
    QComboBox* spelling = controller.spellCheckerPopUp();
    ASSERT_EQ(spelling->count(), languages.size());
    EXPECT_EQ(spelling->currentText(), "American English (United States)");
    const int other =
        spelling->findData(languages.first() == "en_US" ? languages.last() : languages.first());
    Q_EMIT spelling->activated(other);
    EXPECT_EQ(store().stringForKey("SpellCheckLanguage"), spelling->itemData(other).toString());

    // The font well: the settings' font shown as "name - size"; 12.7 points stored as 12.
    FontWell* well = controller.fontWell();
    EXPECT_TRUE(well->text().endsWith(" - 12"));
    QFont chosen("DejaVu Serif");
    chosen.setPointSizeF(12.7);
    well->closeFontPanel(chosen);
    EXPECT_EQ(store().integerForKey("DefaultFontSize"), 12);
    EXPECT_EQ(store().stringForKey("DefaultFont"), "DejaVu Serif");
    EXPECT_EQ(well->text(), QFontInfo(well->font()).family() + " - 12");
    EXPECT_EQ(well->font().family(), "DejaVu Serif");
}

TEST(PreferencesController, ColourPresetsWriteAllSixteenColours)
{
    // The controls write settings of the test's own.
    TestRoot root;
    PreferencesController controller;
    controller.window();
    // A preset writes every colour; one that does not exist writes none.
    controller.changedSyntaxColouringType(2);
    auto colorOf = [](const char* key) { return ColorArchive::unarchive(store().dataForKey(key)); };
    EXPECT_EQ(colorOf("DefaultBackgroundColor"), QColor(Qt::black));
    for (const auto& [key, color] : AppDelegate::defaultColors()) {
        EXPECT_TRUE(store().hasUserValue(key)) << qPrintable(key);
    }
    controller.changedSyntaxColouringType(0);
    controller.changedSyntaxColouringType(5);
    EXPECT_EQ(colorOf("DefaultBackgroundColor"), QColor(Qt::white));

    // Every colour has its well, showing the stored colour and storing the chosen one.
    controller.changedSyntaxColouringType(1);
    for (const auto& [key, color] : AppDelegate::defaultColors()) {
        auto* well = controller.window()->findChild<ColorWell*>(key);
        ASSERT_NE(well, nullptr) << qPrintable(key);
        EXPECT_EQ(well->color(), ColorArchive::unarchive(store().dataForKey(key)));
    }
    auto* background = controller.window()->findChild<ColorWell*>("DefaultBackgroundColor");
    EXPECT_EQ(background->color(), QColor::fromRgbF(1.0f / 3, 1.0f / 3, 1.0f / 3));
    Q_EMIT background->colorChosen(QColor(10, 20, 30));
    EXPECT_EQ(colorOf("DefaultBackgroundColor"), QColor(10, 20, 30));
}

TEST(PreferencesController, OpenWindowsTakeUpChangesWhenTheWindowCloses)
{
    // The controls write settings of the test's own.
    TestRoot root;
    QSignalSpy spy(&NotificationCenter::defaultCenter(),
                   &NotificationCenter::NotifUpdatePreferences);
    {
        // Closing without changes still broadcasts, with the controller as the object.
        PreferencesController controller;
        controller.showWindow();
        controller.window()->close();
        ASSERT_EQ(spy.count(), 1);
        EXPECT_EQ(spy.at(0).at(0).value<QObject*>(), &controller);
    }

    // An edited definition is written when the window closes.
    const QString c = FileManager::syntaxDefinitionDirectoryPathInPath("C.plist");
    QDir().mkpath(FileManager::syntaxDefinitionDirectoryPathInPath());
    QFile::remove(c);
    QFile::copy(":/SyntaxDefinition/C.plist", c);
    QFile::setPermissions(c, QFile::permissions(c) | QFile::WriteOwner);

    TestWindow open;
    WindowController* window = open.controller;
    const bool shown = window->showGutterView();
    PreferencesController controller;
    controller.showWindow();
    auto* box = controller.window()->findChild<QCheckBox*>("ShowGutterView");
    ASSERT_NE(box, nullptr);
    box->click();
    EXPECT_EQ(store().boolForKey("ShowGutterView"), !shown);
    EXPECT_EQ(window->showGutterView(), shown);
    SyntaxDefinitionEditor* editor = controller.syntaxEditor();
    editor->syntaxTableView()->setCurrentRow(int(editor->definitions().indexOf("C")));
    editor->definitionPopUp()->setCurrentText("Keywords");
    editor->segmentKeyWordObject(0);
    EXPECT_NE(PropertyList::readDictionary(c)->value("Keywords").toList().last(), "new");
    controller.window()->close();
    EXPECT_EQ(PropertyList::readDictionary(c)->value("Keywords").toList().last(), "new");
    EXPECT_EQ(spy.count(), 2);
    EXPECT_EQ(window->showGutterView(), !shown);
}
