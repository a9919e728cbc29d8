#include "EditorTestSupport.h"

#include <QScrollBar>

using namespace EditorTest;

namespace {

TEST(EditorController, TwoPanesShowAndEditOneDocument)
{
    const auto owned = makeDocument(QStringLiteral("first\tline\nsecond line\n"));
    Document& document = *owned;
    auto left = makePane(&document);
    auto right = makePane(&document);

    // Colours laid by one pane show in both, and never touch the document.
    const QColor color(0, 160, 0);
    const int revision = document.revision();
    left->layoutManager()->setTemporaryAttributes(color, {0, 5});
    for (EditorController* pane : {left.get(), right.get()}) {
        EXPECT_GT(countPixels(viewportImage(pane->textView()), QRect(0, 0, 60, 20), color, 40), 5);
    }
    EXPECT_FALSE(document.isDocumentEdited());
    EXPECT_FALSE(document.canUndo());
    EXPECT_EQ(document.revision(), revision);

    // Typing in one pane shows in the other, numbered by its own gutter, and the colours
    // of the first pane move with the text.
    right->textView()->setSelection(0, 0);
    QTest::keyClicks(right->textView(), QStringLiteral("##"));
    QTest::keyClick(right->textView(), Qt::Key_Return);
    EXPECT_EQ(document.storedText(), QStringLiteral("##\nfirst\tline\nsecond line\n"));
    QCoreApplication::processEvents();
    ASSERT_EQ(document.lineCount(), 4);
    for (EditorController* pane : {left.get(), right.get()}) {
        // Each pane lays out the four lines anew, one row below the other.
        TextView* view = pane->textView();
        for (qsizetype line = 1; line < 4; ++line) {
            const qsizetype start = document.rangeOfLine(line).location;
            const QRect at = view->rectForPosition(start);
            EXPECT_NEAR(at.top() - view->rectForPosition(start - 1).top(), at.height() + 1, 2);
            EXPECT_EQ(view->positionAt(at.center()), start);
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

TEST(EditorController, TheGutterNumbersTheLinesShown)
{
    QString text;
    for (int i = 1; i <= 300; ++i) {
        text += QStringLiteral("line %1\n").arg(i);
    }
    Pane pane(text);
    pane.view()->verticalScrollBar()->setValue(pane.view()->verticalScrollBar()->maximum() / 2);
    QCoreApplication::processEvents();
    const QList<TextArea::ShownLine> shown = pane.view()->visibleLines();
    const QList<GutterView::Label> labels = pane.controller->gutterView()->labelsInRect();
    ASSERT_GT(shown.first().line, 100);
    ASSERT_EQ(labels.size(), shown.size());
    for (qsizetype i = 0; i < labels.size(); ++i) {
        EXPECT_EQ(labels[i].number, shown[i].line + 1);
        const QRect row = pane.view()->rectForPosition(shown[i].position);
        EXPECT_NEAR(labels[i].rect.center().y(), row.center().y(), row.height() / 2);
    }
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
