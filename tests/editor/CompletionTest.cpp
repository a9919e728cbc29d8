#include "EditorTestSupport.h"
#include "editor/CompletionDocumentWords.h"
#include "editor/CompletionManager.h"
#include "editor/CompletionPanel.h"
#include "editor/EditorController.h"
#include "editor/TextLayoutCache.h"
#include "editor/TextView.h"
#include "platform/PropertyList.h"
#include "syntax/CompletionCandidates.h"
#include "syntax/CompletionWordIndex.h"
#include "syntax/SyntaxManager.h"

#include <QInputMethodEvent>
#include <QListWidget>
#include <QPaintEvent>
#include <QRandomGenerator>
#include <QScreen>
#include <QScrollBar>
#include <QTest>

#include <gtest/gtest.h>

#include <functional>
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

TEST(Completion, KeystrokesReadOnlyTheTextTheyChange)
{
    QString text;
    for (int i = 0; i < 40000; ++i) {
        text += QStringLiteral("alpha%1 beta_%2 = printf(x);\n").arg(i % 997).arg(i);
    }
    Completing pane(text, true);
    CompletionDocumentWords* words = nullptr;
    ASSERT_TRUE(QTest::qWaitFor(
        [&] {
            words = CompletionDocumentWords::existing(pane.document.textStore());
            return words && words->prepare();
        },
        20000));
    const int builds = words->builds();
    const qint64 scanned = words->scannedCharacters();

    // By hand, then by itself after a pause; the list follows the keys.
    QTest::keyClicks(pane.view(), QStringLiteral("pr"));
    QTest::keyClick(pane.view(), Qt::Key_Escape);
    ASSERT_TRUE(pane.panelShown());
    EXPECT_EQ(shownCandidates().first(), QStringLiteral("printf"));
    QTest::keyClicks(pane.view(), QStringLiteral("i"));
    EXPECT_TRUE(pane.panelShown());
    QTest::keyClick(pane.view(), Qt::Key_Tab);
    QTest::keyClicks(pane.view(), QStringLiteral(" alpha99"));
    ASSERT_TRUE(QTest::qWaitFor([&] { return pane.panelShown(); }, 3000));
    EXPECT_EQ(shownCandidates().first(), QStringLiteral("alpha990"));
    QTest::keyClick(pane.view(), Qt::Key_Escape);

    // Neither a new reading of the whole text nor more than a few chunks of it per key.
    EXPECT_EQ(words->builds(), builds);
    EXPECT_LT(words->scannedCharacters() - scanned, text.size() / 20);
    EXPECT_EQ(pane.text(), text + QStringLiteral("printf alpha99"));
}

TEST(Completion, DefinitionWordsAreBuiltOnAWorkerThread)
{
    Completing pane{QString()};
    // Taking the definition started a build: one started while it runs would give none.
    ASSERT_TRUE(QTest::qWaitFor([&] { return !pane.view()->completeWords().isEmpty(); }, 5000));
    pane.view()->makeCompleteWordsFromSyntaxDictionary();
    EXPECT_TRUE(pane.view()->completeWords().isEmpty());
    ASSERT_TRUE(QTest::qWaitFor([&] { return !pane.view()->completeWords().isEmpty(); }, 5000));
    const QStringList words = pane.view()->completeWords();
    const QVariantMap definition = cDefinition();
    const qsizetype keywords = definition.value("Keywords").toList().size();
    const qsizetype commands = definition.value("Commands").toList().size();
    EXPECT_EQ(words.size(), keywords + commands + definition.value("Values").toList().size());
    EXPECT_EQ(words.first(), definition.value("Keywords").toList().first().toString());
    EXPECT_EQ(words[keywords], definition.value("Commands").toList().first().toString());

    // While another build runs, a build gives none.
    SyntaxManager::sharedSyntaxManager().setIsCompleteLoop(true);
    pane.view()->makeCompleteWordsFromSyntaxDictionary();
    QTest::qWait(200);
    EXPECT_TRUE(pane.view()->completeWords().isEmpty());
    SyntaxManager::sharedSyntaxManager().setIsCompleteLoop(false);
}

TEST(Completion, StepAcceptAndCancel)
{
    Completing pane(QStringLiteral("print printf Print\npr"));
    QTest::keyClick(pane.view(), Qt::Key_Escape);
    ASSERT_TRUE(pane.panelShown());
    EXPECT_TRUE(pane.manager.isComplating(pane.view()));
    const QStringList rows = shownCandidates();
    ASSERT_EQ(rows.size(), 3);
    EXPECT_EQ(rows[2], QStringLiteral("printf"));
    // The rest of the first candidate is shown after the typed letters, not put in the text.
    EXPECT_EQ(pane.text(), QStringLiteral("print printf Print\npr"));
    EXPECT_EQ(pane.view()->proposedCompletion(), rows[0].mid(2));
    EXPECT_EQ(pane.view()->selectedRange(), Range(21, 0));

    QTest::keyClick(pane.view(), Qt::Key_Down);
    QTest::keyClick(pane.view(), Qt::Key_Down);
    EXPECT_EQ(pane.view()->proposedCompletion(), QStringLiteral("intf"));
    // The line is laid out with the proposal in it, the caret before it.
    TextLayoutCache& lines = pane.view()->textLayout().cache();
    EXPECT_EQ(lines.layout(1, 0).layout.text(), QStringLiteral("printf"));
    EXPECT_EQ(pane.view()->cursorPosition(), 21);
    QTest::keyClick(pane.view(), Qt::Key_Up);
    EXPECT_EQ(pane.view()->proposedCompletion(), rows[1].mid(2));

    // Escape leaves exactly the typed word.
    QTest::keyClick(pane.view(), Qt::Key_Escape);
    EXPECT_FALSE(pane.panelShown());
    EXPECT_FALSE(pane.manager.isComplating(pane.view()));
    EXPECT_EQ(pane.text(), QStringLiteral("print printf Print\npr"));
    EXPECT_TRUE(pane.view()->proposedCompletion().isEmpty());
    EXPECT_EQ(lines.layout(1, 0).layout.text(), QStringLiteral("pr"));
    EXPECT_EQ(pane.view()->selectedRange(), Range(21, 0));

    // Typing narrows the list; Tab accepts with the insertion point after the word.
    QTest::keyClick(pane.view(), Qt::Key_Escape);
    QTest::keyClicks(pane.view(), QStringLiteral("int"));
    EXPECT_EQ(shownCandidates(), QStringList({"printf"}));
    EXPECT_EQ(pane.manager.currentPartialWord(), QStringLiteral("print"));
    EXPECT_EQ(pane.text(), QStringLiteral("print printf Print\nprint"));
    EXPECT_EQ(pane.view()->proposedCompletion(), QStringLiteral("f"));
    pane.manager.terminateCompletion();
    EXPECT_TRUE(pane.view()->proposedCompletion().isEmpty());
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

    // No candidates: no list, and the text stays as typed.
    QTest::keyClicks(pane.view(), QStringLiteral("zq"));
    QTest::keyClick(pane.view(), Qt::Key_Escape);
    EXPECT_FALSE(pane.panelShown());
    EXPECT_FALSE(pane.manager.isComplating(pane.view()));
    EXPECT_TRUE(pane.text().endsWith(QStringLiteral(" PR zq")));
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

TEST(Completion, EveryCandidateOfALongListCanBeReached)
{
    QString text;
    QStringList candidates;
    for (int i = 0; i < 300; ++i) {
        candidates.append(QStringLiteral("word%1").arg(i, 3, 10, QLatin1Char('0')));
        text += candidates.back() + QLatin1Char(' ');
    }
    Completing pane(text + QStringLiteral("\nwo"));
    QTest::keyClick(pane.view(), Qt::Key_Escape);
    ASSERT_TRUE(pane.panelShown());
    EXPECT_EQ(pane.manager.numberOfRowsInTableView(), 300);
    // Stepping down goes through every candidate in order, past the rows first shown.
    for (int row = 1; row < 300; ++row) {
        QTest::keyClick(pane.view(), Qt::Key_Down);
        ASSERT_EQ(pane.view()->proposedCompletion(), candidates[row].mid(2)) << "row " << row;
    }
    QTest::keyClick(pane.view(), Qt::Key_Down);
    EXPECT_EQ(pane.view()->proposedCompletion(), candidates.back().mid(2));
    QTest::keyClick(pane.view(), Qt::Key_Escape);

    // Scrolling to the end of the list shows its last rows.
    QTest::keyClick(pane.view(), Qt::Key_Escape);
    ASSERT_TRUE(pane.panelShown());
    QScrollBar* bar = pane.manager.tableView()->verticalScrollBar();
    for (int turn = 0; turn < 20; ++turn) {
        bar->setValue(bar->maximum());
        QCoreApplication::processEvents(); // the list lays its new rows out
    }
    EXPECT_EQ(shownCandidates(), candidates);
}

TEST(Completion, PanelGeometry)
{
    QString text;
    for (int i = 0; i < 12; ++i) {
        text += QStringLiteral("word%1 ").arg(i);
    }
    Completing pane(text + QStringLiteral("\nwo"));
    const QRect screen = pane.view()->screen()->geometry();
    pane.view()->move(screen.left() + 20, screen.top() + 20);
    QTest::qWait(50);
    QTest::keyClick(pane.view(), Qt::Key_Escape);
    ASSERT_TRUE(pane.panelShown());
    CompletionPanel* panel = pane.manager.panel();
    EXPECT_EQ(shownCandidates().size(), 12);
    // Eight rows at most; the panel hangs below the partial word.
    EXPECT_EQ(panel->height(),
              panel->rowHeight() * CompletionManager::MaximumRows + panel->chromeHeight());
    EXPECT_GE(panel->width(), 200);
    // Fewer rows, a smaller list.
    QTest::keyClicks(pane.view(), QStringLiteral("rd1"));
    ASSERT_EQ(shownCandidates(), QStringList({"word10", "word11"}));
    EXPECT_EQ(panel->height(), panel->rowHeight() * 2 + panel->chromeHeight());
    QTest::keyClick(pane.view(), Qt::Key_Escape);
    pane.view()->setSelectedRange({text.size() + 1, 5});
    pane.view()->insertTextAtSelection(QStringLiteral("wo"));
    QTest::keyClick(pane.view(), Qt::Key_Escape);
    const qsizetype start = text.size() + 1;
    const QRect word = pane.view()->rectForPosition(start);
    const QPoint wordBottom = pane.view()->viewport()->mapToGlobal(word.bottomLeft());
    EXPECT_GE(panel->y(), wordBottom.y());
    EXPECT_NEAR(panel->x(), wordBottom.x() - 2, 1);
    QTest::keyClick(pane.view(), Qt::Key_Escape);

    // Near the bottom of the screen it stands above the line.
    pane.view()->move(screen.left() + 20, screen.bottom() - 60);
    QTest::qWait(50);
    QTest::keyClick(pane.view(), Qt::Key_Escape);
    ASSERT_TRUE(pane.panelShown());
    const QPoint wordTop =
        pane.view()->viewport()->mapToGlobal(pane.view()->rectForPosition(start).topLeft());
    EXPECT_LE(panel->geometry().bottom(), wordTop.y());
}

namespace {

/// What a widget was asked to paint, as one rectangle.
struct PaintedArea : QObject {
    QRect area;
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Paint) {
            area |= static_cast<QPaintEvent*>(event)->rect();
        }
        return QObject::eventFilter(watched, event);
    }
};

} // namespace

TEST(Completion, TheProposalRepaintsOnlyItsLine)
{
    Completing pane(QStringLiteral("print printf Print\n").repeated(40) + QStringLiteral("pr"));
    pane.view()->centerCursor();
    PaintedArea painted;
    pane.view()->viewport()->installEventFilter(&painted);
    QTest::keyClick(pane.view(), Qt::Key_Escape);
    ASSERT_TRUE(pane.panelShown());
    QTest::qWait(50);
    const int line = pane.view()->rectForPosition(pane.view()->cursorPosition()).height();
    // Stepping to another candidate, typing a letter that keeps the list open, and
    // taking the proposal away each repaint the line, not the view.
    const std::vector<std::function<void()>> steps{
        [&] { QTest::keyClick(pane.view(), Qt::Key_Down); },
        [&] { QTest::keyClick(pane.view(), Qt::Key_I); },
        [&] { QTest::keyClick(pane.view(), Qt::Key_Escape); },
    };
    for (size_t step = 0; step < steps.size(); ++step) {
        painted.area = QRect();
        steps[step]();
        QTest::qWait(50);
        EXPECT_FALSE(painted.area.isEmpty()) << "step " << step;
        EXPECT_LE(painted.area.height(), 2 * line) << "step " << step;
    }
    EXPECT_FALSE(pane.panelShown());
}

} // namespace
