// Spell checking a text area over a text store: the controller the text view uses.
#include "editor/SpellCheckingController.h"

#include "EditorTestSupport.h"
#include "document/TextStore.h"
#include "editor/SyntaxColoringController.h"
#include "editor/TextArea.h"
#include "editor/TextColorLayers.h"
#include "platform/SpellChecker.h"
#include "syntax/SyntaxManager.h"

#include <QContextMenuEvent>
#include <QMenu>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QScrollBar>
#include <QTimer>

using namespace Qt::StringLiterals;

namespace {

const QStringList kMisspelt{"sentance", "wrongg", "speling"};

/// The stretches of `line` the area drew with a wavy underline at its last paint.
QList<Range> shownUnderlines(TextArea& area, qsizetype line)
{
    TextLayoutCache& cache = area.textLayout().cache();
    const qsizetype start = area.textStore()->text().lineStart(line);
    QList<Range> underlined;
    for (int piece = 0; piece < cache.pieceCount(line); ++piece) {
        if (const TextLayoutCache::Entry* entry = cache.find(line, piece)) {
            for (const QTextLayout::FormatRange& range : entry->formats) {
                if (range.format.underlineStyle() == QTextCharFormat::WaveUnderline) {
                    underlined.append({start + entry->start + range.start, range.length});
                }
            }
        }
    }
    return underlined;
}

/// Where the misspelt words of `line` stand.
QList<Range> misspeltWords(const TextSnapshot& text, qsizetype line)
{
    static const QRegularExpression words(QStringLiteral("\\b(") + kMisspelt.join(u'|') +
                                          QStringLiteral("|Nothnig)\\b"));
    const qsizetype start = text.lineStart(line);
    QList<Range> found;
    for (const QRegularExpressionMatch& match : words.globalMatch(text.line(line))) {
        found.append({start + match.capturedStart(), match.capturedLength()});
    }
    return found;
}

} // namespace

TEST(SpellCheckingController, ATextAreaUnderlinesTheMisspeltWordsItShowsAfterEditsAndScrolls)
{
    const QStringList right{"the", "quick", "brown", "fox", "jumps", "over", "lazy", "dog"};
    QRandomGenerator random(20261124);
    QString initial;
    for (int line = 0; line < 400; ++line) {
        // One line far wider than the screen.
        for (int word = line == 5 ? 600 : random.bounded(3, 7); word > 0; --word) {
            initial += (random.bounded(4) == 0 ? kMisspelt[random.bounded(int(kMisspelt.size()))]
                                               : right[random.bounded(int(right.size()))]) +
                       u' ';
        }
        initial += u'\n';
    }
    TextStore store;
    store.insert(0, initial);
    TextArea area;
    area.resize(420, 300);
    area.setTextStore(&store);
    TextColorLayers layers;
    area.setFormatProvider(&layers);
    // As in a pane, the colouring controller keeps the shared layers in step with the edits.
    SyntaxColoringController coloring(&area, &layers, SyntaxManager::sharedSyntaxManager());
    SpellChecker checker;
    SpellCheckingController spelling(&area, &layers, checker);
    area.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&area));
    spelling.setContinuousSpellCheckingEnabled(true, QStringLiteral("en_US"));

    // Every misspelt word of the shown lines under the viewport is underlined (a line wider
    // than the screen is compared where the screen shows it), and nothing else.
    qsizetype underlinedSeen = 0;
    const auto expectShownUnderlined = [&](const char* step) {
        // Layout requests first (a scroll bar coming or going resizes the viewport), then
        // the check they and the step asked for.
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
        area.viewport()->repaint();
        for (const TextArea::ShownLine& line : area.visibleLines()) {
            // Wrapped, the rows on screen; unwrapped, the columns under the viewport.
            const Range rows = area.visibleCharacterRange();
            const qsizetype end =
                std::min(line.position + store.text().lineLength(line.line), rows.max());
            Range shown(std::max(line.position, rows.location), 0);
            shown.length = end - shown.location;
            if (!area.wrapLines()) {
                const int y = int(std::max<qreal>(line.top, 0) + line.bottom) / 2;
                shown.location = area.positionAt({0, y});
                shown.length = area.positionAt({area.viewport()->width(), y}) - shown.location;
            }
            const auto onScreen = [&](QList<Range> words) {
                words.removeIf([&](Range word) {
                    return word.max() <= shown.location || word.location >= shown.max();
                });
                return words;
            };
            const QList<Range> underlined = onScreen(shownUnderlines(area, line.line));
            ASSERT_EQ(underlined, onScreen(misspeltWords(store.text(), line.line)))
                << step << ", line " << line.line;
            underlinedSeen += underlined.size();
        }
    };
    expectShownUnderlined("shown");
    ASSERT_TRUE(checker.hasDictionary());
    ASSERT_FALSE(HasFatalFailure());
    EXPECT_GT(underlinedSeen, 5);
    // Of the wide line, only what the screen shows was checked.
    const qsizetype wideLine = store.text().lineStart(5);
    const QList<Range> wideUnderlines = shownUnderlines(area, 5);
    ASSERT_FALSE(wideUnderlines.isEmpty());
    EXPECT_LT(wideUnderlines.last().max(), wideLine + 200);
    EXPECT_GT(misspeltWords(store.text(), 5).last().location, wideLine + 2000);
    // (The scroll bar learns the line's width once the line is shown, and takes room.)
    area.scrollRangeToVisible({wideLine, 0});
    expectShownUnderlined("horizontal scroll bar");
    area.horizontalScrollBar()->setValue(area.horizontalScrollBar()->maximum() / 2);
    expectShownUnderlined("sideways");
    ASSERT_FALSE(HasFatalFailure());
    area.horizontalScrollBar()->setValue(0);

    // Typing a misspelling into a shown line, and a line break that moves the lines below.
    area.setCursorPosition(store.text().lineStart(3));
    area.insertTypedText(QStringLiteral("Nothnig "));
    expectShownUnderlined("typed");
    area.insertNewline();
    expectShownUnderlined("new line");

    // Lines scrolled into view, and then wrapped.
    QScrollBar* bar = area.verticalScrollBar();
    for (const int value : {bar->maximum(), bar->maximum() / 2, 7}) {
        bar->setValue(value);
        expectShownUnderlined("scrolled");
        ASSERT_FALSE(HasFatalFailure());
    }
    area.resize(120, 300);
    area.setWrapLines(true);
    expectShownUnderlined("wrapped");
    ASSERT_FALSE(HasFatalFailure());

    // The dictionary's guesses replace the word under the pointer as one undoable step.
    qsizetype line = area.visibleLines().first().line;
    while (line < store.text().lineCount() && !store.text().line(line).contains(u"sentance")) {
        ++line;
    }
    ASSERT_LT(line, store.text().lineCount());
    const qsizetype word =
        store.text().lineStart(line) + store.text().line(line).indexOf(u"sentance");
    area.scrollRangeToVisible({word, 8});
    expectShownUnderlined("before the menu");
    // A right-click on it: the area's menu, with the guesses above its own items.
    QStringList offered;
    QTimer::singleShot(0, &area, [&] {
        auto* menu = area.findChild<QMenu*>();
        if (!menu) {
            return;
        }
        for (QAction* action : menu->actions()) {
            offered.append(action->text());
            if (action->text() == u"sentence") {
                action->trigger();
            }
        }
        menu->close();
    });
    const QPoint point = area.rectForPosition(word + 3).center();
    QContextMenuEvent click(QContextMenuEvent::Mouse, point, area.viewport()->mapToGlobal(point));
    QCoreApplication::sendEvent(area.viewport(), &click);
    ASSERT_TRUE(offered.contains(u"sentence"_s)) << offered.join(u", ").toStdString();
    EXPECT_LT(offered.indexOf(u"sentence"_s), offered.indexOf(u"Undo"_s));
    EXPECT_EQ(store.text().string().mid(word, 8), u"sentence");
    expectShownUnderlined("replaced");
    area.undo();
    EXPECT_EQ(store.text().string().mid(word, 8), u"sentance");

    // Off, nothing is underlined.
    spelling.setContinuousSpellCheckingEnabled(false, QStringLiteral("en_US"));
    area.viewport()->repaint();
    for (const TextArea::ShownLine& shown : area.visibleLines()) {
        EXPECT_TRUE(shownUnderlines(area, shown.line).isEmpty());
    }
}
