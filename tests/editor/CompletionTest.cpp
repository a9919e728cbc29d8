#include "editor/CompletionManager.h"
#include "editor/CompletionPanel.h"
#include "editor/EditorController.h"
#include "editor/TextView.h"
#include "platform/PropertyList.h"
#include "platform/UserDefaults.h"
#include "syntax/SyntaxManager.h"

#include <QElapsedTimer>
#include <QInputMethodEvent>
#include <QListWidget>
#include <QScreen>
#include <QTest>
#include <QTextDocument>

#include <gtest/gtest.h>

#include <functional>
#include <memory>

namespace {

/// Runs the event loop until `condition` holds or `milliseconds` pass.
bool waitUntil(const std::function<bool()>& condition, int milliseconds)
{
    QElapsedTimer timer;
    timer.start();
    while (!condition()) {
        if (timer.elapsed() > milliseconds) {
            return false;
        }
        QTest::qWait(10);
    }
    return true;
}

QVariantMap cDefinition()
{
    return PropertyList::readFile(QStringLiteral(":/SyntaxDefinition/C.plist")).toMap();
}

QStringList shownCandidates()
{
    QStringList rows;
    QListWidget* table = CompletionManager::sharedCompletionManager().tableView();
    for (int i = 0; i < table->count(); ++i) {
        rows.append(table->item(i)->text());
    }
    return rows;
}

/// A pane in a C file with the insertion point at the end of `text`.
struct Completing {
    QTextDocument document;
    std::unique_ptr<EditorController> pane;
    TextView* view = nullptr;
    CompletionManager& manager = CompletionManager::sharedCompletionManager();

    explicit Completing(const QString& text, bool autoComplete = false)
    {
        UserDefaults::standardUserDefaults().setObject(autoComplete,
                                                       QStringLiteral("AutoComplete"));
        document.setPlainText(text);
        pane = std::make_unique<EditorController>();
        pane->setupInitialTextViewSharedStateWithTextStorage(&document);
        view = pane->textView();
        view->setSyntaxDictionary(cDefinition());
        view->resize(500, 300);
        view->show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(view));
        view->setSelectedRange({text.size(), 0});
        UserDefaults::standardUserDefaults().removeObjectForKey(QStringLiteral("AutoComplete"));
    }
    ~Completing() { manager.terminateCompletion(); }
    QString text() const { return document.toPlainText(); }
    bool panelShown() { return manager.panel()->isVisible(); }
};

TEST(Completion, DefinitionWordsAreBuiltOnAWorkerThread)
{
    Completing pane{QString()};
    pane.view->makeCompleteWordsFromSyntaxDictionary();
    EXPECT_TRUE(pane.view->completeWords().isEmpty());
    ASSERT_TRUE(waitUntil([&] { return !pane.view->completeWords().isEmpty(); }, 5000));
    const QStringList words = pane.view->completeWords();
    const QVariantMap definition = cDefinition();
    const qsizetype keywords = definition.value("Keywords").toList().size();
    const qsizetype commands = definition.value("Commands").toList().size();
    EXPECT_EQ(words.size(), keywords + commands + definition.value("Values").toList().size());
    EXPECT_EQ(words.first(), definition.value("Keywords").toList().first().toString());
    EXPECT_EQ(words[keywords], definition.value("Commands").toList().first().toString());

    // While another build runs, a build gives none.
    SyntaxManager::sharedSyntaxManager().setIsCompleteLoop(true);
    pane.view->makeCompleteWordsFromSyntaxDictionary();
    QTest::qWait(200);
    EXPECT_TRUE(pane.view->completeWords().isEmpty());
    SyntaxManager::sharedSyntaxManager().setIsCompleteLoop(false);
}

TEST(Completion, StepAcceptAndCancel)
{
    Completing pane(QStringLiteral("print printf Print\npr"));
    QTest::keyClick(pane.view, Qt::Key_Escape);
    ASSERT_TRUE(pane.panelShown());
    EXPECT_TRUE(pane.manager.isComplating(pane.view));
    const QStringList rows = shownCandidates();
    ASSERT_EQ(rows.size(), 3);
    EXPECT_EQ(rows[2], QStringLiteral("printf"));
    // The first candidate stands in the text, its rest selected and drawn grey.
    EXPECT_EQ(pane.text(), QStringLiteral("print printf Print\n") + rows[0]);
    EXPECT_EQ(pane.view->selectedRange(), Range(21, 3));
    EXPECT_EQ(pane.view->palette().color(QPalette::HighlightedText), QColor(Qt::lightGray));

    QTest::keyClick(pane.view, Qt::Key_Down);
    QTest::keyClick(pane.view, Qt::Key_Down);
    EXPECT_EQ(pane.text(), QStringLiteral("print printf Print\nprintf"));
    QTest::keyClick(pane.view, Qt::Key_Down);
    EXPECT_EQ(pane.manager.tableView()->currentRow(), 2);
    QTest::keyClick(pane.view, Qt::Key_Up);
    EXPECT_EQ(pane.text(), QStringLiteral("print printf Print\n") + rows[1]);

    // Escape restores exactly the typed word.
    QTest::keyClick(pane.view, Qt::Key_Escape);
    EXPECT_FALSE(pane.panelShown());
    EXPECT_FALSE(pane.manager.isComplating(pane.view));
    EXPECT_EQ(pane.text(), QStringLiteral("print printf Print\npr"));
    EXPECT_EQ(pane.view->selectedRange(), Range(21, 0));
    EXPECT_NE(pane.view->palette().color(QPalette::Highlight), QColor(Qt::transparent));

    // Typing narrows the list; Tab accepts with the insertion point after the word.
    QTest::keyClick(pane.view, Qt::Key_Escape);
    QTest::keyClicks(pane.view, QStringLiteral("int"));
    EXPECT_EQ(shownCandidates(), QStringList({"printf"}));
    EXPECT_EQ(pane.manager.currentPartialWord(), QStringLiteral("print"));
    EXPECT_EQ(pane.text(), QStringLiteral("print printf Print\nprintf"));
    pane.manager.terminateCompletion();
    pane.view->setSelectedRange({19, 6});
    pane.view->textCursor().insertText(QStringLiteral("Pr"));
    QTest::keyClick(pane.view, Qt::Key_Escape);
    QTest::keyClick(pane.view, Qt::Key_Tab);
    EXPECT_FALSE(pane.panelShown());
    EXPECT_EQ(pane.text(), QStringLiteral("print printf Print\n") + rows[0]);
    EXPECT_EQ(pane.view->selectedRange(), Range(24, 0));

    // A space cancels and is typed.
    pane.view->textCursor().insertText(QStringLiteral(" PR"));
    QTest::keyClick(pane.view, Qt::Key_Escape);
    ASSERT_TRUE(pane.panelShown());
    QTest::keyClick(pane.view, Qt::Key_Space);
    EXPECT_TRUE(pane.text().endsWith(QStringLiteral(" PR ")));
    EXPECT_FALSE(pane.panelShown());
}

TEST(Completion, NoCandidatesLeavesTheTextAsTyped)
{
    Completing pane(QStringLiteral("alpha beta\nzq"));
    QTest::keyClick(pane.view, Qt::Key_Escape);
    EXPECT_FALSE(pane.panelShown());
    EXPECT_FALSE(pane.manager.isComplating(pane.view));
    EXPECT_EQ(pane.text(), QStringLiteral("alpha beta\nzq"));
}

TEST(Completion, PanelGeometry)
{
    QString text;
    for (int i = 0; i < 12; ++i) {
        text += QStringLiteral("word%1 ").arg(i);
    }
    Completing pane(text + QStringLiteral("\nwo"));
    const QRect screen = pane.view->screen()->geometry();
    pane.view->move(screen.left() + 20, screen.top() + 20);
    QTest::qWait(50);
    QTest::keyClick(pane.view, Qt::Key_Escape);
    ASSERT_TRUE(pane.panelShown());
    CompletionPanel* panel = pane.manager.panel();
    EXPECT_EQ(shownCandidates().size(), 12);
    // Eight rows at most; the panel hangs below the partial word.
    EXPECT_EQ(panel->height(),
              panel->rowHeight() * CompletionManager::MaximumRows + panel->chromeHeight());
    EXPECT_GE(panel->width(), 200);
    // Fewer rows, a smaller list.
    QTest::keyClicks(pane.view, QStringLiteral("rd1"));
    ASSERT_EQ(shownCandidates(), QStringList({"word10", "word11"}));
    EXPECT_EQ(panel->height(), panel->rowHeight() * 2 + panel->chromeHeight());
    QTest::keyClick(pane.view, Qt::Key_Escape);
    pane.view->setSelectedRange({text.size() + 1, 5});
    pane.view->textCursor().insertText(QStringLiteral("wo"));
    QTest::keyClick(pane.view, Qt::Key_Escape);
    QTextCursor start(&pane.document);
    start.setPosition(int(text.size()) + 1);
    const QRect word = pane.view->cursorRect(start);
    const QPoint wordBottom = pane.view->viewport()->mapToGlobal(word.bottomLeft());
    EXPECT_GE(panel->y(), wordBottom.y());
    EXPECT_NEAR(panel->x(), wordBottom.x() - 2, 1);
    QTest::keyClick(pane.view, Qt::Key_Escape);

    // Near the bottom of the screen it stands above the line.
    pane.view->move(screen.left() + 20, screen.bottom() - 60);
    QTest::qWait(50);
    QTest::keyClick(pane.view, Qt::Key_Escape);
    ASSERT_TRUE(pane.panelShown());
    const QPoint wordTop =
        pane.view->viewport()->mapToGlobal(pane.view->cursorRect(start).topLeft());
    EXPECT_LE(panel->geometry().bottom(), wordTop.y());
}

TEST(Completion, StartsByItselfAfterTyping)
{
    Completing pane(QStringLiteral("print printf\n"), true);
    QTest::keyClicks(pane.view, QStringLiteral("pr"));
    QTest::qWait(300);
    EXPECT_FALSE(pane.panelShown());
    ASSERT_TRUE(waitUntil([&] { return pane.panelShown(); }, 2000));
    EXPECT_EQ(shownCandidates(), QStringList({"print", "printf"}));
    QTest::keyClick(pane.view, Qt::Key_Escape);
    EXPECT_EQ(pane.text(), QStringLiteral("print printf\npr"));

    // Never while an input method is composing.
    QInputMethodEvent composing(QStringLiteral("k"), {});
    QCoreApplication::sendEvent(pane.view, &composing);
    ASSERT_TRUE(pane.view->hasMarkedText());
    QTest::keyClicks(pane.view, QStringLiteral("i"));
    QTest::qWait(1000);
    EXPECT_FALSE(pane.panelShown());
}

} // namespace
