#include "editor/TextColorLayers.h"

#include <QHash>

#include <algorithm>
#include <iterator>

namespace {

// A text has a handful of colours: share one format per colour rather than build one per
// run each time a line is shown.
const QTextCharFormat& formatOfColor(QRgb color, bool background)
{
    static QHash<QRgb, QTextCharFormat> foregrounds;
    static QHash<QRgb, QTextCharFormat> backgrounds;
    QHash<QRgb, QTextCharFormat>& formats = background ? backgrounds : foregrounds;
    auto it = formats.find(color);
    if (it == formats.end()) {
        QTextCharFormat format;
        if (background) {
            format.setBackground(QColor::fromRgba(color));
        } else {
            format.setForeground(QColor::fromRgba(color));
        }
        it = formats.insert(color, format);
    }
    return *it;
}

void appendRuns(QList<QTextLayout::FormatRange>& formats, const ColorStore& store, qsizetype start,
                qsizetype end, const QTextCharFormat* sameFormat, bool background)
{
    for (const ColorStore::Run& run : store.runs(start, end)) {
        QTextLayout::FormatRange range;
        range.start = int(run.location - start);
        range.length = int(run.length);
        range.format = sameFormat ? *sameFormat : formatOfColor(run.color, background);
        formats.append(range);
    }
}

} // namespace

TextColorLayers::TextColorLayers(qsizetype textLength)
    : _syntax(textLength)
    , _background(textLength)
    , _misspellings(textLength)
{}

void TextColorLayers::reset(qsizetype textLength)
{
    for (ColorStore* store : {&_syntax, &_background, &_misspellings}) {
        store->reset(textLength);
    }
}

void TextColorLayers::contentsChange(qsizetype position, qsizetype removed, qsizetype added)
{
    for (ColorStore* store : {&_syntax, &_background, &_misspellings}) {
        store->contentsChange(position, removed, added);
    }
}

Range TextColorLayers::replaceSyntaxColors(Range range, const std::vector<ColorStore::Run>& runs)
{
    const std::vector<ColorStore::Run> before = _syntax.runs(range.location, range.max());
    _syntax.replaceColors(range, runs);
    const std::vector<ColorStore::Run> after = _syntax.runs(range.location, range.max());
    // Only the stretch between the first and the last run that differ changed colour.
    const auto [beforeFirst, afterFirst] =
        std::mismatch(before.begin(), before.end(), after.begin(), after.end());
    if (beforeFirst == before.end() && afterFirst == after.end()) {
        return {range.location, 0};
    }
    const auto [beforeLast, afterLast] =
        std::mismatch(before.rbegin(), std::make_reverse_iterator(beforeFirst), after.rbegin(),
                      std::make_reverse_iterator(afterFirst));
    qsizetype from = range.max();
    qsizetype to = range.location;
    const auto cover = [&from, &to](auto run, auto end) {
        for (; run != end; ++run) {
            from = std::min(from, run->location);
            to = std::max(to, run->location + run->length);
        }
    };
    cover(beforeFirst, beforeLast.base());
    cover(afterFirst, afterLast.base());
    return {from, std::max<qsizetype>(0, to - from)};
}

bool TextColorLayers::replaceMisspellings(Range range, const QList<Range>& words)
{
    std::vector<ColorStore::Run> runs;
    runs.reserve(words.size());
    for (const Range& word : words) {
        runs.push_back({word.location, word.length, qRgb(255, 0, 0)});
    }
    if (_misspellings.runs(range.location, range.max()) == runs) {
        return false;
    }
    _misspellings.replaceColors(range, runs);
    return true;
}

TextFormatProvider::LineFormats TextColorLayers::lineFormats(qsizetype lineStart,
                                                             qsizetype lineLength) const
{
    LineFormats formats;
    const qsizetype end = lineStart + lineLength;
    appendRuns(formats.background, _background, lineStart, end, nullptr, true);
    appendRuns(formats.foreground, _syntax, lineStart, end, nullptr, false);
    appendRuns(formats.foreground, _misspellings, lineStart, end, &misspellingFormat(), false);
    return formats;
}

TextFormatProvider::LineFormats TextColorLayers::formatsForLine(qsizetype, qsizetype lineStart,
                                                                qsizetype lineLength)
{
    return lineFormats(lineStart, lineLength);
}

const QTextCharFormat& TextColorLayers::misspellingFormat()
{
    static const QTextCharFormat format = [] {
        QTextCharFormat underline;
        underline.setUnderlineStyle(QTextCharFormat::WaveUnderline);
        underline.setUnderlineColor(Qt::red);
        return underline;
    }();
    return format;
}
