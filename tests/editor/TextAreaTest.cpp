#include "editor/TextArea.h"

#include "EditorTestSupport.h"
#include "document/TextBuilder.h"
#include "document/TextStore.h"
#include "editor/TextHeightMap.h"
#include "editor/TextLayoutCache.h"
#include "editor/TextMimeData.h"

#include <QApplication>
#include <QClipboard>
#include <QFontDatabase>
#include <QInputMethodEvent>
#include <QMap>
#include <QMimeData>
#include <QScrollBar>
#include <QTest>

#include <gtest/gtest.h>

#include <memory>
#include <random>

namespace {

TextSnapshot built(QStringView text)
{
    TextBuilder builder;
    builder.append(text);
    return builder.finish();
}

QFont testFont()
{
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setPixelSize(12);
    return font;
}

/// A store and a view of it, shown offscreen with the focus.
struct Pane {
    TextStore store;
    TextArea area;
};

std::unique_ptr<Pane> makePane(const QString& text, bool wrap, QSize size = QSize(320, 200))
{
    auto pane = std::make_unique<Pane>();
    pane->store.setLoadedText(built(text));
    TextArea& area = pane->area;
    area.setTextFont(testFont());
    area.setWrapLines(wrap);
    area.setTextStore(&pane->store);
    area.resize(size);
    area.show();
    area.activateWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(&area));
    area.setFocus();
    QCoreApplication::processEvents();
    return pane;
}

QPoint pointOf(TextArea& area, qsizetype position)
{
    const QRect caret = area.rectForPosition(position);
    return {caret.x() + 1, caret.y() + caret.height() / 2};
}

QImage shot(TextArea& area)
{
    return area.viewport()->grab().toImage().convertToFormat(QImage::Format_RGB32);
}

QString lines(int count, const QString& pattern)
{
    QString text;
    for (int i = 0; i < count; ++i) {
        text += pattern.arg(i) + u'\n';
    }
    return text;
}

} // namespace

TEST(TextAreaTest, AChangeDropsTheLayoutsOfExactlyTheLinesItTouches)
{
    // 30 short lines, then a line of 20,000 units in pieces, then 3 short lines.
    const QString longLine = u"abcd "_qs.repeated(4000);
    const QString text = lines(30, QStringLiteral("line %1")) + longLine + u'\n' +
                         lines(3, QStringLiteral("tail %1"));
    struct Case {
        const char* name;
        qsizetype line;
        qsizetype column;
        qsizetype removed;
        QString added;
        /// Lines (new numbering) expected without a layout; every other line keeps its.
        QList<qsizetype> dropped;
        /// Pieces of the long line (new numbering) expected to keep their layouts.
        int longLine;
        int keptPieces;
    };
    const Case cases[] = {
        {"typing in a line", 5, 3, 0, u"x"_qs, {5}, 30, 5},
        {"a line break in a line", 5, 3, 0, u"\n"_qs, {5, 6}, 31, 5},
        {"two lines joined", 7, 6, 1, {}, {7}, 29, 5},
        {"three lines removed", 2, 0, 21, {}, {2}, 27, 5},
        {"typing far into the long line", 30, 15000, 0, u"y"_qs, {}, 30, 3},
        {"typing at the long line's start", 30, 0, 0, u"y"_qs, {}, 30, 0},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.name);
        TextStore store;
        store.setLoadedText(built(text));
        TextLayoutCache cache;
        TextLayoutCache::Style style;
        style.font = testFont();
        style.wrap = true;
        style.wrapWidth = 300;
        cache.setStyle(style);
        cache.setText(store.text());
        QObject::connect(&store, &TextStore::contentsChange, [&](const TextChange& change) {
            cache.textChanged(change, store.text());
        });
        for (qsizetype line = 0; line < store.text().lineCount(); ++line) {
            for (int piece = 0; piece < cache.pieceCount(line); ++piece) {
                cache.layout(line, piece);
            }
        }
        ASSERT_EQ(cache.pieceCount(30), 5);

        const qsizetype at = store.text().lineStart(test.line) + test.column;
        ASSERT_TRUE(store.replace(at, test.removed, test.added));
        const TextSnapshot& now = store.text();
        for (qsizetype line = 0; line < now.lineCount(); ++line) {
            if (line == test.longLine) {
                for (int piece = 0; piece < cache.pieceCount(line); ++piece) {
                    EXPECT_EQ(cache.find(line, piece) != nullptr, piece < test.keptPieces)
                        << "piece " << piece;
                }
                continue;
            }
            EXPECT_EQ(cache.find(line, 0) == nullptr, test.dropped.contains(line)) << line;
        }
        // What was kept moved with its line: each layout still shows its piece's text.
        for (qsizetype line : cache.cachedLines()) {
            for (int piece = 0; piece < cache.pieceCount(line); ++piece) {
                if (const TextLayoutCache::Entry* entry = cache.find(line, piece)) {
                    const TextLayoutCache::PieceColumns columns = cache.pieceColumns(line, piece);
                    EXPECT_EQ(entry->start, columns.start);
                    EXPECT_EQ(entry->layout.text(),
                              now.text(Range(now.lineStart(line) + columns.start, columns.length)))
                        << "line " << line << " piece " << piece;
                }
            }
        }
    }
}

TEST(TextAreaTest, HeightMapAgreesWithAFullPassOverTheLines)
{
    // Rows by a simple rule, corrections for laid-out lines, random edits small and large:
    // the sums must be those of a pass over every line.
    const auto estimate = [](qsizetype length) { return 1 + length / 7; };
    std::mt19937 random(7);
    const auto number = [&](qsizetype low, qsizetype high) {
        return std::uniform_int_distribution<qsizetype>(low, high)(random);
    };
    const auto randomText = [&](qsizetype lineCount) {
        QString text;
        for (qsizetype i = 0; i < lineCount; ++i) {
            text += QString(number(0, 40), u'x') + u'\n';
        }
        return text + QString(number(0, 40), u'y');
    };
    QString model = randomText(5000);
    QMap<qsizetype, qsizetype> corrections;
    TextStore store;
    store.setLoadedText(built(model));
    TextHeightMap heights;
    heights.reset(store.text(), estimate);
    QObject::connect(&store, &TextStore::contentsChange, [&](const TextChange& change) {
        heights.textChanged(change, store.text());
        QMap<qsizetype, qsizetype> moved;
        for (auto it = corrections.cbegin(); it != corrections.cend(); ++it) {
            if (it.key() < change.firstLine) {
                moved.insert(it.key(), it.value());
            } else if (it.key() > change.firstLine + change.linesRemoved) {
                moved.insert(it.key() + change.linesAdded - change.linesRemoved, it.value());
            }
        }
        corrections = moved;
    });
    const auto reference = [&] {
        std::vector<qsizetype> rows;
        const QStringList all = model.split(u'\n');
        for (qsizetype line = 0; line < all.size(); ++line) {
            rows.push_back(corrections.value(line, estimate(all[line].size())));
        }
        return rows;
    };
    for (int op = 0; op < 120; ++op) {
        const qsizetype position = number(0, model.size());
        const qsizetype removed =
            std::min(model.size() - position, number(0, op % 10 == 0 ? 30000 : 60));
        const QString added =
            op % 15 == 0 ? randomText(number(1000, 3000)) : randomText(number(0, 2));
        ASSERT_TRUE(store.replace(position, removed, added));
        model.replace(position, removed, added);
        for (int i = 0; i < 3; ++i) {
            const qsizetype line = number(0, store.text().lineCount() - 1);
            const qsizetype rows = number(1, 9);
            heights.setRows(line, rows);
            if (rows == estimate(store.text().lineLength(line))) {
                corrections.remove(line);
            } else {
                corrections.insert(line, rows);
            }
        }
        const std::vector<qsizetype> rows = reference();
        const qsizetype line = number(0, qsizetype(rows.size()) - 1);
        qsizetype before = 0;
        for (qsizetype i = 0; i < line; ++i) {
            before += rows[size_t(i)];
        }
        ASSERT_EQ(heights.rowsBefore(line), before) << "op " << op;
        const qsizetype within = number(0, rows[size_t(line)] - 1);
        const TextHeightMap::Place place = heights.lineAtRow(before + within);
        ASSERT_EQ(place.line, line);
        ASSERT_EQ(place.row, within);
        if (op % 20 == 0) {
            heights.measure(std::numeric_limits<qsizetype>::max());
            qsizetype total = 0;
            for (qsizetype r : rows) {
                total += r;
            }
            ASSERT_EQ(heights.totalRows(), total) << "op " << op;
            ASSERT_LE(heights.segmentCount(), qsizetype(rows.size()) / 256 + 2);
        }
    }
}

TEST(TextAreaTest, ScrollingALongTextLaysOutOnlyWhatIsShown)
{
    // 120,000 lines with a long one every 10,000: wrapped and not, Ctrl+End shows the end and
    // lays out about a screen of lines, never the text.
    QString text = lines(120000, QStringLiteral("int value%1 = compute(alpha, beta, gamma);"));
    for (qsizetype at = 10000; at < 120000; at += 10000) {
        const qsizetype start = text.indexOf(u'\n', at * 44) + 1;
        text.insert(start, u"word "_qs.repeated(6000));
    }
    for (bool wrap : {true, false}) {
        SCOPED_TRACE(wrap ? "wrapped" : "unwrapped");
        auto pane = makePane(text, wrap, QSize(300, 240));
        TextArea& area = pane->area;
        const TextLayoutCache& cache = area.textLayout().cache();
        const qint64 before = cache.layoutsMade();
        const int page = area.textLayout().pageRows();
        QTest::keyClick(&area, Qt::Key_End, Qt::ControlModifier);
        area.viewport()->repaint();
        EXPECT_LE(cache.layoutsMade() - before, 4 * page + 10);
        EXPECT_LE(cache.size(), 6 * page + 10);
        EXPECT_EQ(area.visibleCharacterRange().max(), pane->store.text().length());
        EXPECT_EQ(area.verticalScrollBar()->value(), area.verticalScrollBar()->maximum());
    }
}

TEST(TextAreaTest, KeysMoveTheCaretByCharacterWordRowLineAndPage)
{
    // Line 0 wraps over several rows in a view about 20 characters wide.
    const QString text = QStringLiteral("alpha beta gamma delta epsilon zeta eta theta\n"
                                        "short\n"
                                        "\tlast line");
    auto pane = makePane(text, true, QSize(10, 200));
    TextArea& area = pane->area;
    const qreal width = area.textLayout().cache().averageCharWidth() * 20;
    area.resize(int(width) + area.verticalScrollBar()->sizeHint().width() + 10, 200);
    QCoreApplication::processEvents();
    TextAreaLayout& layout = area.textLayout();
    const Range row0 = layout.rowRange({0, 0, 0});
    const Range row1 = layout.rowRange({0, 0, 1});
    ASSERT_GT(row0.length, 0);
    ASSERT_EQ(row1.location, row0.max());
    ASSERT_LT(row1.max(), 45); // line 0 takes three rows or more

    struct Case {
        const char* name;
        TextArea::Selection start;
        Qt::Key key;
        Qt::KeyboardModifiers modifiers;
        TextArea::Selection expected;
    };
    const qsizetype end = text.size();
    const qsizetype row1Start = row1.location;
    const qsizetype row0End = row0.max() - 1;
    const auto at = [](qsizetype position) { return TextArea::Selection{position, position}; };
    const Qt::KeyboardModifiers ctrlShift = Qt::ControlModifier | Qt::ShiftModifier;
    const Case cases[] = {
        {"right", at(0), Qt::Key_Right, {}, at(1)},
        {"shift+right", at(0), Qt::Key_Right, Qt::ShiftModifier, {0, 1}},
        {"right collapses a selection to its end", {2, 5}, Qt::Key_Right, {}, at(5)},
        {"left collapses a selection to its start", {5, 2}, Qt::Key_Left, {}, at(2)},
        {"left over a line end", at(46), Qt::Key_Left, {}, at(45)},
        {"ctrl+right to the next word", at(0), Qt::Key_Right, Qt::ControlModifier, at(6)},
        {"ctrl+left to this word's start", at(8), Qt::Key_Left, Qt::ControlModifier, at(6)},
        {"ctrl+right at a line's end", at(45), Qt::Key_Right, Qt::ControlModifier, at(46)},
        {"ctrl+shift+right", at(0), Qt::Key_Right, ctrlShift, {0, 6}},
        {"home to the row's start", at(row1Start + 2), Qt::Key_Home, {}, at(row1Start)},
        {"home again to the line's start", at(row1Start), Qt::Key_Home, {}, at(0)},
        {"end to the row's end", at(0), Qt::Key_End, {}, at(row0End)},
        {"end again to the line's end", at(row0End), Qt::Key_End, {}, at(45)},
        {"shift+end in the last row", at(47), Qt::Key_End, Qt::ShiftModifier, {47, 51}},
        {"ctrl+home", at(30), Qt::Key_Home, Qt::ControlModifier, at(0)},
        {"ctrl+shift+end", at(3), Qt::Key_End, ctrlShift, {3, end}},
        {"up in the first row", at(3), Qt::Key_Up, {}, at(0)},
        {"down in the last row", at(end - 2), Qt::Key_Down, {}, at(end)},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.name);
        area.setSelections({test.start});
        QTest::keyClick(&area, test.key, test.modifiers);
        EXPECT_EQ(area.selections().first(), test.expected);
    }

    // Down keeps to the column it started from: through a short line and back out of it.
    area.setCursorPosition(4);
    const int x = area.rectForPosition(4).x();
    QTest::keyClick(&area, Qt::Key_Down);
    EXPECT_EQ(layout.rowOf(area.cursorPosition()).row, 1);
    EXPECT_NEAR(area.rectForPosition(area.cursorPosition()).x(), x, 1);
    area.setCursorPosition(text.indexOf(u"zeta") + 2);
    const int zetaX = area.rectForPosition(area.cursorPosition()).x();
    QTest::keyClick(&area, Qt::Key_Down);
    QTest::keyClick(&area, Qt::Key_Down);
    EXPECT_EQ(area.cursorPosition(), text.indexOf(u"short") + 5);
    QTest::keyClick(&area, Qt::Key_Up);
    QTest::keyClick(&area, Qt::Key_Up);
    EXPECT_NEAR(area.rectForPosition(area.cursorPosition()).x(), zetaX, 1);
}

TEST(TextAreaTest, TypingGoesIntoTheStoreAndUndoesThroughIt)
{
    auto pane = makePane(QStringLiteral("one\ntwo"), true);
    TextArea& area = pane->area;
    TextStore& store = pane->store;
    area.setCursorPosition(3);
    QTest::keyClicks(&area, QStringLiteral(" more"));
    QTest::keyClick(&area, Qt::Key_Return);
    QTest::keyClick(&area, Qt::Key_Tab);
    QTest::keyClicks(&area, QStringLiteral("x"));
    EXPECT_EQ(store.text().string(), u"one more\n\tx\ntwo"_qs);
    EXPECT_EQ(area.cursorPosition(), 11);
    QTest::keyClick(&area, Qt::Key_Backspace);
    QTest::keyClick(&area, Qt::Key_Left);
    QTest::keyClick(&area, Qt::Key_Left);
    QTest::keyClick(&area, Qt::Key_Delete);
    EXPECT_EQ(store.text().string(), u"one more\t\ntwo"_qs);
    EXPECT_EQ(area.cursorPosition(), 8);
    EXPECT_TRUE(store.isModified());

    // A selection replaced as one step; undo brings it back at once.
    area.setSelectedRange({0, 3});
    area.insertText(QStringLiteral("ONE"), QStringLiteral("Upper"));
    EXPECT_EQ(store.text().string(), u"ONE more\t\ntwo"_qs);
    QTest::keyClick(&area, Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(store.text().string(), u"one more\t\ntwo"_qs);
    EXPECT_EQ(area.cursorPosition(), 3);

    // Read-only and loading: nothing typed gets in; selecting and copying still work.
    const QString kept = store.text().string();
    for (bool loading : {false, true}) {
        area.setReadOnly(!loading);
        area.setLoading(loading);
        area.setCursorPosition(0);
        QTest::keyClicks(&area, QStringLiteral("zz"));
        QTest::keyClick(&area, Qt::Key_Backspace);
        QTest::keyClick(&area, Qt::Key_Return);
        area.undo();
        EXPECT_EQ(store.text().string(), kept);
        QTest::keyClick(&area, Qt::Key_Right, Qt::ShiftModifier | Qt::ControlModifier);
        QTest::keyClick(&area, Qt::Key_C, Qt::ControlModifier);
        EXPECT_EQ(QGuiApplication::clipboard()->text(), kept.left(4));
    }
}

TEST(TextAreaTest, MouseClicksAndDragsSelect)
{
    QString text = u"first line of text\nsecond line here\n"_qs;
    text += lines(200, QStringLiteral("row %1"));
    auto pane = makePane(text, true, QSize(300, 160));
    TextArea& area = pane->area;
    QWidget* viewport = area.viewport();

    QTest::mouseClick(viewport, Qt::LeftButton, {}, pointOf(area, 6));
    EXPECT_EQ(area.selections().first(), (TextArea::Selection{6, 6}));
    QTest::mouseClick(viewport, Qt::LeftButton, Qt::ShiftModifier, pointOf(area, 23));
    EXPECT_EQ(area.selections().first(), (TextArea::Selection{6, 23}));

    QTest::mousePress(viewport, Qt::LeftButton, {}, pointOf(area, 2));
    QTest::mouseMove(viewport, pointOf(area, 14));
    QTest::mouseRelease(viewport, Qt::LeftButton, {}, pointOf(area, 14));
    EXPECT_EQ(area.selectedRange(), Range(2, 12));

    QTest::mouseDClick(viewport, Qt::LeftButton, {}, pointOf(area, 8));
    EXPECT_EQ(area.selectedRange(), Range(6, 4)); // "line"
    QTest::mouseClick(viewport, Qt::LeftButton, {}, pointOf(area, 8));
    EXPECT_EQ(area.selectedRange(), Range(0, 19)); // the line and its line feed
}

namespace {

QRect rangeRect(TextArea& area, Range range)
{
    const QRect from = area.rectForPosition(range.location);
    const QRect to = area.rectForPosition(range.max());
    return QRect(QPoint(from.left() + 1, from.top() + 2), QPoint(to.left() - 1, to.bottom() - 2));
}

} // namespace

TEST(TextAreaTest, PaintsSelectionAndCaretInTheirColours)
{
    const QString text = u"alpha beta gamma\nx\u2028y\n"_qs;
    auto pane = makePane(text, true);
    TextArea& area = pane->area;
    TextArea::Colors colors;
    colors.text = Qt::black;
    colors.background = Qt::white;
    colors.caret = QColor(0, 160, 0);
    colors.selection = QColor(120, 120, 255);
    area.setColors(colors);
    area.setSelectedRange({0, 5});
    QCoreApplication::processEvents();
    using EditorTest::countPixels;
    EXPECT_GT(countPixels(shot(area), rangeRect(area, {0, 5}), colors.selection, 10), 20);

    // The caret, in its own colour, where it is; the selection it took the place of is gone.
    area.setCursorPosition(12);
    const QImage image = shot(area);
    const QRect caret = area.rectForPosition(12).adjusted(-2, 0, 2, 0);
    EXPECT_GT(countPixels(image, caret, colors.caret, 30), 5);
    EXPECT_EQ(countPixels(image, rangeRect(area, {0, 5}), colors.selection, 10), 0);
    // A line separator is a character of its line, not a row break.
    const qsizetype separator = text.indexOf(u'\u2028');
    EXPECT_EQ(area.rectForPosition(separator).y(), area.rectForPosition(separator + 1).y());
}

TEST(TextAreaTest, InputMethodComposesOutsideTheTextThenCommits)
{
    auto pane = makePane(QStringLiteral("ab\ncd"), true);
    TextArea& area = pane->area;
    area.setCursorPosition(1);
    const QRect before = area.rectForPosition(2);

    QTextCharFormat underline;
    underline.setFontUnderline(true);
    QInputMethodEvent compose(u"かな"_qs, {{QInputMethodEvent::Cursor, 2, 1, {}},
                                           {QInputMethodEvent::TextFormat, 0, 2, underline}});
    QCoreApplication::sendEvent(&area, &compose);
    EXPECT_EQ(pane->store.text().string(), u"ab\ncd"_qs);
    EXPECT_FALSE(pane->store.isModified());
    // Shown in the line: what follows moves right, and the caret stands after the pre-edit.
    EXPECT_GT(area.rectForPosition(2).left(), before.left() + 10);
    const QRect caret =
        area.inputMethodQuery(Qt::ImCursorRectangle).toRect().translated(-area.viewport()->pos());
    EXPECT_GT(caret.left(), area.rectForPosition(1).left() + 10);
    EXPECT_LT(caret.left(), area.rectForPosition(2).left());

    QInputMethodEvent commit;
    commit.setCommitString(u"仮名"_qs);
    QCoreApplication::sendEvent(&area, &commit);
    EXPECT_EQ(pane->store.text().string(), u"a仮名b\ncd"_qs);
    EXPECT_EQ(area.cursorPosition(), 3);
    EXPECT_EQ(area.inputMethodQuery(Qt::ImSurroundingText).toString(), u"a仮名b"_qs);
    EXPECT_EQ(area.inputMethodQuery(Qt::ImCursorPosition).toInt(), 3);
    area.undo();
    EXPECT_EQ(pane->store.text().string(), u"ab\ncd"_qs);
}

TEST(TextAreaTest, ClipboardAndDropsCarryPlainTextWithLineFeeds)
{
    auto pane = makePane(QStringLiteral("one two three"), true);
    TextArea& area = pane->area;
    TextStore& store = pane->store;
    area.setSelectedRange({4, 3});
    area.cut();
    EXPECT_EQ(QGuiApplication::clipboard()->text(), u"two"_qs);
    EXPECT_EQ(store.text().string(), u"one  three"_qs);
    QGuiApplication::clipboard()->setText(u"a\r\nb\rc"_qs);
    area.paste();
    EXPECT_EQ(store.text().string(), u"one a\nb\nc three"_qs);
    EXPECT_EQ(area.cursorPosition(), 9);

    // Text dropped from elsewhere goes in at the drop point; our own selection moves.
    const auto drop = [&](QMimeData* data, qsizetype at, Qt::KeyboardModifiers modifiers) {
        const QPointF point = pointOf(area, at);
        QDragEnterEvent enter(point.toPoint(), Qt::CopyAction | Qt::MoveAction, data,
                              Qt::LeftButton, modifiers);
        QCoreApplication::sendEvent(area.viewport(), &enter);
        QDropEvent dropped(point, Qt::CopyAction | Qt::MoveAction, data, Qt::LeftButton, modifiers);
        QCoreApplication::sendEvent(area.viewport(), &dropped);
        delete data;
    };
    auto* outside = new QMimeData;
    outside->setText(u"X"_qs);
    drop(outside, 0, {});
    EXPECT_EQ(store.text().string(), u"Xone a\nb\nc three"_qs);
    EXPECT_EQ(area.selectedRange(), Range(0, 1));
    area.setSelectedRange({1, 3}); // "one"
    drop(new TextMimeData(store.text(), {1, 3}), 16, {});
    EXPECT_EQ(store.text().string(), u"X a\nb\nc threeone"_qs);
    EXPECT_EQ(area.selectedRange(), Range(13, 3));
    area.undo();
    EXPECT_EQ(store.text().string(), u"Xone a\nb\nc three"_qs);
    area.setSelectedRange({1, 3});
    drop(new TextMimeData(store.text(), {1, 3}), 0, Qt::ControlModifier);
    EXPECT_EQ(store.text().string(), u"oneXone a\nb\nc three"_qs);
}

TEST(TextAreaTest, ALoadingTextGrowsUnderTheViewWithoutMovingIt)
{
    const QString all = lines(3000, QStringLiteral("loaded line %1"));
    auto pane = makePane(QString(), true);
    TextArea& area = pane->area;
    pane->store.setLoadingText(built(QStringView(all).left(2000)),
                               QtFuture::makeReadyFuture(built(all)));
    area.setLoading(true);
    area.setSelectedRange({10, 5});
    QTest::keyClick(&area, Qt::Key_PageDown);
    const qsizetype first = area.firstVisibleLine();
    const TextArea::Selection selection = area.selections().first();
    ASSERT_GT(first, 0);
    QCoreApplication::processEvents();
    EXPECT_FALSE(pane->store.isLoading());
    EXPECT_EQ(area.firstVisibleLine(), first);
    EXPECT_EQ(area.selections().first(), selection);
    QTest::keyClicks(&area, QStringLiteral("q"));
    EXPECT_EQ(pane->store.text().string(), all);
    area.setLoading(false);
    QTest::keyClicks(&area, QStringLiteral("q"));
    EXPECT_EQ(pane->store.text().length(), all.size() + 1);
}

TEST(TextAreaTest, PositionsAndPointsAgreeAcrossThePiecesOfALongLine)
{
    // A line of 30,000 units is laid out in pieces; where they meet, the text runs on as if
    // it were one layout: unwrapped, one character width further; wrapped, on the next row.
    QString line;
    for (int i = 0; line.size() < 30000; ++i) {
        line += QStringLiteral("w%1 ").arg(i % 1000);
    }
    for (bool wrap : {false, true}) {
        SCOPED_TRACE(wrap ? "wrapped" : "unwrapped");
        auto pane = makePane(u"before\n"_qs + line + u"\nafter"_qs, wrap, QSize(400, 300));
        TextArea& area = pane->area;
        TextLayoutCache& cache = area.textLayout().cache();
        ASSERT_GT(cache.pieceCount(1), 6);
        const qreal width = cache.averageCharWidth();
        for (int piece = 1; piece < cache.pieceCount(1); ++piece) {
            const qsizetype edge = 7 + cache.pieceColumns(1, piece).start;
            area.scrollRangeToVisible({edge, 0});
            const QRect last = area.rectForPosition(edge - 1);
            const QRect first = area.rectForPosition(edge);
            // Shown, sideways too when the line is not wrapped.
            EXPECT_GE(first.left(), 0);
            EXPECT_LT(first.right(), area.viewport()->width());
            if (wrap) {
                EXPECT_EQ(first.top(), last.top() + int(area.textLayout().rowHeight()));
            } else {
                EXPECT_EQ(first.top(), last.top());
                EXPECT_NEAR(first.left() - last.left(), width, 1.5) << "piece " << piece;
            }
            for (qsizetype position : {edge - 2, edge, edge + 1}) {
                EXPECT_EQ(area.positionAt(pointOf(area, position)), position) << position;
            }
        }
    }
}
