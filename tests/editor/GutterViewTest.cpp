#include "EditorTestSupport.h"

#include <QFontMetricsF>
#include <QScrollBar>

using namespace EditorTest;

namespace {

QList<qint64> numbersShown(const EditorController& pane)
{
    GutterView* gutter = pane.gutterView();
    QList<qint64> numbers;
    for (const GutterView::Label& label : gutter->labelsInRect(gutter->rect())) {
        numbers.append(label.number);
    }
    return numbers;
}

TEST(GutterView, NumbersEveryLogicalLineTypedSoFar)
{
    QTextDocument document;
    auto pane = makePane(&document);
    EXPECT_EQ(numbersShown(*pane), QList<qint64>({1})); // the empty text
    QTest::keyClicks(pane->textView(), QStringLiteral("a"));
    EXPECT_EQ(numbersShown(*pane), QList<qint64>({1}));
    QTest::keyClick(pane->textView(), Qt::Key_Return);
    EXPECT_EQ(numbersShown(*pane), QList<qint64>({1, 2}));
    QTest::keyClick(pane->textView(), Qt::Key_Return);
    QTest::keyClicks(pane->textView(), QStringLiteral("b"));
    EXPECT_EQ(numbersShown(*pane), QList<qint64>({1, 2, 3}));
}

TEST(GutterView, WrappedLineIsNumberedOnItsFirstRowOnly)
{
    QTextDocument document;
    document.setPlainText(QStringLiteral("word ").repeated(60) + QStringLiteral("\nnext"));
    auto pane = makePane(&document, QSize(300, 400));
    pane->textView()->setWrapLines(true);
    QCoreApplication::processEvents();
    ASSERT_GE(document.firstBlock().layout()->lineCount(), 3);

    const QList<GutterView::Label> labels =
        pane->gutterView()->labelsInRect(pane->gutterView()->rect());
    ASSERT_EQ(labels.size(), 2);
    EXPECT_EQ(labels[0].number, 1);
    EXPECT_EQ(labels[1].number, 2);
    // Line 2's number stands on the row where line 2 begins, below all rows of line 1.
    const QTextLayout* first = document.firstBlock().layout();
    const qreal rows = first->lineAt(first->lineCount() - 1).rect().bottom();
    EXPECT_NEAR(labels[1].rect.top() - labels[0].rect.top(), rows, 1.0);
}

TEST(GutterView, LabelsStandRightAlignedAFifthOfTheFreeHeightBelowTheirRow)
{
    QTextDocument document;
    document.setPlainText(QStringLiteral("one\ntwo\nthree\n"));
    auto pane = makePane(&document);
    TextView* view = pane->textView();
    GutterView* gutter = pane->gutterView();
    EXPECT_EQ(gutter->width(), 50);
    EXPECT_EQ(gutter->x(), 0);

    const QFontMetricsF metrics(gutter->textAttributes().font());
    const QList<GutterView::Label> labels = gutter->labelsInRect(gutter->rect());
    ASSERT_EQ(labels.size(), 4);
    for (const GutterView::Label& label : labels) {
        QTextCursor cursor(document.findBlockByNumber(int(label.number - 1)));
        const QRect row =
            view->cursorRect(cursor).translated(0, view->viewport()->y() - gutter->y());
        EXPECT_NEAR(label.rect.left() + metrics.horizontalAdvance(label.text), 45.0, 0.01);
        EXPECT_NEAR(label.rect.top(), row.top() + (row.height() - metrics.height()) / 5, 0.05)
            << label.number;
    }

    // What is painted: background, the border along the text side, and dark digits.
    const QImage image = gutter->grab().toImage().convertToFormat(QImage::Format_RGB32);
    EXPECT_EQ(image.pixelColor(49, 150), gutter->gutterBorderColor());
    EXPECT_EQ(image.pixelColor(3, 150), gutter->gutterBackgroundColor());
    const QRect firstLabel = labels[0].rect.toAlignedRect().intersected(QRect(0, 0, 48, 300));
    EXPECT_GT(countPixels(image, firstLabel, gutter->gutterTextColor(), 60), 3);
}

TEST(GutterView, NumbersFollowTypingAndScrolling)
{
    QTextDocument document;
    QStringList lines;
    for (int i = 1; i <= 5000; ++i) {
        lines.append(QStringLiteral("line %1").arg(i));
    }
    document.setPlainText(lines.join(u'\n'));
    auto pane = makePane(&document);
    TextView* view = pane->textView();

    // A line break typed on line 1 moves every following number down by one line.
    const QList<GutterView::Label> before =
        pane->gutterView()->labelsInRect(pane->gutterView()->rect());
    view->moveCursor(QTextCursor::EndOfLine);
    QTest::keyClick(view, Qt::Key_Return);
    const QList<GutterView::Label> after =
        pane->gutterView()->labelsInRect(pane->gutterView()->rect());
    ASSERT_GE(after.size(), 3);
    EXPECT_EQ(after[1].number, 2);
    EXPECT_EQ(document.findBlockByNumber(1).text(), QString());
    EXPECT_EQ(document.findBlockByNumber(2).text(), QStringLiteral("line 2"));
    EXPECT_NEAR(after[2].rect.top(),
                before[1].rect.top() + (before[1].rect.top() - before[0].rect.top()), 1.0);

    // Scrolled to the middle, the first number is the first visible line's.
    view->verticalScrollBar()->setValue(2500);
    QCoreApplication::processEvents();
    const QList<GutterView::Label> middle =
        pane->gutterView()->labelsInRect(pane->gutterView()->rect());
    ASSERT_FALSE(middle.isEmpty());
    EXPECT_EQ(middle.first().number, view->shownBlocks(0, 1).first().block.blockNumber() + 1);
    EXPECT_GT(middle.first().number, 2000);
    // The range the syntax engine recolours after an edit is the one on screen.
    const Range visible = view->visibleCharacterRange();
    EXPECT_EQ(visible.location,
              document.findBlockByNumber(int(middle.first().number - 1)).position());
    EXPECT_EQ(GutterView::lineNumberForCharacterIndex(visible.max() - 1, &document) + 1,
              middle.last().number);
    EXPECT_LT(middle.size(), 40);
}

TEST(GutterView, LineNumberOfACharacterIndex)
{
    QTextDocument document;
    document.setPlainText(QStringLiteral("ab\ncd\n\nef"));
    const QList<QPair<qint64, qint64>> cases = {{0, 0}, {2, 0}, {3, 1}, {5, 1},
                                                {6, 2}, {7, 3}, {9, 3}, {500, 3}};
    for (const auto& [index, line] : cases) {
        EXPECT_EQ(GutterView::lineNumberForCharacterIndex(index, &document), line) << index;
    }
    QTextDocument empty;
    EXPECT_EQ(GutterView::lineNumberForCharacterIndex(0, &empty), 0);
}

} // namespace
