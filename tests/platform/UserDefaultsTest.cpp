#include "platform/UserDefaults.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

#include <limits>

TEST(UserDefaults, UserValuesWinAndRemovalRestoresTheRegisteredOne)
{
    const QString path = TestSupport::makeTempDir() + "/Tessaran.conf";
    {
        UserDefaults defaults(path);
        defaults.registerDefaults(
            {{"Flag", true},
             {"Size", qint64(12)},
             {"Name", "Plain Text"},
             {"Encoding", QVariant::fromValue(std::numeric_limits<quint64>::max())}});
        EXPECT_TRUE(defaults.boolForKey("Flag"));
        EXPECT_EQ(defaults.integerForKey("Size"), 12);
        EXPECT_EQ(defaults.unsignedIntegerForKey("Encoding"), std::numeric_limits<quint64>::max());

        defaults.setBool(false, "Flag");
        defaults.setInteger(14, "Size");
        defaults.setObject(QStringLiteral("Perl"), "Name");
        defaults.setUnsignedInteger(std::numeric_limits<quint64>::max() - 1, "Encoding");
        defaults.setObject(QByteArray("\x00\x01", 2), "Blob");
        defaults.synchronize();
    }
    {
        // User values persist, typed getters read them back; registered ones do not.
        UserDefaults defaults(path);
        EXPECT_FALSE(defaults.boolForKey("Flag"));
        EXPECT_EQ(defaults.integerForKey("Size"), 14);
        EXPECT_EQ(defaults.stringForKey("Name"), "Perl");
        EXPECT_EQ(defaults.unsignedIntegerForKey("Encoding"),
                  std::numeric_limits<quint64>::max() - 1);
        EXPECT_EQ(defaults.dataForKey("Blob"), QByteArray("\x00\x01", 2));

        defaults.registerDefaults({{"Flag", true}, {"Size", qint64(12)}});
        defaults.removeObjectForKey("Flag");
        EXPECT_TRUE(defaults.boolForKey("Flag"));
        defaults.synchronize();
        // Registered values are never written to the file.
        EXPECT_FALSE(TestSupport::readFile(path).contains("Flag"));
    }
}

TEST(UserDefaults, CorruptFileIsSetAsideAndTheStoreStillWorks)
{
    const QString dir = TestSupport::makeTempDir();
    const QString path = TestSupport::writeFile(dir + "/Tessaran.conf",
                                                "[General]\nSize=3\n\"broken\x01=\n[=\n\xff\xfe");
    UserDefaults defaults(path);
    // Nothing of the user's is lost: the unreadable file is kept beside a fresh store.
    ASSERT_FALSE(defaults.setAsidePath().isEmpty());
    EXPECT_TRUE(TestSupport::readFile(defaults.setAsidePath()).contains("broken"));
    defaults.registerDefaults({{"Size", qint64(12)}});
    EXPECT_EQ(defaults.integerForKey("Size"), 12);
    defaults.setInteger(5, "Size");
    defaults.synchronize();
    EXPECT_EQ(UserDefaults(path).integerForKey("Size"), 5);
    EXPECT_TRUE(UserDefaults(path).setAsidePath().isEmpty());
}
