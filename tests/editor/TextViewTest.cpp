#include "EditorTestSupport.h"

#include <QFontDatabase>
#include <QFontMetricsF>

using namespace EditorTest;

namespace {

qreal xOf(TextView* view, qsizetype position)
{
    return view->rectForPosition(position).center().x();
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
        Pane pane(QString(), settings);
        TextView* view = pane.view();
        QTest::keyClick(view, Qt::Key_Tab);
        QTest::keyClicks(view, QStringLiteral("x"));
        ASSERT_EQ(pane.text(), QStringLiteral("\tx"));
        EXPECT_NEAR(xOf(view, 1) - xOf(view, 0), space * width, 1.0) << width;
    }
}

TEST(TextView, TheGutterMovesTheTextRightByItsWidth)
{
    Pane pane(QStringLiteral("x"));
    TextView* view = pane.view();
    const auto textLeft = [&] {
        QCoreApplication::processEvents();
        return view->viewport()->mapTo(view, view->rectForPosition(0).topLeft()).x();
    };
    view->setRulersVisible(false);
    const int bare = textLeft();
    view->setRulersVisible(true);
    EXPECT_EQ(textLeft() - bare, 50);
}

TEST(TextView, InsertionPointIsDrawnInItsOwnColour)
{
    EditorSettings settings = shippedSettings();
    settings.insertionPointColor = QColor(255, 0, 0);
    Pane pane(QStringLiteral("abc"), settings);
    TextView* view = pane.view();
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
