#include "EditorTestSupport.h"

#include <QFontMetricsF>
#include <QScrollBar>
#include <QTextBlock>

using namespace EditorTest;
using Kind = LayoutManager::InvisibleKind;

namespace {

QList<LayoutManager::InvisibleMark> allMarks(const EditorController& pane)
{
    return pane.layoutManager()->invisibleCharacterMarks(pane.textView()->viewport()->rect());
}

TEST(LayoutManager, MarksLineEndsTabsSpacesAndFullwidthSpacesOnly)
{
    QTextDocument document;
    // CRLF is one line break in memory; the last line has no break of its own.
    document.setPlainText(QStringLiteral("a\tb c\u00A0d\u3000e\fz\r\nx y\n"));
    auto pane = makePane(&document);
    TextView* view = pane->textView();

    struct Expected {
        qsizetype location;
        Kind kind;
    };
    const QList<Expected> expected = {
        {1, Kind::Tab},      {3, Kind::Space},  {5, Kind::Space},    {7, Kind::FullwidthSpace},
        {11, Kind::NewLine}, {13, Kind::Space}, {15, Kind::NewLine},
    };
    const QList<LayoutManager::InvisibleMark> marks = allMarks(*pane);
    ASSERT_EQ(marks.size(), expected.size());
    for (qsizetype i = 0; i < marks.size(); ++i) {
        EXPECT_EQ(marks[i].location, expected[i].location) << i;
        EXPECT_EQ(marks[i].kind, expected[i].kind) << i;
        // Each mark stands where its character is, at the top of its line; spaces one
        // point further right.
        QTextCursor cursor(&document);
        cursor.setPosition(int(marks[i].location));
        const QRect at = view->cursorRect(cursor);
        const qreal nudge = marks[i].kind == Kind::Space ? 1.0 : 0.0;
        EXPECT_NEAR(marks[i].origin.x(), at.center().x() + nudge, 1.5) << i;
        EXPECT_NEAR(marks[i].origin.y(), at.top(), 1.0) << i;
    }
}

TEST(LayoutManager, MarksArePaintedOnlyWhenShownAndInTheirColour)
{
    QTextDocument document;
    document.setPlainText(QStringLiteral("\t\t\tx\n   y"));
    auto pane = makePane(&document);
    TextView* view = pane->textView();
    LayoutManager* layout = pane->layoutManager();
    const QColor markColor = layout->attributes().foreground().color();

    const QImage plain = viewportImage(view);
    EXPECT_EQ(countPixels(plain, plain.rect(), markColor), 0);

    view->setInvisibleCharacters(true);
    const QImage marked = viewportImage(view);
    EXPECT_TRUE(layout->showInvisibleCharacters());
    EXPECT_GT(countPixels(marked, marked.rect(), markColor), 10);
    EXPECT_EQ(layout->lengthToRedraw(), 9); // the last mark is the space at 8

    view->setInvisibleCharacters(false);
    EXPECT_EQ(viewportImage(view), plain);
}

TEST(LayoutManager, OnlyTheCharactersOnScreenOfALongLineAreLookedAt)
{
    QTextDocument document;
    document.setPlainText(QString(20000, u' ') + QStringLiteral("\t"));
    auto pane = makePane(&document, QSize(400, 200));
    TextView* view = pane->textView();
    view->setWrapLines(false);
    QCoreApplication::processEvents();

    const qreal space = QFontMetricsF(view->font()).horizontalAdvance(QLatin1Char(' '));
    QList<LayoutManager::InvisibleMark> marks = allMarks(*pane);
    EXPECT_FALSE(marks.isEmpty());
    EXPECT_LE(marks.size(), view->viewport()->width() / space + 3);
    EXPECT_EQ(marks.first().location, 0);

    // Scrolled to the line's end, the tab is there and the start is not.
    view->horizontalScrollBar()->setValue(view->horizontalScrollBar()->maximum());
    QCoreApplication::processEvents();
    marks = allMarks(*pane);
    ASSERT_FALSE(marks.isEmpty());
    EXPECT_EQ(marks.last().location, 20000);
    EXPECT_EQ(marks.last().kind, Kind::Tab);
    EXPECT_GT(marks.first().location, 19000);
    EXPECT_LE(marks.size(), view->viewport()->width() / space + 3);
}

TEST(LayoutManager, ColoursNeverTouchTheDocument)
{
    QTextDocument document;
    document.setPlainText(QStringLiteral("int main(void)\n{\n    return 0;\n}\n"));
    document.setModified(false);
    document.clearUndoRedoStacks();
    auto pane = makePane(&document);
    TextView* view = pane->textView();
    LayoutManager* layout = pane->layoutManager();
    const QString text = document.toPlainText();

    const QColor keyword(200, 0, 200);
    layout->setTemporaryAttributes(keyword, {0, 3});
    layout->setTemporaryAttributes(keyword, {21, 6});
    layout->setBackgroundHighlights({{4, 4}}, QColor(255, 255, 0));
    const QImage image = viewportImage(view);

    EXPECT_FALSE(document.isModified());
    EXPECT_FALSE(document.isUndoAvailable());
    EXPECT_EQ(document.availableUndoSteps(), 0);
    EXPECT_EQ(document.toPlainText(), text);
    // The colours are what is shown.
    EXPECT_GT(countPixels(image, QRect(0, 0, 60, 20), keyword, 50), 5);
    EXPECT_GT(countPixels(image, image.rect(), QColor(255, 255, 0), 10), 20);
    const QList<QTextLayout::FormatRange> formats = document.firstBlock().layout()->formats();
    ASSERT_EQ(formats.size(), 2);
    EXPECT_EQ(formats[1].start, 0);
    EXPECT_EQ(formats[1].length, 3);
    EXPECT_EQ(formats[1].format.foreground().color(), keyword);

    // Painting again lays no block out again: the formats are already right.
    EXPECT_EQ(layout->applyTemporaryAttributes(0, view->viewport()->height()), 0);

    // Typing inside a coloured word widens its colour at once, without waiting for a paint.
    QTextCursor inside(&document);
    inside.setPosition(2);
    view->setTextCursor(inside);
    QTest::keyClicks(view, QStringLiteral("x"));
    EXPECT_EQ(document.firstBlock().text(), QStringLiteral("inxt main(void)"));
    ASSERT_EQ(document.firstBlock().layout()->formats().size(), 2);
    EXPECT_EQ(document.firstBlock().layout()->formats()[1].length, 4);
    EXPECT_EQ(layout->applyTemporaryAttributes(0, view->viewport()->height()), 0);
    document.undo();
    view->moveCursor(QTextCursor::Start);

    // Typing moves the colours with the text; undo holds the typing only.
    QTest::keyClicks(view, QStringLiteral("//"));
    EXPECT_EQ(layout->temporaryAttributes({0, 50}),
              (std::vector<ColorStore::Run>{{2, 3, keyword.rgba()}, {23, 6, keyword.rgba()}}));
    EXPECT_EQ(layout->backgroundHighlights({0, 50}),
              (std::vector<ColorStore::Run>{{6, 4, QColor(255, 255, 0).rgba()}}));
    EXPECT_TRUE(document.isModified());
    document.undo();
    EXPECT_EQ(document.toPlainText(), text);
    EXPECT_FALSE(document.isUndoAvailable());

    layout->removeAllTemporaryAttributes();
    layout->removeBackgroundHighlights();
    viewportImage(view);
    EXPECT_TRUE(document.firstBlock().layout()->formats().isEmpty());
}

TEST(LayoutManager, ColoursReachBlocksScrolledIntoViewBeforeTheyArePainted)
{
    QTextDocument document;
    QStringList lines;
    for (int i = 0; i < 3000; ++i) {
        lines.append(QStringLiteral("keyword %1").arg(i));
    }
    document.setPlainText(lines.join(u'\n'));
    auto pane = makePane(&document);
    LayoutManager* layout = pane->layoutManager();
    const QTextBlock far = document.findBlockByNumber(2500);
    layout->setTemporaryAttributes(Qt::red, {far.position(), 7});
    EXPECT_TRUE(far.layout()->formats().isEmpty()); // not shown, so not laid on yet

    // Scrolling lays them on at once, so the paint that follows has nothing to change (a
    // change made while painting would ask for a second paint).
    pane->textView()->verticalScrollBar()->setValue(2490);
    ASSERT_EQ(far.layout()->formats().size(), 1);
    EXPECT_EQ(far.layout()->formats()[0].format.foreground().color(), QColor(Qt::red));
    EXPECT_EQ(layout->applyTemporaryAttributes(0, pane->textView()->viewport()->height()), 0);
}

} // namespace
