// Spell checking an editor pane: what it underlines after edits and scrolls, and the guesses
// of its context menu.
#include "editor/SpellCheckingController.h"

#include "EditorTestSupport.h"
#include "document/TextStore.h"
#include "platform/SpellChecker.h"

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

TEST(SpellCheckingController, APaneUnderlinesTheMisspeltWordsItShowsAfterEditsAndScrolls)
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
    EditorTest::Pane pane(initial);
    TextView& view = *pane.view();
    const TextStore& store = *pane.document.textStore();
    SpellCheckingController& spelling = *SpellCheckingController::of(&view);
    spelling.setContinuousSpellCheckingEnabled(true, QStringLiteral("en_US"));

    // Every misspelt word of the shown lines under the viewport is underlined (a line wider
    // than the screen is compared where the screen shows it), and nothing else.
    qsizetype underlinedSeen = 0;
    const auto expectShownUnderlined = [&](const char* step) {
        // Layout requests first (a scroll bar coming or going resizes the viewport), then
        // the check they and the step asked for.
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
        view.viewport()->repaint();
        for (const TextArea::ShownLine& line : view.visibleLines()) {
            // Wrapped, the rows on screen; unwrapped, the columns under the viewport.
            const Range rows = view.visibleCharacterRange();
            const qsizetype end =
                std::min(line.position + store.text().lineLength(line.line), rows.max());
            Range shown(std::max(line.position, rows.location), 0);
            shown.length = end - shown.location;
            if (!view.wrapLines()) {
                const int y = int(std::max<qreal>(line.top, 0) + line.bottom) / 2;
                shown.location = view.positionAt({0, y});
                shown.length = view.positionAt({view.viewport()->width(), y}) - shown.location;
            }
            const auto onScreen = [&](QList<Range> words) {
                words.removeIf([&](Range word) {
                    return word.max() <= shown.location || word.location >= shown.max();
                });
                return words;
            };
            const QList<Range> underlined = onScreen(shownUnderlines(view, line.line));
            ASSERT_EQ(underlined, onScreen(misspeltWords(store.text(), line.line)))
                << step << ", line " << line.line;
            underlinedSeen += underlined.size();
        }
    };
    expectShownUnderlined("shown");
    ASSERT_TRUE(SpellChecker::sharedSpellChecker().hasDictionary());
    ASSERT_FALSE(HasFatalFailure());
    EXPECT_GT(underlinedSeen, 5);
    // Of the wide line, only what the screen shows was checked.
    const qsizetype wideLine = store.text().lineStart(5);
    const QList<Range> wideUnderlines = shownUnderlines(view, 5);
    ASSERT_FALSE(wideUnderlines.isEmpty());
    EXPECT_LT(wideUnderlines.last().max(), wideLine + 200);
    EXPECT_GT(misspeltWords(store.text(), 5).last().location, wideLine + 2000);
    // (The scroll bar learns the line's width once the line is shown, and takes room.)
    view.scrollRangeToVisible({wideLine, 0});
    expectShownUnderlined("horizontal scroll bar");
    view.horizontalScrollBar()->setValue(view.horizontalScrollBar()->maximum() / 2);
    expectShownUnderlined("sideways");
    view.horizontalScrollBar()->setValue(0);
    expectShownUnderlined("back to the left");
    ASSERT_FALSE(HasFatalFailure());

    // Typing a misspelling into a shown line, and a line break that moves the lines below.
    view.setCursorPosition(store.text().lineStart(3));
    QTest::keyClicks(&view, QStringLiteral("Nothnig "));
    expectShownUnderlined("typed");
    QTest::keyClick(&view, Qt::Key_Return);
    expectShownUnderlined("new line");

    // Lines scrolled into view, and then wrapped.
    QScrollBar* bar = view.verticalScrollBar();
    for (const int value : {bar->maximum(), bar->maximum() / 2, 7}) {
        bar->setValue(value);
        expectShownUnderlined("scrolled");
        ASSERT_FALSE(HasFatalFailure());
    }
    view.resize(120, 300);
    view.setWrapLines(true);
    expectShownUnderlined("wrapped");
    ASSERT_FALSE(HasFatalFailure());

    // The dictionary's guesses replace the word under the pointer as one undoable step.
    qsizetype line = view.visibleLines().first().line;
    while (line < store.text().lineCount() && !store.text().line(line).contains(u"sentance")) {
        ++line;
    }
    ASSERT_LT(line, store.text().lineCount());
    const qsizetype word =
        store.text().lineStart(line) + store.text().line(line).indexOf(u"sentance");
    view.scrollRangeToVisible({word, 8});
    expectShownUnderlined("before the menu");
    // A right-click on it: the view's menu, with the guesses above its own items.
    QStringList offered;
    QTimer::singleShot(0, &view, [&] {
        auto* menu = view.findChild<QMenu*>();
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
    const QPoint point = view.rectForPosition(word + 3).center();
    QContextMenuEvent click(QContextMenuEvent::Mouse, point, view.viewport()->mapToGlobal(point));
    QCoreApplication::sendEvent(view.viewport(), &click);
    ASSERT_TRUE(offered.contains(u"sentence"_s)) << offered.join(u", ").toStdString();
    EXPECT_LT(offered.indexOf(u"sentence"_s), offered.indexOf(u"Undo"_s));
    EXPECT_EQ(store.text().string().mid(word, 8), u"sentence");
    expectShownUnderlined("replaced");
    view.undo();
    EXPECT_EQ(store.text().string().mid(word, 8), u"sentance");

    // Off, nothing is underlined.
    spelling.setContinuousSpellCheckingEnabled(false, QStringLiteral("en_US"));
    view.viewport()->repaint();
    for (const TextArea::ShownLine& shown : view.visibleLines()) {
        EXPECT_TRUE(shownUnderlines(view, shown.line).isEmpty());
    }
}
