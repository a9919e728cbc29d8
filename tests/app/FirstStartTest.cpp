#include "TestSupport.h"
#include "app/AppDelegate.h"
#include "app/Application.h"
#include "app/DocumentController.h"
#include "document/Document.h"
#include "platform/FileManager.h"
#include "platform/PropertyList.h"
#include "platform/UserDefaults.h"
#include "scripts/ScriptManager.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <gtest/gtest.h>

namespace {

// The support folder as a first start finds it; the settings are a TestRoot's own, as the
// first start finds them too.
void startWithEmptySupportFolder()
{
    QDir(FileManager::applicationSupportDirectoryPath()).removeRecursively();
}

} // namespace

TEST(FirstStart, InstallsDefinitionsScriptsAndTheExampleLibrary)
{
    TestRoot root;
    startWithEmptySupportFolder();
    root.documentController().setIsOpenPanel(true);
    root.documentController().awakeFromNib();
    EXPECT_FALSE(root.documentController().isOpenPanel());

    const QDir syntax(FileManager::syntaxDefinitionDirectoryPathInPath());
    EXPECT_EQ(syntax.entryList(QDir::Files).size(), 17);
    EXPECT_EQ(PropertyList::readDictionary(syntax.filePath("C++.plist"))->value("Name"), "C++");

    const QDir scripts(FileManager::scriptDirectoryPathInPath());
    EXPECT_EQ(scripts.entryList(QDir::Files).size(), 7);
    EXPECT_TRUE(QFileInfo(scripts.filePath("Put a phrase in brace.sh")).isExecutable());
    // The user's copies are theirs to edit.
    EXPECT_TRUE(QFileInfo(syntax.filePath("C.plist")).isWritable());

    const auto& library = ScriptManager::sharedScriptManager().scriptDataSource();
    ASSERT_TRUE(library.has_value());
    ASSERT_EQ(library->size(), 2);
    EXPECT_EQ(library->at(0)->numberOfChildren() + library->at(1)->numberOfChildren(), 7);
    EXPECT_FALSE(UserDefaults::standardUserDefaults().boolForKey("FirstStartupApplication"));

    // A later start copies nothing and restores the library from the settings.
    QFile::remove(syntax.filePath("Perl.plist"));
    Application::instance()->delegate().applicationWillTerminate();
    ScriptManager::sharedScriptManager().setScriptDataSource(std::nullopt);
    DocumentController::sharedDocumentController().awakeFromNib();
    EXPECT_FALSE(QFile::exists(syntax.filePath("Perl.plist")));
    ASSERT_TRUE(ScriptManager::sharedScriptManager().scriptDataSource().has_value());
    EXPECT_EQ(ScriptManager::sharedScriptManager().scriptDataSource()->size(), 2);
}

TEST(FirstStart, NeverReplacesTheUsersFiles)
{
    TestRoot root;
    startWithEmptySupportFolder();
    const QString userC = TestSupport::writeFile(
        FileManager::syntaxDefinitionDirectoryPathInPath("C.plist"), "my own C definition");
    const QString userScript = TestSupport::writeFile(
        FileManager::scriptDirectoryPathInPath("Output to calendar.sh"), "#!/bin/sh\necho mine\n");
    DocumentController::sharedDocumentController().awakeFromNib();
    EXPECT_EQ(TestSupport::readFile(userC), "my own C definition");
    EXPECT_EQ(TestSupport::readFile(userScript), "#!/bin/sh\necho mine\n");
    // The node is made whether or not the copy took place.
    EXPECT_EQ(ScriptManager::sharedScriptManager().scriptDataSource()->at(1)->numberOfChildren(),
              2);
    EXPECT_TRUE(QFile::exists(FileManager::syntaxDefinitionDirectoryPathInPath("Perl.plist")));
}
