#include "editor/TextColorLayers.h"

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

    // Typed before them, the colours keep to their words.
    text.insert(0, u"// "_qs);
    layers.contentsChange(0, 0, 3);
    EXPECT_EQ(spans(line(0, 0, 13).foreground, false), (std::vector<Span>{{9, 4, red}}));

    // Typed inside "gamma" at the highlight's end: the colour widens, the highlight does not.
    text.insert(16, u"xx"_qs);
    layers.contentsChange(16, 0, 2);
    EXPECT_EQ(spans(line(1, 14, 13).foreground, false),
              (std::vector<Span>{{0, 7, blue}, {8, 5, 0, true}}));
    EXPECT_EQ(spans(line(1, 14, 13).background, true), (std::vector<Span>{{0, 2, yellow}}));

    // Joining the lines through the highlight takes it away and leaves the rest in place.
    ASSERT_EQ(text.mid(11, 5), u"ta\nga"_qs);
    text.remove(11, 5);
    layers.contentsChange(11, 5, 0);
    EXPECT_EQ(spans(line(0, 0, 22).foreground, false),
              (std::vector<Span>{{9, 2, red}, {11, 5, blue}, {17, 5, 0, true}}));
    EXPECT_TRUE(line(0, 0, 22).background.isEmpty());

    // Colouring again with what is there changes nothing; one run changed is all that changes.
    const std::vector<ColorStore::Run> runs = layers.syntaxColors().runs(0, 22);
    EXPECT_EQ(layers.replaceSyntaxColors({0, 22}, runs).length, 0);
    std::vector<ColorStore::Run> recoloured = runs;
    recoloured[1].color = red;
    EXPECT_EQ(layers.replaceSyntaxColors({0, 22}, recoloured), Range(11, 5));
}

} // namespace
