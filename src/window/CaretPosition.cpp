#include "window/CaretPosition.h"

#include "document/Document.h"

std::pair<qint64, qint64> CaretPosition::lineAndColumn(const Document& text, qsizetype position)
{
    const qsizetype line = text.lineOfPosition(position);
    const qsizetype start = text.rangeOfLine(line).location;
    const QString before = text.textInRange({start, position - start});
    qint64 column = 1;
    for (qsizetype i = 0; i < before.size(); ++i) {
        // The second half of a surrogate pair is not a character of its own.
        if (!(before[i].isLowSurrogate() && i > 0 && before[i - 1].isHighSurrogate())) {
            ++column;
        }
    }
    return {qint64(line) + 1, column};
}

QString CaretPosition::statusText(const Document& text, qsizetype position)
{
    // Without grouping separators: "Line 12,345, Column 7" would read as three numbers.
    const auto [line, column] = lineAndColumn(text, position);
    return QStringLiteral("Line %1, Column %2").arg(line).arg(column);
}
