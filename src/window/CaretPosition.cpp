#include "window/CaretPosition.h"

#include <QTextBlock>
#include <QTextCursor>

#include <algorithm>

std::pair<qint64, qint64> CaretPosition::lineAndColumn(const QTextCursor& cursor)
{
    const QTextBlock block = cursor.block();
    const QString text = block.text();
    const qsizetype offset = std::min<qsizetype>(cursor.positionInBlock(), text.size());
    qint64 column = 1;
    for (qsizetype i = 0; i < offset; ++i) {
        // The second half of a surrogate pair is not a character of its own.
        if (!(text[i].isLowSurrogate() && i > 0 && text[i - 1].isHighSurrogate())) {
            ++column;
        }
    }
    return {qint64(block.blockNumber()) + 1, column};
}

QString CaretPosition::statusText(const QTextCursor& cursor)
{
    // Without grouping separators: "Line 12,345, Column 7" would read as three numbers.
    const auto [line, column] = lineAndColumn(cursor);
    return QStringLiteral("Line %1, Column %2").arg(line).arg(column);
}
