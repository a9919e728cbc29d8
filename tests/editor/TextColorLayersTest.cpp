#include "editor/TextColorLayers.h"

#include "EditorTestSupport.h"
#include "document/TextBuilder.h"
#include "document/TextStore.h"
#include "editor/LineNumberPainter.h"
#include "editor/TextArea.h"
#include "platform/EditorSettings.h"

#include <QFontDatabase>
#include <QScrollBar>

#include <gtest/gtest.h>

namespace {

/// A format as a reader sees it: where, which colours, whether wavy-underlined.
struct Span {
    int start = 0;
    int length = 0;
    QRgb color = 0;
    bool wavy = false;
    bool operator==(const Span&) const = default;
};

void PrintTo(const Span& span, std::ostream* os)
{
    *os << "{" << span.start << "," << span.length << "," << std::hex << span.color << std::dec
        << (span.wavy ? ",wavy}" : "}");
}

std::vector<Span> spans(const QList<QTextLayout::FormatRange>& formats, bool background)
{
    std::vector<Span> result;
    for (const QTextLayout::FormatRange& range : formats) {
        const QBrush brush = background ? range.format.background() : range.format.foreground();
        result.push_back({range.start, range.length,
                          brush.style() == Qt::NoBrush ? 0 : brush.color().rgba(),
                          range.format.underlineStyle() == QTextCharFormat::WaveUnderline});
    }
    return result;
}

const QRgb red = qRgb(200, 0, 0);
const QRgb blue = qRgb(0, 0, 200);
const QRgb yellow = qRgb(255, 255, 0);

std::vector<Span> storeSpans(const ColorStore& store, qsizetype start, qsizetype length,
                             bool wavy = false)
{
    std::vector<Span> result;
    for (const ColorStore::Run& run : store.runs(start, start + length)) {
        result.push_back({int(run.location - start), int(run.length), wavy ? 0 : run.color, wavy});
    }
    return result;
}

// Each line's formats say what the stores hold over that line, counted from its start:
// colours, then the underlines, then the highlights behind.
void expectLinesMatchStores(TextColorLayers& layers, const QString& text)
{
    qsizetype start = 0;
    const QStringList lines = text.split(u'\n');
    for (qsizetype line = 0; line < lines.size(); ++line) {
        const qsizetype length = lines[line].size();
        const TextFormatProvider::LineFormats formats = layers.formatsForLine(line, start, length);
        std::vector<Span> foreground = storeSpans(layers.syntaxColors(), start, length);
        const std::vector<Span> words = storeSpans(layers.misspellings(), start, length, true);
        foreground.insert(foreground.end(), words.begin(), words.end());
        EXPECT_EQ(spans(formats.foreground, false), foreground) << "line " << line;
        EXPECT_EQ(spans(formats.background, true),
                  storeSpans(layers.backgroundHighlights(), start, length))
            << "line " << line;
        start += length + 1;
    }
}

TEST(TextColorLayers, LineFormatsFollowColoursHighlightsAndEdits)
{
    QString text = u"alpha beta\ngamma delta\nend"_qs;
    TextColorLayers layers(text.size());
    layers.syntaxColors().setColor(red, {6, 4});                   // beta
    layers.syntaxColors().setColor(blue, {11, 5});                 // gamma
    layers.backgroundHighlights().setColor(yellow, {8, 5});        // "ta\nga"
    EXPECT_TRUE(layers.replaceMisspellings({11, 11}, {{17, 5}}));  // delta
    EXPECT_FALSE(layers.replaceMisspellings({11, 11}, {{17, 5}})); // the same again

    // A highlight over a line break stands on both lines; the underlined word is not coloured.
    auto line = [&](qsizetype number, qsizetype start, qsizetype length) {
        return layers.formatsForLine(number, start, length);
    };
    EXPECT_EQ(spans(line(0, 0, 10).foreground, false), (std::vector<Span>{{6, 4, red}}));
    EXPECT_EQ(spans(line(0, 0, 10).background, true), (std::vector<Span>{{8, 2, yellow}}));
    EXPECT_EQ(spans(line(1, 11, 11).foreground, false),
              (std::vector<Span>{{0, 5, blue}, {6, 5, 0, true}}));
    EXPECT_EQ(spans(line(1, 11, 11).background, true), (std::vector<Span>{{0, 2, yellow}}));
    EXPECT_TRUE(line(2, 23, 3).foreground.isEmpty());
    EXPECT_TRUE(line(2, 23, 3).background.isEmpty());
    expectLinesMatchStores(layers, text);

    // Typed before them, the colours keep to their words.
    text.insert(0, u"// "_qs);
    layers.contentsChange(0, 0, 3);
    EXPECT_EQ(spans(line(0, 0, 13).foreground, false), (std::vector<Span>{{9, 4, red}}));
    expectLinesMatchStores(layers, text);

    // Typed inside "gamma" at the highlight's end: the colour widens, the highlight does not.
    text.insert(16, u"xx"_qs);
    layers.contentsChange(16, 0, 2);
    EXPECT_EQ(spans(line(1, 14, 13).foreground, false),
              (std::vector<Span>{{0, 7, blue}, {8, 5, 0, true}}));
    EXPECT_EQ(spans(line(1, 14, 13).background, true), (std::vector<Span>{{0, 2, yellow}}));
    expectLinesMatchStores(layers, text);

    // Joining the lines through the highlight takes it away and leaves the rest in place.
    ASSERT_EQ(text.mid(11, 5), u"ta\nga"_qs);
    text.remove(11, 5);
    layers.contentsChange(11, 5, 0);
    EXPECT_EQ(spans(line(0, 0, 22).foreground, false),
              (std::vector<Span>{{9, 2, red}, {11, 5, blue}, {17, 5, 0, true}}));
    EXPECT_TRUE(line(0, 0, 22).background.isEmpty());
    expectLinesMatchStores(layers, text);

    // Colouring again with what is there changes nothing; one run changed is all that changes.
    const std::vector<ColorStore::Run> runs = layers.syntaxColors().runs(0, 22);
    EXPECT_EQ(layers.replaceSyntaxColors({0, 22}, runs).length, 0);
    std::vector<ColorStore::Run> recoloured = runs;
    recoloured[1].color = red;
    EXPECT_EQ(layers.replaceSyntaxColors({0, 22}, recoloured), Range(11, 5));
}

QRect rangeRect(TextArea& area, Range range)
{
    const QRect from = area.rectForPosition(range.location);
    const QRect to = area.rectForPosition(range.max());
    return QRect(QPoint(from.left() + 1, from.top()), QPoint(to.left() - 1, to.bottom()));
}

TEST(TextColorLayers, ColourATextAreaThatNumbersItsLinesLikeTheGutter)
{
    QString text;
    for (int i = 1; i <= 300; ++i) {
        text += u"line %1 keyword found misspelt\n"_qs.arg(i);
    }
    TextBuilder builder;
    builder.append(text);
    TextStore store;
    store.setLoadedText(builder.finish());
    TextColorLayers layers(store.text().length());
    TextArea area;
    QObject::connect(&store, &TextStore::contentsChange, &area, [&](const TextChange& change) {
        layers.contentsChange(change.position, change.charsRemoved, change.charsAdded);
    });
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setPixelSize(12);
    area.setTextFont(font);
    area.setFormatProvider(&layers);
    EditorSettings settings;
    settings.gutterTextColor = QColor(0, 0, 160);
    settings.gutterBorderColor = QColor(0, 160, 0);
    settings.gutterBackgroundColor = QColor(235, 235, 235);
    LineNumberPainter look;
    look.updatePreferences(settings);
    look.numberLinesOf(area, 50);
    area.setTextStore(&store);
    area.resize(400, 240);
    area.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&area));
    area.verticalScrollBar()->setValue(120);
    QCoreApplication::processEvents();

    // The second line on screen: its keyword coloured, "found" highlighted, "misspelt"
    // underlined.
    const qsizetype lineNumber = area.firstVisibleLine() + 1;
    ASSERT_GT(lineNumber, 100);
    const qsizetype start = store.text().lineStart(lineNumber);
    const QString lineText = store.text().line(lineNumber);
    const Range keyword(start + lineText.indexOf(u"keyword"_qs), 7);
    const Range found(start + lineText.indexOf(u"found"_qs), 5);
    const Range misspelt(start + lineText.indexOf(u"misspelt"_qs), 8);
    const QColor purple(160, 0, 160);
    layers.syntaxColors().setColor(purple.rgba(), keyword);
    layers.backgroundHighlights().setColor(yellow, found);
    layers.replaceMisspellings({start, lineText.size()}, {misspelt});
    area.formatsChanged({start, lineText.size()});
    QCoreApplication::processEvents();

    using EditorTest::countPixels;
    QImage image = area.viewport()->grab().toImage().convertToFormat(QImage::Format_RGB32);
    EXPECT_GT(countPixels(image, rangeRect(area, keyword), purple, 50), 5);
    EXPECT_GT(countPixels(image, rangeRect(area, found), QColor(yellow), 10), 40);
    // The wavy line is thin and smoothed: red, but not full red.
    EXPECT_GT(countPixels(image, rangeRect(area, misspelt), Qt::red, 110), 10);
    // The line above holds the same words, in none of those colours.
    const qsizetype above = store.text().lineStart(lineNumber - 1);
    const QRect plain = rangeRect(area, {above, store.text().lineLength(lineNumber - 1)});
    EXPECT_EQ(countPixels(image, plain, purple, 50), 0);
    EXPECT_EQ(countPixels(image, plain, QColor(yellow), 10), 0);
    EXPECT_EQ(countPixels(image, plain, Qt::red, 110), 0);

    // The gutter numbers every line on screen, each on its row, right-aligned, in its colours.
    const QList<TextArea::ShownLine> shown = area.visibleLines();
    const QList<LineNumberPainter::Label> labels =
        look.labels(shown, area.textLayout().rowHeight(), area.gutterWidth());
    ASSERT_EQ(labels.size(), shown.size());
    const QImage gutter = area.gutter()->grab().toImage().convertToFormat(QImage::Format_RGB32);
    const QFontMetricsF metrics(look.textAttributes().font());
    for (qsizetype i = 0; i < labels.size(); ++i) {
        EXPECT_EQ(labels[i].number, shown[i].line + 1);
        const QRect row = area.rectForPosition(shown[i].position);
        EXPECT_NEAR(labels[i].rect.top(), row.top() + (row.height() - metrics.height()) / 5, 0.5);
        EXPECT_NEAR(labels[i].rect.left() + metrics.horizontalAdvance(labels[i].text), 45, 0.01);
        if (row.bottom() < gutter.height()) {
            const QRect digits = labels[i].rect.toAlignedRect().intersected(QRect(0, 0, 46, 1000));
            EXPECT_GT(countPixels(gutter, digits, look.textColor(), 60), 3) << labels[i].number;
        }
    }
    EXPECT_EQ(gutter.pixelColor(49, 100), look.borderColor());
    EXPECT_EQ(gutter.pixelColor(2, 100), look.backgroundColor());

    // Typed before it, the keyword's colour moves along with it.
    store.insert(start, u"xx "_qs);
    QCoreApplication::processEvents();
    image = area.viewport()->grab().toImage().convertToFormat(QImage::Format_RGB32);
    EXPECT_EQ(layers.syntaxColors().runs(0, store.text().length()),
              (std::vector<ColorStore::Run>{{keyword.location + 3, 7, purple.rgba()}}));
    EXPECT_GT(countPixels(image, rangeRect(area, {keyword.location + 3, 7}), purple, 50), 5);
    EXPECT_EQ(countPixels(image, rangeRect(area, {keyword.location, 3}), purple, 50), 0);
}

} // namespace
