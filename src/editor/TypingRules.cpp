#include "editor/TypingRules.h"

#include "editor/BraceMatcher.h"
#include "platform/TextSource.h"

#include <algorithm>

namespace {

// White space as the platform's white-space set has it: tab and the space separators.
bool isWhiteSpace(QChar c)
{
    return c == QLatin1Char('\t') || c.category() == QChar::Separator_Space;
}

qsizetype leadingWhiteSpace(QStringView line)
{
    qsizetype count = 0;
    while (count < line.size() && isWhiteSpace(line[count])) {
        ++count;
    }
    return count;
}

bool endsWithBrace(QStringView line)
{
    qsizetype last = line.size() - 1;
    while (last >= 0 && isWhiteSpace(line[last])) {
        --last;
    }
    return last >= 0 && line[last] == QLatin1Char('{');
}

// The text of the lines `selection` touches, with their line breaks, and where it starts: a
// shift needs no more of a large text than that.
QString touchedLines(TextSource& text, Range selection, qsizetype* base)
{
    *base = text.lineStart(selection.location);
    return text.view(*base, text.lineEnd(selection.max())).toString();
}

TextEdit movedBy(TextEdit edit, qsizetype base)
{
    edit.range.location += base;
    edit.selection.location += base;
    return edit;
}

} // namespace

TextEdit TypingRules::indentedAfter(QStringView line, Range range, const QString& lead) const
{
    TextEdit edit{range, lead, {}};
    qsizetype caret = -1;
    if (_settings.autoIndent) {
        const QStringView indent = line.first(leadingWhiteSpace(line));
        edit.string += indent;
        if (_settings.autoIndentBraces && endsWithBrace(line)) {
            edit.string += tabUnit();
            if (_settings.autoIndentClosingBraces) {
                // The insertion point stays in the block; the "}" lines up with the line
                // that opened it.
                caret = edit.string.size();
                edit.string += QLatin1Char('\n');
                edit.string += indent;
                edit.string += QLatin1Char('}');
                edit.shown = {range.location + edit.string.size() - 1, 1};
            }
        }
    }
    edit.selection = {range.location + (caret >= 0 ? caret : edit.string.size()), 0};
    return edit;
}

TextEdit TypingRules::insertNewline(TextSource& text, Range selection) const
{
    // The line the break ends is what stays of it before the selection.
    const qsizetype start = text.lineStart(selection.location);
    const QString line = text.view(start, selection.location).toString();
    return indentedAfter(line, selection, QStringLiteral("\n"));
}

std::optional<TextEdit> TypingRules::autoIndent(TextSource& text, Range selection) const
{
    const qsizetype start = text.lineStart(selection.location);
    if (!_settings.autoIndent || start == 0) {
        return std::nullopt;
    }
    const QString previous = text.view(text.lineStart(start - 1), start - 1).toString();
    TextEdit edit = indentedAfter(previous, selection, QString());
    if (edit.string.isEmpty()) {
        return std::nullopt;
    }
    return edit;
}

TextEdit TypingRules::insertTab(Range selection) const
{
    const QString unit = tabUnit();
    return {selection, unit, {selection.location + unit.size(), 0}};
}

std::optional<TextEdit> TypingRules::deleteBackward(TextSource& text, Range selection) const
{
    Range removed = selection;
    const qsizetype caret = selection.location;
    if (selection.length == 0) {
        const QString unit = tabUnit();
        if (caret == 0) {
            return std::nullopt;
        }
        if (_settings.spaceTab && caret >= unit.size() &&
            text.view(caret - unit.size(), caret) == unit) {
            removed = {caret - unit.size(), unit.size()};
        } else {
            // A surrogate pair goes as one character.
            const bool pair = caret >= 2 && text.at(caret - 1).isLowSurrogate() &&
                              text.at(caret - 2).isHighSurrogate();
            removed = {caret - (pair ? 2 : 1), pair ? 2 : 1};
        }
    }
    return TextEdit{removed, QString(), {removed.location, 0}};
}

TextEdit TypingRules::shiftRight(TextSource& text, Range selection) const
{
    qsizetype base = 0;
    const QString lines = touchedLines(text, selection, &base);
    return movedBy(LineShifter::shiftRight(lines, {selection.location - base, selection.length},
                                           _settings.spaceTab),
                   base);
}

std::optional<TextEdit> TypingRules::shiftLeft(TextSource& text, Range selection) const
{
    qsizetype base = 0;
    const QString lines = touchedLines(text, selection, &base);
    const auto shift = LineShifter::shiftLeft(lines, {selection.location - base, selection.length},
                                              _settings.spaceTab);
    if (!shift) {
        return std::nullopt;
    }
    return movedBy(*shift, base);
}

bool TypingRules::isClosingBracket(const QString& string)
{
    return string.size() == 1 && QStringLiteral("]})>").contains(string[0]);
}

bool TypingRules::matchesTypedBracket(const QString& string) const
{
    return _settings.autoBraceMatching && isClosingBracket(string) &&
           (string != QLatin1String(">") || _settings.chevronMatching);
}

Range TypingRules::openingBracket(TextSource& text, Range shown, qsizetype insertion, QChar closing)
{
    const qsizetype from = std::clamp<qsizetype>(shown.location, 0, text.size());
    const qsizetype to = std::clamp<qsizetype>(shown.max(), from, text.size());
    const Range found =
        BraceMatcher::autoBraceMatching(text.view(from, to), insertion - from, closing);
    return found.length > 0 ? Range(found.location + from, 1) : Range(0, 0);
}
