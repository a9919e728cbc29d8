#include "editor/TextAreaCompletion.h"

#include "document/TextBuilder.h"
#include "document/TextStore.h"
#include "editor/TextArea.h"
#include "editor/TextLayoutCache.h"

#include <QFontDatabase>
#include <QTest>
#include <QUndoStack>

#include <gtest/gtest.h>

TEST(TextAreaCompletionTest, TheProposalStaysOutsideTheStoreAndIsAcceptedAsOneStep)
{
    TextStore store;
    TextBuilder builder;
    builder.append(u"alpha alps beta\n");
    store.setLoadedText(builder.finish());
    TextArea area;
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setPixelSize(12);
    area.setTextFont(font);
    area.setTextStore(&store);
    area.resize(320, 120);
    area.show();
    area.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&area));
    area.setFocus();
    auto* completion = new TextAreaCompletion(&area);

    area.setCursorPosition(store.text().length());
    QTest::keyClicks(&area, QStringLiteral("al"));
    store.setClean();
    const QString typed = store.text().string();
    const int steps = store.undoStack()->count();

    QTest::keyClick(&area, Qt::Key_Space, Qt::ControlModifier);
    EXPECT_EQ(completion->words().candidates(),
              QStringList({QStringLiteral("alpha"), QStringLiteral("alps")}));
    EXPECT_EQ(area.proposedText(), QStringLiteral("pha"));
    // The line is laid out with the proposal in it, the caret before it; the store never
    // sees it.
    QTest::keyClick(&area, Qt::Key_Down);
    EXPECT_EQ(area.proposedText(), QStringLiteral("ps"));
    EXPECT_EQ(area.textLayout().cache().layout(1, 0).layout.text(), QStringLiteral("alps"));
    EXPECT_EQ(area.cursorPosition(), typed.size());
    EXPECT_EQ(store.text().string(), typed);
    EXPECT_FALSE(store.isModified());
    EXPECT_EQ(store.undoStack()->count(), steps);

    QTest::keyClick(&area, Qt::Key_Return);
    EXPECT_EQ(store.text().string(), typed + QStringLiteral("ps"));
    EXPECT_EQ(area.cursorPosition(), typed.size() + 2);
    EXPECT_TRUE(area.proposedText().isEmpty());
    EXPECT_EQ(area.textLayout().cache().layout(1, 0).layout.text(), QStringLiteral("alps"));
    EXPECT_EQ(store.undoStack()->count(), steps + 1);
    store.undo();
    EXPECT_EQ(store.text().string(), typed);
    EXPECT_FALSE(store.isModified());

    // A typed letter goes into the text and the proposal follows the longer word; Escape
    // leaves the word as typed, with nothing shown after it.
    QTest::keyClick(&area, Qt::Key_Space, Qt::ControlModifier);
    EXPECT_EQ(area.proposedText(), QStringLiteral("pha"));
    QTest::keyClick(&area, Qt::Key_P);
    QCoreApplication::processEvents();
    EXPECT_EQ(area.proposedText(), QStringLiteral("ha"));
    QTest::keyClick(&area, Qt::Key_Escape);
    EXPECT_TRUE(area.proposedText().isEmpty());
    EXPECT_EQ(area.textLayout().cache().layout(1, 0).layout.text(), QStringLiteral("alp"));
    EXPECT_EQ(store.text().string(), typed + u'p');
}
