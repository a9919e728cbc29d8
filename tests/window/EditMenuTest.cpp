#include "TestWindow.h"

namespace {

QAction* itemTitled(QMenu* menu, const QString& prefix)
{
    for (QAction* item : menu->actions()) {
        if (QString(item->text()).remove(QLatin1Char('&')).startsWith(prefix)) {
            return item;
        }
    }
    return nullptr;
}

TEST(EditMenu, UndoAndRedoNameTheirSteps)
{
    TestWindow window(QStringLiteral("ABC\ndef"));
    Document* document = window.document;
    MainMenu& menu = *window.menu;
    QMenu* edit = menu.menuNamed(QStringLiteral("editMenu"));
    QMenu* format = menu.menuNamed(QStringLiteral("formatMenu"));
    ASSERT_TRUE(edit && format);
    QAction* undo = edit->actions()[0];
    QAction* redo = edit->actions()[1];
    TextView* view = window.view();

    QAction* shiftRight = itemTitled(format, QStringLiteral("Shift Right"));
    QAction* shiftLeft = itemTitled(format, QStringLiteral("Shift Left"));
    ASSERT_TRUE(shiftRight && shiftLeft);
    EXPECT_EQ(shiftRight->shortcut(), QKeySequence(QStringLiteral("Ctrl+]")));
    EXPECT_EQ(shiftLeft->shortcut(), QKeySequence(QStringLiteral("Ctrl+[")));

    view->setSelectedRange({0, 3});
    shiftRight->trigger();
    EXPECT_EQ(document->textStorage()->toPlainText(), QStringLiteral("\tABC\ndef"));
    EXPECT_EQ(undo->text(), QStringLiteral("Undo Shift Right"));

    QMenu* transformations = menu.menuNamed(QStringLiteral("transformationsMenu"));
    ASSERT_TRUE(transformations);
    view->setSelectedRange({1, 3});
    itemTitled(transformations, QStringLiteral("Exchange to Fullwidth"))->trigger();
    EXPECT_EQ(document->textStorage()->toPlainText(), QStringLiteral("\t\uFF21\uFF22\uFF23\ndef"));
    EXPECT_EQ(undo->text(), QStringLiteral("Undo exchange to Fullwidth"));

    undo->trigger();
    EXPECT_EQ(document->textStorage()->toPlainText(), QStringLiteral("\tABC\ndef"));
    EXPECT_EQ(undo->text(), QStringLiteral("Undo Shift Right"));
    EXPECT_EQ(redo->text(), QStringLiteral("Redo exchange to Fullwidth"));

    // Typing is a step without a name; a new step drops what redo could reach.
    view->setSelectedRange({8, 0});
    QTest::keyClicks(view, QStringLiteral("x"));
    EXPECT_EQ(undo->text(), QStringLiteral("&Undo"));
    EXPECT_EQ(redo->text(), QStringLiteral("&Redo"));
    undo->trigger();
    EXPECT_EQ(undo->text(), QStringLiteral("Undo Shift Right"));

    view->setSelectedRange({0, 0});
    shiftLeft->trigger();
    EXPECT_EQ(undo->text(), QStringLiteral("Undo Shift Left"));
}

} // namespace
