#include "EditorTestSupport.h"
#include "editor/StringTransform.h"

#include <QMenu>

using namespace EditorTest;

namespace {

TEST(Transformation, FullwidthIsOneNamedUndoableStep)
{
    Pane pane(QStringLiteral("xABCy"));
    pane.view()->setSelectedRange({1, 3});
    pane.view()->exchangeToFullwidth();
    EXPECT_EQ(pane.text(), QStringLiteral("x\uFF21\uFF22\uFF23y"));
    EXPECT_EQ(pane.view()->selectedRange(), Range(1, 3));
    EXPECT_EQ(pane.document.undoActionName(), QStringLiteral("exchange to Fullwidth"));
    // The converted text stays selected, so a second command follows on.
    pane.view()->exchangeToHalfwidth();
    EXPECT_EQ(pane.text(), QStringLiteral("xABCy"));
    EXPECT_EQ(pane.document.undoActionName(), QStringLiteral("exchange to Halfwidth"));
    pane.view()->undo();
    EXPECT_EQ(pane.text(), QStringLiteral("x\uFF21\uFF22\uFF23y"));
    pane.view()->undo();
    EXPECT_EQ(pane.text(), QStringLiteral("xABCy"));
    EXPECT_EQ(pane.document.undoActionName(), QString());

    // An empty selection does nothing and records nothing.
    ASSERT_FALSE(pane.document.canUndo());
    pane.view()->setSelectedRange({2, 0});
    pane.view()->exchangeToFullwidth();
    EXPECT_EQ(pane.text(), QStringLiteral("xABCy"));
    EXPECT_FALSE(pane.document.canUndo());
    EXPECT_TRUE(pane.document.canRedo());
}

TEST(Transformation, ScriptConversions)
{
    // Hiragana to Katakana leaves the other scripts alone.
    EXPECT_EQ(StringTransform::stringHiraganaToKatakana(QStringLiteral("ab かな 漢")),
              QStringLiteral("ab カナ 漢"));
    EXPECT_EQ(StringTransform::stringKatakanaToHiragana(QStringLiteral("カナ")),
              QStringLiteral("かな"));
    EXPECT_EQ(StringTransform::stringLatinToHiragana(QStringLiteral("kana")),
              QStringLiteral("かな"));
    EXPECT_EQ(StringTransform::stringHiraganaToLatin(QStringLiteral("かな")),
              QStringLiteral("kana"));
    EXPECT_EQ(StringTransform::stringLatinToKatakana(QStringLiteral("kana")),
              QStringLiteral("カナ"));
    EXPECT_EQ(StringTransform::stringKatakanaToLatin(QStringLiteral("カナ")),
              QStringLiteral("kana"));
    EXPECT_EQ(StringTransform::stringMandarinToLatin(QStringLiteral("中文")),
              QStringLiteral("zhōng wén"));
    EXPECT_EQ(StringTransform::stringToHalfwidth(QStringLiteral("\uFF41\u30AB")),
              QStringLiteral("a\uFF76"));
    EXPECT_EQ(StringTransform::stringCapitalized(QStringLiteral("hello wORLD")),
              QStringLiteral("Hello World"));
}

TEST(Transformation, EntityReferencesDoNotEscapeTheirOwnAmpersand)
{
    EditorSettings settings = shippedSettings();
    settings.characterEntity = true;
    Pane named(QStringLiteral("a & < é → α"), settings);
    ASSERT_GT(named.view()->entityReference().size(), 200);
    named.view()->selectAll();
    named.view()->exchangeToEntityReference();
    EXPECT_EQ(named.text(), QStringLiteral("a &amp; &lt; &eacute; &rarr; &alpha;"));
    EXPECT_EQ(named.document.undoActionName(), QString());
    named.view()->undo();
    EXPECT_EQ(named.text(), QStringLiteral("a & < é → α"));

    settings.characterEntity = false;
    Pane numeric(QStringLiteral("“x” – ≤"), settings);
    numeric.view()->selectAll();
    numeric.view()->exchangeToEntityReference();
    EXPECT_EQ(numeric.text(), QStringLiteral("&#8220;x&#8221; &#8211; &#8804;"));
}

TEST(Transformation, ContextMenuItemsActOnTheView)
{
    Pane pane(QStringLiteral("x"));
    std::unique_ptr<QMenu> menu(pane.view()->menuForEvent(nullptr));
    const auto trigger = [&](const QString& title) {
        for (QAction* item : menu->findChildren<QAction*>()) {
            if (item->text() == title) {
                item->trigger();
            }
        }
    };
    pane.view()->selectAll();
    trigger(QStringLiteral("Exchange to Fullwidth"));
    EXPECT_EQ(pane.text(), QStringLiteral("\uFF58"));
    trigger(QStringLiteral("Shift Right"));
    EXPECT_EQ(pane.text(), QStringLiteral("\t\uFF58"));
}

} // namespace
