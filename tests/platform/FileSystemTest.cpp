#include "TestSupport.h"
#include "platform/ExtendedAttributes.h"
#include "platform/FileManager.h"

#include <QDir>
#include <QFileInfo>

#include <gtest/gtest.h>

TEST(ExtendedAttributes, ReadWriteAndMissing)
{
    const QString dir = TestSupport::makeTempDir();
    const QString file = TestSupport::writeFile(dir + "/a.txt", "text");
    const QString name = QStringLiteral("com.apple.TextEncoding");
    EXPECT_FALSE(ExtendedAttributes::read(file, name).has_value());
    EXPECT_FALSE(ExtendedAttributes::read(dir + "/missing.txt", name).has_value());

    QString error;
    if (!ExtendedAttributes::write(file, name, "utf-8;134217984", &error)) {
        GTEST_SKIP() << "this file system has no extended attributes: " << error.toStdString();
    }
    EXPECT_EQ(ExtendedAttributes::read(file, name).value_or("none"), "utf-8;134217984");
    // Stored under the user namespace, where other Linux tools look for it.
    EXPECT_EQ(ExtendedAttributes::read(file, "user." + name).value_or("none"), "utf-8;134217984");
    const QByteArray large(1000, 'x');
    ASSERT_TRUE(ExtendedAttributes::write(file, name, large));
    EXPECT_EQ(ExtendedAttributes::read(file, name).value_or(""), large);
    EXPECT_TRUE(ExtendedAttributes::remove(file, name));
    EXPECT_FALSE(ExtendedAttributes::read(file, name).has_value());
    EXPECT_FALSE(ExtendedAttributes::write(dir + "/missing.txt", name, "x"));
}

TEST(FileManager, SupportFoldersHangFromTheDataHome)
{
    const QString dataHome = qEnvironmentVariable("XDG_DATA_HOME");
    const QString support = FileManager::applicationSupportDirectoryPath();
    EXPECT_EQ(support, dataHome + "/Tessaran");
    EXPECT_TRUE(QFileInfo(support).isDir());

    // The folder operations only join names; they create nothing.
    EXPECT_EQ(FileManager::syntaxDefinitionDirectoryPathInPath("C.plist"),
              support + "/SyntaxDefinition/C.plist");
    EXPECT_EQ(FileManager::scriptDirectoryPathInPath(), support + "/Script");
    EXPECT_FALSE(QFileInfo::exists(support + "/SyntaxDefinition"));

    const QString created =
        FileManager::findOrCreateDirectory(FileManager::ApplicationSupportDirectory,
                                           FileManager::UserDomainMask, "Tessaran/Script/deep");
    EXPECT_EQ(created, support + "/Script/deep");
    EXPECT_TRUE(QFileInfo(created).isDir());
    // Asking again for a folder that exists succeeds.
    EXPECT_EQ(FileManager::findOrCreateDirectory(14, 1, "Tessaran/Script/deep"), created);
    EXPECT_TRUE(FileManager::findOrCreateDirectory(5, 1).isNull());

    // A folder that cannot be created gives no path.
    TestSupport::writeFile(dataHome + "/blocked", "a file where a folder should be");
    EXPECT_TRUE(FileManager::findOrCreateDirectory(14, 1, "blocked/inside").isNull());
}
