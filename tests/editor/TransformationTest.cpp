#include "EditorTestSupport.h"
#include "editor/StringTransform.h"

#include <QMenu>

using namespace EditorTest;

namespace {

QString undoName(const Document& document)
{
    return document.undoActionName();
}

TEST(Transformation, FullwidthIsOneNamedUndoableStep)
{
    Pane pane(QStringLiteral("xABCy"));
    pane.view()->setSelectedRange({1, 3});
    pane.view()->exchangeToFullwidth();
    EXPECT_EQ(pane.text(), QStringLiteral("x\uFF21\uFF22\uFF23y"));
    EXPECT_EQ(pane.view()->selectedRange(), Range(1, 3));
    EXPECT_EQ(undoName(pane.document), QStringLiteral("exchange to Fullwidth"));
    // The converted text stays selected, so a second command follows on.
    pane.view()->exchangeToHalfwidth();
    EXPECT_EQ(pane.text(), QStringLiteral("xABCy"));
    EXPECT_EQ(undoName(pane.document), QStringLiteral("exchange to Halfwidth"));
    pane.view()->undo();
    EXPECT_EQ(undoName(pane.document), QStringLiteral("exchange to Fullwidth"));
    EXPECT_EQ(pane.document.redoActionName(), QStringLiteral("exchange to Halfwidth"));
    pane.view()->undo();
    EXPECT_EQ(pane.text(), QStringLiteral("xABCy"));
    EXPECT_EQ(undoName(pane.document), QString());

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

    Pane pane(QStringLiteral("かな"));
    pane.view()->selectAll();
    pane.view()->exchangeHiraganaToKatakana();
    EXPECT_EQ(pane.text(), QStringLiteral("カナ"));
    EXPECT_EQ(undoName(pane.document), QStringLiteral("exchange Hiragana to Katakana"));
    pane.view()->exchangeKatakanaToLatin();
    EXPECT_EQ(pane.text(), QStringLiteral("kana"));
    pane.view()->uppercaseWord();
    EXPECT_EQ(pane.text(), QStringLiteral("KANA"));
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
    EXPECT_EQ(undoName(named.document), QString());
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
    // The edit commands, then the shifts, then the transformations.
    QStringList titles;
    for (const QAction* item : menu->actions()) {
        titles << item->text();
    }
    EXPECT_EQ(titles.join(u','), QStringLiteral("Undo,Redo,,Cut,Copy,Paste,Delete,,Select All,,"
                                                "Shift Right,Shift Left,,Transformations"));
    QMenu* transformations = menu->actions().last()->menu();
    ASSERT_TRUE(transformations);
    ASSERT_EQ(transformations->actions()[6]->text(), QStringLiteral("Exchange to Fullwidth"));
    pane.view()->selectAll();
    transformations->actions()[6]->trigger();
    EXPECT_EQ(pane.text(), QStringLiteral("\uFF58"));
    menu->actions()[titles.indexOf(QStringLiteral("Shift Right"))]->trigger();
    EXPECT_EQ(pane.text(), QStringLiteral("\t\uFF58"));
}

} // namespace
