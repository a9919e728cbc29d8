#include "scripts/ScriptObject.h"

#include "TestSupport.h"
#include "platform/UserDefaults.h"
#include "scripts/ScriptManager.h"

#include <gtest/gtest.h>

TEST(ScriptObject, TitlesDropTheLastExtensionAndChildrenAreLookedUpSafely)
{
    const auto sum =
        ScriptObject::initWithPath("/home/u/.local/share/Tessaran/Script/Sum.pl", true);
    EXPECT_EQ(sum->path(), "Sum.pl");
    EXPECT_EQ(sum->title(), "Sum");
    EXPECT_EQ(ScriptObject::initWithPath(".profile", true)->title(), ".profile");
    EXPECT_FALSE(sum->children().has_value());

    const auto folder = ScriptObject::initWithPath("a/b", false);
    folder->addChildren(sum);
    EXPECT_EQ(folder->childAtIndex(1), nullptr);
    EXPECT_EQ(folder->childAtIndex(-1), nullptr);
    // A leaf that is given children gets an array first.
    sum->addChildren(ScriptObject::initWithPath("x", true));
    EXPECT_EQ(sum->numberOfChildren(), 1);
}

TEST(ScriptManager, LibraryRoundTripsThroughTheSettings)
{
    const QString settings = TestSupport::makeTempDir() + "/Tessaran.conf";
    UserDefaults store(settings);
    ScriptManager manager(store, TestSupport::encodings());
    auto tools = ScriptObject::initWithPath("Tools", false);
    auto sum = ScriptObject::initWithPath("Sum.pl", true);
    sum->setInitApp(true);
    auto nested = ScriptObject::initWithPath("Nested", false);
    nested->addChildren(ScriptObject::initWithPath("deep.min.sh", true));
    tools->addChildren(sum);
    tools->addChildren(nested);
    tools->addChildren(ScriptObject::initWithPath("Empty", false));
    manager.setScriptDataSource(
        ScriptObjectList{tools, ScriptObject::initWithPath("Top.rb", true)});

    manager.writeScriptDataSource();
    // What another run finds in the settings file.
    UserDefaults nextRun(settings);
    ScriptManager next(nextRun, TestSupport::encodings());
    next.readScriptDataSource();

    const auto& library = next.scriptDataSource();
    ASSERT_TRUE(library.has_value());
    ASSERT_EQ(library->size(), 2);
    const auto& back = library->at(0);
    EXPECT_EQ(back->title(), "Tools");
    EXPECT_FALSE(back->isLeaf());
    ASSERT_EQ(back->numberOfChildren(), 3);
    EXPECT_EQ(back->childAtIndex(0)->path(), "Sum.pl");
    EXPECT_TRUE(back->childAtIndex(0)->isLeaf());
    EXPECT_TRUE(back->childAtIndex(0)->initApp());
    EXPECT_EQ(back->childAtIndex(1)->childAtIndex(0)->title(), "deep.min");
    EXPECT_FALSE(back->childAtIndex(1)->childAtIndex(0)->initApp());
    // An empty folder stays a folder with an (empty) array.
    EXPECT_TRUE(back->childAtIndex(2)->children().has_value());
    EXPECT_EQ(back->childAtIndex(2)->numberOfChildren(), 0);
    EXPECT_EQ(library->at(1)->path(), "Top.rb");

    // No setting, or one that is not an archive, gives an empty library.
    store.setObject(QByteArray("garbage"), "ScriptAllItems");
    manager.readScriptDataSource();
    ASSERT_TRUE(manager.scriptDataSource().has_value());
    EXPECT_TRUE(manager.scriptDataSource()->isEmpty());
    store.removeObjectForKey("ScriptAllItems");
    manager.setScriptDataSource(std::nullopt);
    manager.readScriptDataSource();
    ASSERT_TRUE(manager.scriptDataSource().has_value());
    EXPECT_TRUE(manager.scriptDataSource()->isEmpty());
}
