#include "EditorTestSupport.h"

using namespace EditorTest;

namespace {

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

} // namespace
