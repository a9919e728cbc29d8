#include "EditorTestSupport.h"

#include <QScrollBar>

using namespace EditorTest;

namespace {

TEST(LayoutManager, MarksArePaintedOnlyWhenShownAndInTheirColour)
{
    Pane pane(QStringLiteral("\t\t\tx\n   y"));
    TextView* view = pane.view();
    LayoutManager* layout = pane.layoutManager();
    const QColor markColor = layout->attributes().foreground().color();

    const QImage plain = viewportImage(view);
    EXPECT_EQ(countPixels(plain, plain.rect(), markColor), 0);

    view->setInvisibleCharacters(true);
    const QImage marked = viewportImage(view);
    EXPECT_TRUE(layout->showInvisibleCharacters());
    EXPECT_GT(countPixels(marked, marked.rect(), markColor), 10);

    view->setInvisibleCharacters(false);
    EXPECT_EQ(viewportImage(view), plain);
}

TEST(LayoutManager, ColoursNeverTouchTheDocument)
{
    const QString text = QStringLiteral("int main(void)\n{\n    return 0;\n}\n");
    Pane pane(text);
    TextView* view = pane.view();
    LayoutManager* layout = pane.layoutManager();
    Document& document = pane.document;
    const int revision = document.revision();

    const QColor keyword(200, 0, 200);
    const QColor found(255, 255, 0);
    layout->setTemporaryAttributes(keyword, {0, 3});
    layout->setTemporaryAttributes(keyword, {21, 6});
    layout->setBackgroundHighlights({{4, 4}}, found);
    const QImage image = viewportImage(view);

    EXPECT_FALSE(document.isDocumentEdited());
    EXPECT_FALSE(document.canUndo());
    EXPECT_EQ(document.revision(), revision);
    EXPECT_EQ(document.storedText(), text);
    // The colours are what is shown, where their characters are.
    const QRect intWord = view->rectForPosition(0) | view->rectForPosition(3);
    const QRect after = view->rectForPosition(8) | view->rectForPosition(14);
    EXPECT_GT(countPixels(image, intWord, keyword, 50), 5);
    EXPECT_EQ(countPixels(image, after, keyword, 50), 0);
    EXPECT_GT(countPixels(image, image.rect(), found, 10), 20);

    // Typing inside a coloured word widens its colour.
    view->setSelection(2, 2);
    QTest::keyClicks(view, QStringLiteral("x"));
    EXPECT_EQ(document.textInRange(document.rangeOfLine(0)), QStringLiteral("inxt main(void)"));
    EXPECT_EQ(layout->temporaryAttributes({0, 50}),
              (std::vector<ColorStore::Run>{{0, 4, keyword.rgba()}, {22, 6, keyword.rgba()}}));
    document.undo();
    view->setSelection(0, 0);

    // Typing moves the colours with the text; undo holds the typing only.
    QTest::keyClicks(view, QStringLiteral("//"));
    EXPECT_EQ(layout->temporaryAttributes({0, 50}),
              (std::vector<ColorStore::Run>{{2, 3, keyword.rgba()}, {23, 6, keyword.rgba()}}));
    EXPECT_EQ(layout->backgroundHighlights({0, 50}),
              (std::vector<ColorStore::Run>{{6, 4, found.rgba()}}));
    EXPECT_TRUE(document.isDocumentEdited());
    document.undo();
    EXPECT_EQ(document.storedText(), text);
    EXPECT_FALSE(document.canUndo());

    layout->removeAllTemporaryAttributes();
    layout->removeBackgroundHighlights();
    const QImage cleared = viewportImage(view);
    EXPECT_EQ(countPixels(cleared, cleared.rect(), keyword, 50), 0);
    EXPECT_EQ(countPixels(cleared, cleared.rect(), found, 10), 0);
}

TEST(LayoutManager, ColoursReachLinesScrolledIntoView)
{
    QStringList lines;
    for (int i = 0; i < 3000; ++i) {
        lines.append(QStringLiteral("keyword %1").arg(i));
    }
    Pane pane(lines.join(u'\n'));
    TextView* view = pane.view();
    const Range far = pane.document.rangeOfLine(2500);
    pane.layoutManager()->setTemporaryAttributes(Qt::red, {far.location, 7});

    view->scrollRangeToVisible(far);
    const QImage image = viewportImage(view);
    const QRect word =
        view->rectForPosition(far.location) | view->rectForPosition(far.location + 7);
    ASSERT_TRUE(image.rect().contains(word.center()));
    EXPECT_GT(countPixels(image, word, Qt::red, 60), 5);
    // Only the word: the number after it keeps the text colour.
    const QRect number = view->rectForPosition(far.location + 8) | view->rectForPosition(far.max());
    EXPECT_EQ(countPixels(image, number, Qt::red, 60), 0);
}

} // namespace
