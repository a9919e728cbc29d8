#include "editor/TypingRules.h"

#include "editor/BraceMatcher.h"

#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>

namespace {

// White space as the platform's white-space set has it: tab and the space separators.
bool isWhiteSpace(QChar c)
{
    return c == QLatin1Char('\t') || c.category() == QChar::Separator_Space;
}

qsizetype leadingWhiteSpace(const QString& line)
{
    qsizetype count = 0;
    while (count < line.size() && isWhiteSpace(line[count])) {
        ++count;
    }
    return count;
}

// The text of the lines `range` touches, with their line breaks, and where it starts: a shift
// needs no more of a large text than that.
QString touchedLines(QTextDocument* document, Range range, qsizetype* base)
{
    const QTextBlock first = document->findBlock(int(range.location));
    const QTextBlock last = document->findBlock(int(range.max()));
    *base = first.position();
    QTextCursor cursor(document);
    cursor.setPosition(first.position());
    cursor.setPosition(qMin(last.position() + last.length(), document->characterCount() - 1),
                       QTextCursor::KeepAnchor);
    return cursor.selectedText().replace(QChar::ParagraphSeparator, QLatin1Char('\n'));
}

LineShifter::Replacement movedBy(const LineShifter::Replacement& shift, qsizetype base)
{
    return {{shift.range.location + base, shift.range.length},
            shift.string,
            {shift.selection.location + base, shift.selection.length}};
}

} // namespace

Range TypingRules::insertNewline(QTextCursor& cursor) const
{
    cursor.beginEditBlock();
    cursor.insertBlock();
    const Range closing = autoIndent(cursor);
    cursor.endEditBlock();
    return closing;
}

Range TypingRules::autoIndent(QTextCursor& cursor) const
{
    const QTextBlock previous = cursor.block().previous();
    if (!_settings.autoIndent || !previous.isValid()) {
        return Range::notFound();
    }
    const QString line = previous.text();
    const qsizetype indent = leadingWhiteSpace(line);
    qsizetype last = line.size() - 1;
    while (last >= 0 && isWhiteSpace(line[last])) {
        --last;
    }
    const bool afterBrace =
        _settings.autoIndentBraces && last >= 0 && line[last] == QLatin1Char('{');

    cursor.beginEditBlock();
    if (indent > 0) {
        cursor.insertText(line.left(indent));
    }
    Range closing = Range::notFound();
    if (afterBrace) {
        cursor.insertText(tabUnit());
    }
    if (afterBrace && _settings.autoIndentClosingBraces) {
        cursor.insertText(QStringLiteral("\n"));
        const QString middle = cursor.block().previous().text();
        const qsizetype whiteSpace = leadingWhiteSpace(middle);
        if (whiteSpace > 0) {
            // The "}" goes one tab unit left of the line it closes.
            const qsizetype k = qMax<qsizetype>(0, whiteSpace - (_settings.spaceTab ? 4 : 1));
            cursor.insertText(middle.left(k) + QLatin1Char('}'));
            const qsizetype position = cursor.position();
            closing = {position - 1, 1};
            cursor.setPosition(int(position - k - 2));
        }
    }
    cursor.endEditBlock();
    return closing;
}

void TypingRules::insertTab(QTextCursor& cursor) const
{
    cursor.beginEditBlock();
    cursor.insertText(tabUnit());
    cursor.endEditBlock();
}

void TypingRules::deleteBackward(QTextCursor& cursor) const
{
    const qsizetype location = cursor.position();
    const QString unit = tabUnit();
    if (_settings.spaceTab && !cursor.hasSelection() && location >= unit.size()) {
        QTextCursor before(cursor.document());
        before.setPosition(int(location - unit.size()));
        before.setPosition(int(location), QTextCursor::KeepAnchor);
        if (before.selectedText() == unit) {
            cursor = before;
        }
    }
    cursor.beginEditBlock();
    if (cursor.hasSelection()) {
        cursor.removeSelectedText();
    } else {
        cursor.deletePreviousChar();
    }
    cursor.endEditBlock();
}

LineShifter::Replacement TypingRules::shiftRight(QTextDocument* document, Range selection) const
{
    qsizetype base = 0;
    const QString lines = touchedLines(document, selection, &base);
    return movedBy(LineShifter::shiftRight(lines, {selection.location - base, selection.length},
                                           _settings.spaceTab),
                   base);
}

std::optional<LineShifter::Replacement> TypingRules::shiftLeft(QTextDocument* document,
                                                               Range selection) const
{
    qsizetype base = 0;
    const QString lines = touchedLines(document, selection, &base);
    const auto shift = LineShifter::shiftLeft(lines, {selection.location - base, selection.length},
                                              _settings.spaceTab);
    if (!shift) {
        return std::nullopt;
    }
    return movedBy(*shift, base);
}

void TypingRules::replace(QTextCursor& cursor, const LineShifter::Replacement& replacement)
{
    QTextDocument* document = cursor.document();
    const bool wasEmpty = document->isEmpty();
    cursor.beginEditBlock();
    cursor.setPosition(int(replacement.range.location));
    cursor.setPosition(int(replacement.range.max()), QTextCursor::KeepAnchor);
    if (wasEmpty) {
        // An empty text has no characters to take the attributes from: give the new text
        // the typing attributes, which are the text's own defaults.
        cursor.insertText(replacement.string, QTextCharFormat());
    } else {
        cursor.insertText(replacement.string);
    }
    cursor.endEditBlock();
    const qsizetype last = document->characterCount() - 1;
    const Range selection = replacement.selection;
    cursor.setPosition(int(qBound<qsizetype>(0, selection.location, last)));
    cursor.setPosition(int(qBound<qsizetype>(0, selection.max(), last)), QTextCursor::KeepAnchor);
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

Range TypingRules::openingBracket(QTextDocument* document, Range shown, qsizetype insertion,
                                  QChar closing)
{
    QTextCursor cursor(document);
    cursor.setPosition(int(shown.location));
    cursor.setPosition(int(shown.max()), QTextCursor::KeepAnchor);
    // Paragraph separators stand in for line breaks one for one, so positions hold.
    const QString text = cursor.selectedText();
    const Range found = BraceMatcher::autoBraceMatching(text, insertion - shown.location, closing);
    return found.length > 0 ? Range(found.location + shown.location, 1) : Range(0, 0);
}
