#include "app/PreferencesController.h"

#include "TestSupport.h"
#include "app/SyntaxDefinitionEditor.h"
#include "platform/FileManager.h"
#include "platform/NotificationCenter.h"
#include "platform/PropertyList.h"
#include "platform/UserDefaults.h"
#include "window/TestWindow.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QListWidget>
#include <QMainWindow>
#include <QSignalSpy>

#include <gtest/gtest.h>

#include <limits>

namespace {

// The store of the newest root: each test makes one of its own.
UserDefaults& store()
{
    return UserDefaults::standardUserDefaults();
}

} // namespace

TEST(PreferencesController, OnlyTheOpenPanelsEncodingMayBeAutomatic)
{
    // The controls write settings of the test's own.
    TestRoot root;
    store().setUnsignedInteger(4, "OpenDefaultsTextEncoding");
    PreferencesController controller;
    controller.showWindow();
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
}

TEST(PreferencesController, OpenWindowsTakeUpChangesWhenTheWindowCloses)
{
    // The controls write settings of the test's own.
    TestRoot root;
    QSignalSpy spy(&NotificationCenter::defaultCenter(),
                   &NotificationCenter::NotifUpdatePreferences);
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
    EXPECT_EQ(spy.count(), 1);
    EXPECT_EQ(window->showGutterView(), !shown);
}
