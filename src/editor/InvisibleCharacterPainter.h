#pragma once

#include "editor/TextLayoutCache.h"

#include <QColor>
#include <QFont>
#include <QPointF>
#include <QStaticText>
#include <QString>

#include <optional>

class QPainter;

/// Draws the marks of invisible characters over a laid-out piece of a line: line ends, tabs,
/// spaces (and no-break spaces), ideographic spaces, and every other format or control
/// character (U+2028 and U+2029 among them), each mark with its top-left at the top of the
/// character's row. The marks are not text: never copied, searched or saved.
class InvisibleCharacterPainter
{
public:
    enum class Kind { NewLine, Tab, Space, FullwidthSpace, Other };

    struct Marks {
        QString newLine = QStringLiteral("\u00AC");
        QString tab = QStringLiteral("\u25B8");
        QString space = QStringLiteral("\u00B7");
        QString fullwidthSpace = QStringLiteral("\u25A1");
        QString other = QStringLiteral("\u00A4");
        QColor color = QColor(160, 160, 160);
        /// Empty: the system font at 10 pixels.
        QFont font;
    };

    InvisibleCharacterPainter();

    void setMarks(const Marks& marks);
    const Marks& marks() const { return _marks; }
    const QString& markOf(Kind kind) const;

    /// The mark a character gets, if any. CR and U+2029 show the line-end mark.
    static std::optional<Kind> kindOf(QChar c);

    /// Draws the marks of rows `firstRow` … `lastRow` of `entry`, whose layout stands at
    /// `origin` with rows of `rowHeight`, for the characters between `left` and `right` (viewport
    /// x); with `lineEnd`, the line-end mark after the piece's last character.
    void draw(QPainter& painter, const TextLayoutCache::Entry& entry, QPointF origin,
              qreal rowHeight, int firstRow, int lastRow, qreal left, qreal right,
              bool lineEnd) const;

private:
    Marks _marks;
    QStaticText _prepared[5];
};
