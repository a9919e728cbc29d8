#pragma once

#include "editor/InvisibleCharacterPainter.h"
#include "editor/TextAreaLayout.h"
#include "platform/Range.h"

#include <QColor>
#include <QList>
#include <QRect>

class QPainter;
class TextFormatProvider;

/// Paints what a text area shows in a part of its viewport, in layers: the background, the
/// provider's highlights and the selections, the marks of invisible characters, the text
/// with the provider's colours, and the carets.
class TextAreaPainter
{
public:
    struct Colors {
        QColor text = Qt::black;
        QColor background = Qt::white;
        QColor caret = Qt::black;
        QColor selection = QColor(173, 214, 255);
        bool operator==(const Colors&) const = default;
    };
    /// What changes from one paint to the next.
    struct Frame {
        QList<Range> selections;
        /// The caret's position, or -1 when it is not drawn (blinked off, no focus).
        qsizetype caret = -1;
        qreal caretWidth = 2;
        /// Where the caret stands inside the input method's pre-edit text, or -1.
        qsizetype preeditCursor = -1;
        /// Where dragged text would drop, or -1.
        qsizetype dropCaret = -1;
        bool showInvisibles = false;
    };

    static void paint(QPainter& painter, const QRect& rect, TextAreaLayout& layout,
                      TextFormatProvider* provider, const Colors& colors,
                      const InvisibleCharacterPainter& marks, const Frame& frame);
};
