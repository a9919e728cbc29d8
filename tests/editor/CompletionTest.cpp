#include "EditorTestSupport.h"
#include "editor/CompletionManager.h"
#include "editor/CompletionPanel.h"
#include "editor/TextLayoutCache.h"
#include "editor/TextView.h"
#include "platform/PropertyList.h"
#include "syntax/CompletionCandidates.h"
#include "syntax/CompletionWordIndex.h"

#include <QInputMethodEvent>
#include <QListWidget>
#include <QRandomGenerator>
#include <QTest>

#include <gtest/gtest.h>

#include <memory>

namespace {

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

EditorSettings completionSettings(bool autoComplete)
{
    EditorSettings settings = EditorTest::shippedSettings();
    settings.autoComplete = autoComplete;
    return settings;
}

/// A pane in a C file with the insertion point at the end of `text`.
struct Completing : EditorTest::Pane {
    CompletionManager& manager = CompletionManager::sharedCompletionManager();

    explicit Completing(const QString& text, bool autoComplete = false)
        : Pane(text, completionSettings(autoComplete), QSize(500, 300))
    {
        view()->setSyntaxDictionary(cDefinition());
        select({text.size(), 0});
    }
    ~Completing() { manager.terminateCompletion(); }
    bool panelShown() { return manager.panel()->isVisible(); }
};

QString randomText(QRandomGenerator& random, const QList<QString>& pieces, int count)
{
    QString text;
    for (int i = 0; i < count; ++i) {
        text += pieces[random.bounded(pieces.size())];
    }
    return text;
}

TEST(Completion, WordIndexFollowsEditsAsAReadingOfTheWholeTextWould)
{
    // Words equal but for case (their order is that of their first appearance), words that
    // end at the end of the text, boundaries of every kind, chunks of a few characters.
    const QList<QString> pieces = {
        "a",     "B",  "ab",  "Ab",     "AB",         "s",      "_",  "|",     ")",    "(",
        " ",     "\n", "\n",  "0",      "é",          "\u212a", "Sk", "x_1",   "prin", "print",
        "Print", "PR", "INT", "\u0301", "\U0001d400", "\t",     ".",  "printf"};
    const QStringList prefixes = {"a", "A", "p", "pr", "S", "_", "|", "x", "é", "i"};
    const QStringList completeWords = {"print", "pr", "ab", "Abc"};
    QRandomGenerator random(11);
    for (const auto kind :
         {CompletionWordScanner::Kind::Pattern, CompletionWordScanner::Kind::Plain}) {
        const QVariantMap definition =
            kind == CompletionWordScanner::Kind::Pattern
                ? QVariantMap{{QStringLiteral("Name"), QStringLiteral("C")}}
                : QVariantMap();
        for (int round = 0; round < 40; ++round) {
            QString text = randomText(random, pieces, random.bounded(0, 300));
            CompletionWordIndex index(kind);
            index.setChunkSize(random.bounded(1, 40));
            index.build(text);
            for (int edit = 0; edit < 40; ++edit) {
                const qsizetype location = random.bounded(text.size() + 1);
                const qsizetype removed =
                    random.bounded(std::min<qsizetype>(text.size() - location, 30) + 1);
                const QString inserted = randomText(random, pieces, random.bounded(0, 8));
                text.replace(location, removed, inserted);
                index.textDidChange(location, removed, inserted.size());
                // Now and then several edits before the words are read again.
                if (random.bounded(3) == 0) {
                    continue;
                }
                ASSERT_TRUE(index.update(text));
                for (const QString& prefix : prefixes) {
                    ASSERT_EQ(
                        CompletionCandidates::completionsFromTextWords(
                            index.wordsForPartialWord(prefix), prefix, definition, completeWords),
                        CompletionCandidates::completionsForPartialWord(text, prefix, definition,
                                                                        completeWords))
                        << "text \"" << text.toStdString() << "\", prefix " << prefix.toStdString();
                }
            }
        }
    }
    // A length the changes told do not add up to is refused.
    CompletionWordIndex index;
    index.build(u"one two ");
    EXPECT_FALSE(index.update(u"one two three "));
}

TEST(Completion, StepAcceptAndCancel)
{
    Completing pane(QStringLiteral("print printf Print\npr"));
    QTest::keyClick(pane.view(), Qt::Key_Escape);
    ASSERT_TRUE(pane.panelShown());
    const QStringList rows = shownCandidates();
    ASSERT_EQ(rows.size(), 3);
    EXPECT_EQ(rows[2], QStringLiteral("printf"));
    // The rest of the first candidate is laid out after the typed letters, not put in the
    // text, and the caret stays before it.
    EXPECT_EQ(pane.text(), QStringLiteral("print printf Print\npr"));
    EXPECT_EQ(pane.view()->proposedCompletion(), rows[0].mid(2));
    TextLayoutCache& lines = pane.view()->textLayout().cache();
    EXPECT_EQ(lines.layout(1, 0).layout.text(), QStringLiteral("pr") + rows[0].mid(2));
    EXPECT_EQ(pane.view()->selectedRange(), Range(21, 0));
    QTest::keyClick(pane.view(), Qt::Key_Down);
    QTest::keyClick(pane.view(), Qt::Key_Down);
    EXPECT_EQ(pane.view()->proposedCompletion(), QStringLiteral("intf"));
    QTest::keyClick(pane.view(), Qt::Key_Up);
    EXPECT_EQ(pane.view()->proposedCompletion(), rows[1].mid(2));

    // Escape leaves exactly the typed word.
    QTest::keyClick(pane.view(), Qt::Key_Escape);
    EXPECT_FALSE(pane.panelShown());
    EXPECT_EQ(pane.text(), QStringLiteral("print printf Print\npr"));
    EXPECT_EQ(lines.layout(1, 0).layout.text(), QStringLiteral("pr"));
    EXPECT_EQ(pane.view()->selectedRange(), Range(21, 0));

    // Typing narrows the list; Tab accepts with the insertion point after the word, the
    // whole word when the case typed differs.
    QTest::keyClick(pane.view(), Qt::Key_Escape);
    QTest::keyClicks(pane.view(), QStringLiteral("int"));
    EXPECT_EQ(shownCandidates(), QStringList({"printf"}));
    EXPECT_EQ(pane.view()->proposedCompletion(), QStringLiteral("f"));
    pane.manager.terminateCompletion();
    pane.view()->setSelectedRange({19, 5});
    pane.view()->insertTextAtSelection(QStringLiteral("Pr"));
    QTest::keyClick(pane.view(), Qt::Key_Escape);
    QTest::keyClick(pane.view(), Qt::Key_Tab);
    EXPECT_FALSE(pane.panelShown());
    EXPECT_EQ(pane.text(), QStringLiteral("print printf Print\n") + rows[0]);
    EXPECT_EQ(pane.view()->selectedRange(), Range(24, 0));

    // A space cancels and is typed.
    pane.view()->insertTextAtSelection(QStringLiteral(" PR"));
    QTest::keyClick(pane.view(), Qt::Key_Escape);
    ASSERT_TRUE(pane.panelShown());
    QTest::keyClick(pane.view(), Qt::Key_Space);
    EXPECT_TRUE(pane.text().endsWith(QStringLiteral(" PR ")));
    EXPECT_FALSE(pane.panelShown());
}

TEST(Completion, OnlyAnAcceptedWordReachesTheTextAndTheUndoStack)
{
    Completing pane(QStringLiteral("print printf Print\n"), true);
    ASSERT_FALSE(pane.document.canUndo());

    // After the pause the list is open and the rest of a word shown: the text, its undo
    // stack and its modified state are those of the typing alone.
    QTest::keyClicks(pane.view(), QStringLiteral("pr"));
    ASSERT_TRUE(QTest::qWaitFor([&] { return pane.panelShown(); }, 3000));
    EXPECT_EQ(shownCandidates(), QStringList({"print", "Print", "printf"}));
    EXPECT_FALSE(pane.view()->proposedCompletion().isEmpty());
    EXPECT_EQ(pane.text(), QStringLiteral("print printf Print\npr"));
    // As a save leaves it: the shown proposal does not make the text modified again.
    pane.document.setDocumentEdited(false);
    QTest::qWait(1000);
    EXPECT_FALSE(pane.document.isDocumentEdited());
    // Ctrl+Z takes back the typing at once, and that was the only step.
    QTest::keyClick(pane.view(), Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(pane.text(), QStringLiteral("print printf Print\n"));
    EXPECT_FALSE(pane.document.canUndo());
    EXPECT_FALSE(pane.panelShown());
    EXPECT_TRUE(pane.view()->proposedCompletion().isEmpty());

    // Return accepts, as one undo step of its own.
    QTest::keyClicks(pane.view(), QStringLiteral("printf"));
    QTest::keyClick(pane.view(), Qt::Key_Backspace);
    QTest::keyClick(pane.view(), Qt::Key_Escape);
    ASSERT_TRUE(pane.panelShown());
    EXPECT_EQ(pane.view()->proposedCompletion(), QStringLiteral("f"));
    QTest::keyClick(pane.view(), Qt::Key_Return);
    EXPECT_FALSE(pane.panelShown());
    EXPECT_EQ(pane.text(), QStringLiteral("print printf Print\nprintf"));
    EXPECT_EQ(pane.view()->selectedRange(), Range(25, 0));
    QTest::keyClick(pane.view(), Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(pane.text(), QStringLiteral("print printf Print\nprint"));

    // Ctrl+Space starts completion as Escape does; a change made elsewhere ends it.
    pane.view()->setAutoComplete(false);
    QTest::keyClick(pane.view(), Qt::Key_Space, Qt::ControlModifier);
    ASSERT_TRUE(pane.panelShown());
    EXPECT_EQ(pane.view()->proposedCompletion(), QStringLiteral("f"));
    pane.document.replaceRanges({Range(0, 0)}, QStringLiteral("// "), QString());
    EXPECT_FALSE(pane.panelShown());
    EXPECT_TRUE(pane.view()->proposedCompletion().isEmpty());
    EXPECT_EQ(pane.text(), QStringLiteral("// print printf Print\nprint"));

    // Never by itself while an input method is composing, though the word has candidates.
    pane.view()->setAutoComplete(true);
    pane.view()->insertTextAtSelection(QStringLiteral("\npr"));
    QInputMethodEvent composing(QStringLiteral("k"), {});
    QCoreApplication::sendEvent(pane.view(), &composing);
    ASSERT_TRUE(pane.view()->hasMarkedText());
    QTest::keyClicks(pane.view(), QStringLiteral("i"));
    QTest::qWait(1000);
    EXPECT_FALSE(pane.panelShown());
}

} // namespace
