#include "app/CommandLine.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

using File = CommandLine::File;

TEST(CommandLine, FilesPositionsAndOptions)
{
    const QString dir = TestSupport::makeTempDir();
    const QString colon = TestSupport::writeFile(dir + "/odd:12", "x");

    const CommandLine line =
        CommandLine::parse({"a.c:12", "b.c:3:7", "c.c", "-", colon, "--line", "5", "--encoding",
                            "shift_jis", "--new-instance", "d.c:0", "--", "-e"});
    ASSERT_TRUE(line.ok()) << line.errorString().toStdString();
    EXPECT_EQ(line.encodingName(), "shift_jis");
    EXPECT_TRUE(line.newInstance());
    EXPECT_FALSE(line.showHelp());
    const std::vector<File> expected = {
        {"a.c", 12, 0, false},
        {"b.c", 3, 7, false},
        {"c.c", 5, 0, false},
        {QString(), 5, 0, true},
        // An existing file whose name holds a colon opens as named.
        {colon, 5, 0, false},
        // Zero is not a line number: the colon belongs to the name.
        {"d.c:0", 5, 0, false},
        // After "--" everything is a file.
        {"-e", 5, 0, false},
    };
    EXPECT_EQ(line.files(), expected);

    EXPECT_TRUE(CommandLine::parse({"--help"}).showHelp());
    EXPECT_TRUE(CommandLine::parse({"-v"}).showVersion());
    EXPECT_EQ(CommandLine::parse({"--encoding=utf-8"}).encodingName(), "utf-8");
    EXPECT_EQ(CommandLine::parse({"--encoding=utf-8"}).encoding(), 4u);
    EXPECT_EQ(line.encoding(), 0x80000A01u);
    EXPECT_EQ(CommandLine::parse({"a.c"}).encoding(), ~quint64(0));
}

TEST(CommandLine, BadOptionsAreReported)
{
    for (const QStringList& arguments :
         {QStringList{"--frobnicate"}, QStringList{"-x", "a.c"}, QStringList{"--line"},
          QStringList{"--line", "zero"}, QStringList{"--line", "0"}, QStringList{"--encoding"},
          QStringList{"--encoding", " "}, QStringList{"--encoding", "klingon-8"}}) {
        const CommandLine line = CommandLine::parse(arguments);
        EXPECT_FALSE(line.ok()) << arguments.join(' ').toStdString();
        EXPECT_FALSE(line.errorString().isEmpty());
    }
    EXPECT_TRUE(CommandLine::parse({"--frobnicate"}).errorString().contains("--frobnicate"));
}
