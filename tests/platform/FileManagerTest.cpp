#include "platform/FileManager.h"

#include <gtest/gtest.h>

TEST(FileManager, SupportFoldersHangFromTheDataHome)
{
    const QString support = FileManager::applicationSupportDirectoryPath();
    EXPECT_EQ(support, qEnvironmentVariable("XDG_DATA_HOME") + "/Tessaran");
    // The folder operations only join names.
    EXPECT_EQ(FileManager::syntaxDefinitionDirectoryPathInPath("C.plist"),
              support + "/SyntaxDefinition/C.plist");
    EXPECT_EQ(FileManager::scriptDirectoryPathInPath(), support + "/Script");
}
