#include "EditorTestSupport.h"

#include <QFontDatabase>
#include <QFontMetricsF>
#include <QScrollBar>
#include <QTextBlock>

using namespace EditorTest;

namespace {

qreal xOf(TextView* view, int position)
{
    QTextCursor cursor(view->document());
    cursor.setPosition(position);
    return view->cursorRect(cursor).center().x();
}

TEST(TextView, TabAdvancesByTabWidthSpacesOfTheFixedPitchFont)
{
    const QFontMetricsF fixed(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    const qreal space = fixed.horizontalAdvance(QLatin1Char(' '));
    ASSERT_GT(space, 0);
    for (int width : {4, 8}) {
        EditorSettings settings = shippedSettings();
        settings.tabWidth = width;
        // A proportional text font does not change the tab interval.
        settings.fontName = QStringLiteral("DejaVu Serif");
        settings.fontSize = 22;
        QTextDocument document;
        auto pane = makePane(&document, settings);
        TextView* view = pane->textView();
        QTest::keyClick(view, Qt::Key_Tab);
        QTest::keyClicks(view, QStringLiteral("x"));
        ASSERT_EQ(document.toPlainText(), QStringLiteral("\tx"));
        EXPECT_NEAR(view->tabStopDistance(), space * width, 0.01);
        EXPECT_NEAR(xOf(view, 1) - xOf(view, 0), space * width, 1.0) << width;
    }
}

TEST(TextView, TextStartsOnePointRightAndBelowAPlainEdit)
{
    QTextDocument document;
    document.setPlainText(QStringLiteral("x"));
    auto pane = makePane(&document);
    TextView* view = pane->textView();
    view->setRulersVisible(false);
    QCoreApplication::processEvents();

    QPlainTextEdit plain;
    plain.setFrameShape(QFrame::NoFrame);
    plain.setFont(view->font());
    plain.setPlainText(QStringLiteral("x"));
    plain.resize(view->size());
    plain.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&plain));

    const QPoint ours =
        view->viewport()->mapTo(view, view->cursorRect(QTextCursor(&document)).topLeft());
    const QPoint theirs =
        plain.viewport()->mapTo(&plain, plain.cursorRect(QTextCursor(plain.document())).topLeft());
    EXPECT_EQ(ours - theirs, QPoint(1, 1));
    EXPECT_EQ(view->textContainerOrigin(),
              QPointF(document.documentMargin() + 1, document.documentMargin() + 1));

    // With the gutter, the text moves right by the gutter's width.
    view->setRulersVisible(true);
    QCoreApplication::processEvents();
    EXPECT_EQ(view->viewport()->x(), 51);
}

TEST(TextView, WrappingOffAndOnKeepsTheTextAndDropsHighlights)
{
    QTextDocument document;
    const QString text = QStringLiteral("alpha beta gamma ").repeated(40) + QStringLiteral("\nend");
    document.setPlainText(text);
    document.setModified(false);
    auto pane = makePane(&document, QSize(300, 300));
    TextView* view = pane->textView();
    LayoutManager* layout = pane->layoutManager();

    view->setWrapLines(true);
    QCoreApplication::processEvents();
    EXPECT_TRUE(view->wrapLines());
    EXPECT_GT(document.firstBlock().layout()->lineCount(), 3);
    EXPECT_EQ(view->horizontalScrollBarPolicy(), Qt::ScrollBarAlwaysOff);

    layout->setBackgroundHighlights({{0, 5}}, Qt::yellow);
    view->setWrapLines(false);
    QCoreApplication::processEvents();
    EXPECT_FALSE(view->wrapLines());
    EXPECT_EQ(document.firstBlock().layout()->lineCount(), 1);
    EXPECT_EQ(view->horizontalScrollBarPolicy(), Qt::ScrollBarAsNeeded);
    EXPECT_TRUE(view->horizontalScrollBar()->maximum() > 0);
    EXPECT_FALSE(layout->hasBackgroundHighlights());

    view->setWrapLines(true);
    QCoreApplication::processEvents();
    EXPECT_EQ(document.toPlainText(), text);
    EXPECT_FALSE(document.isModified());
    EXPECT_FALSE(document.isUndoAvailable());
}

TEST(TextView, UnwrappedTextIsNotLaidOutAgainWhenThePaneWidens)
{
    QTextDocument document;
    QStringList lines;
    for (int i = 0; i < 3000; ++i) {
        lines.append(QStringLiteral("short line %1").arg(i));
    }
    document.setPlainText(lines.join(u'\n'));
    auto pane = makePane(&document, QSize(300, 200));
    TextView* view = pane->textView();
    view->setWrapLines(false);
    view->verticalScrollBar()->setValue(2000);
    viewportImage(view);
    view->verticalScrollBar()->setValue(0);
    const QTextBlock laidOut = document.findBlockByNumber(2001);
    ASSERT_GT(laidOut.layout()->lineCount(), 0);

    view->resize(600, 200);
    QCoreApplication::processEvents();
    EXPECT_GT(laidOut.layout()->lineCount(), 0); // the wider pane kept the layout
    EXPECT_EQ(view->horizontalScrollBar()->maximum(), 0);
    EXPECT_FALSE(viewportImage(view).isNull());

    // Laid out at this width, then narrower: the short lines still need no horizontal
    // scrolling, and the layout is kept again.
    view->setWrapLines(true);
    view->setWrapLines(false);
    view->verticalScrollBar()->setValue(2000);
    viewportImage(view);
    view->verticalScrollBar()->setValue(0);
    view->resize(200, 200);
    QCoreApplication::processEvents();
    EXPECT_GT(laidOut.layout()->lineCount(), 0);
    QCoreApplication::processEvents();
    EXPECT_EQ(view->horizontalScrollBar()->maximum(), 0);

    // A long line is scrolled to its end, whatever widths the pane went through.
    QTextCursor end(&document);
    end.movePosition(QTextCursor::End);
    end.insertText(QString(200, u'x'));
    view->resize(700, 200);
    QCoreApplication::processEvents();
    const qreal longLine = document.lastBlock().layout()->lineAt(0).naturalTextWidth();
    EXPECT_NEAR(view->horizontalScrollBar()->maximum(),
                longLine + 2 * document.documentMargin() - view->viewport()->width(), 12);
}

TEST(TextView, InsertionPointIsDrawnInItsOwnColour)
{
    EditorSettings settings = shippedSettings();
    settings.insertionPointColor = QColor(255, 0, 0);
    QTextDocument document;
    document.setPlainText(QStringLiteral("abc"));
    auto pane = makePane(&document, settings);
    TextView* view = pane->textView();
    ASSERT_EQ(view->insertionPointColor(), QColor(255, 0, 0));
    // The insertion point shows while the view has the focus.
    QFocusEvent focusIn(QEvent::FocusIn, Qt::OtherFocusReason);
    QCoreApplication::sendEvent(view, &focusIn);
    const QImage image = viewportImage(view);
    EXPECT_GT(countPixels(image, QRect(0, 0, 30, 30), QColor(255, 0, 0), 30), 5);
    QFocusEvent focusOut(QEvent::FocusOut, Qt::OtherFocusReason);
    QCoreApplication::sendEvent(view, &focusOut);
    EXPECT_EQ(countPixels(viewportImage(view), QRect(0, 0, 30, 30), QColor(255, 0, 0), 30), 0);
}

} // namespace
