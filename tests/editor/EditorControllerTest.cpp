#include "EditorTestSupport.h"

using namespace EditorTest;

namespace {

TEST(EditorController, TwoPanesShowAndEditOneDocument)
{
    const auto owned = makeDocument(QStringLiteral("first\tline\nsecond line\n"));
    Document& document = *owned;
    auto left = makePane(&document);
    auto right = makePane(&document);

    EXPECT_NE(left->gutterView(), right->gutterView());

    // Colours laid by one pane show in both, and never touch the document; marks are the
    // pane's own.
    const QColor color(0, 160, 0);
    const int revision = document.revision();
    left->layoutManager()->setTemporaryAttributes(color, {0, 5});
    for (EditorController* pane : {left.get(), right.get()}) {
        EXPECT_GT(countPixels(viewportImage(pane->textView()), QRect(0, 0, 60, 20), color, 40), 5);
    }
    EXPECT_FALSE(document.isDocumentEdited());
    EXPECT_FALSE(document.canUndo());
    EXPECT_EQ(document.revision(), revision);
    left->textView()->setInvisibleCharacters(true);
    const QColor mark = left->layoutManager()->attributes().foreground().color();
    EXPECT_GT(countPixels(viewportImage(left->textView()), QRect(0, 0, 300, 80), mark), 5);
    EXPECT_EQ(countPixels(viewportImage(right->textView()), QRect(0, 0, 300, 80), mark), 0);

    // Typing in one pane shows in the other, numbered by its own gutter, and the colours
    // of the first pane move with the text.
    right->textView()->setSelection(0, 0);
    QTest::keyClicks(right->textView(), QStringLiteral("##"));
    QTest::keyClick(right->textView(), Qt::Key_Return);
    EXPECT_EQ(document.storedText(), QStringLiteral("##\nfirst\tline\nsecond line\n"));
    QCoreApplication::processEvents();
    ASSERT_EQ(document.lineCount(), 4);
    for (EditorController* pane : {left.get(), right.get()}) {
        // Each pane lays out the four lines one row below the other.
        TextView* view = pane->textView();
        const int row = view->rectForPosition(0).height();
        int top = view->rectForPosition(0).top() - row;
        for (qsizetype line = 0; line < 4; ++line) {
            const QRect at = view->rectForPosition(document.rangeOfLine(line).location);
            EXPECT_GE(at.top() - top, row - 1) << line;
            EXPECT_LE(at.top() - top, row + 3) << line;
            EXPECT_EQ(view->positionAt(at.center()), document.rangeOfLine(line).location);
            top = at.top();
        }
    }
    EXPECT_EQ(left->layoutManager()->temporaryAttributes({0, 30}),
              (std::vector<ColorStore::Run>{{3, 5, color.rgba()}}));
    left->layoutManager()->removeAllTemporaryAttributes();
    EXPECT_EQ(countPixels(viewportImage(right->textView()), QRect(0, 0, 60, 20), color, 40), 0);

    // A background highlight is the document's: laid through one pane, removed through the
    // other, it is gone from both.
    const QColor found(255, 255, 0);
    left->layoutManager()->setBackgroundHighlights({{3, 5}}, found);
    EXPECT_GT(countPixels(viewportImage(right->textView()), QRect(0, 0, 300, 80), found, 10), 20);
    right->textView()->setWrapLines(!right->textView()->wrapLines());
    EXPECT_FALSE(left->layoutManager()->hasBackgroundHighlights());
    for (EditorController* pane : {left.get(), right.get()}) {
        EXPECT_EQ(countPixels(viewportImage(pane->textView()), QRect(0, 0, 300, 80), found, 10), 0);
    }

    // Closing one pane leaves the other working on the same text.
    right.reset();
    QTest::keyClicks(left->textView(), QStringLiteral("!"));
    EXPECT_TRUE(document.storedText().contains(QStringLiteral("!")));
}

TEST(EditorController, PaneSurvivesItsDocumentGoingFirst)
{
    auto document = makeDocument(QStringLiteral("abc\ndef"));
    auto pane = makePane(document.get());
    pane->textView()->setInvisibleCharacters(true);
    document.reset();
    viewportImage(pane->textView());
    // Without a text the pane takes nothing, and nothing it does reaches the text gone.
    QTest::keyClicks(pane->textView(), QStringLiteral("x"));
    pane->textView()->selectAll();
    EXPECT_TRUE(pane->textView()->selectedText().isEmpty());
    ASSERT_NE(pane->layoutManager(), nullptr);
}

} // namespace
