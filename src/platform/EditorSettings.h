#pragma once

#include <QColor>
#include <QFont>
#include <QString>

/// What an editor pane takes from the settings: its font and colours, the marks of
/// invisible characters, the gutter's colours, and how typing behaves. The toggles among
/// them (indentation, brace matching, completion, wrapping) are where a new pane starts;
/// its window may change them after.
struct EditorSettings {
    QString fontName;
    /// In points, which are device-independent pixels here; none (12) when not above 0.
    qint64 fontSize = 0;
    /// In spaces of the fixed-pitch font.
    qint64 tabWidth = 4;
    bool autoIndent = false;
    bool autoIndentBraces = false;
    bool autoIndentClosingBraces = false;
    bool autoBraceMatching = false;
    /// Brace matching takes < and > too.
    bool usedChevronsMatching = false;
    /// Tab inserts spaces.
    bool spaceTab = false;
    /// Transformations write character entity references.
    bool characterEntity = false;
    bool autoComplete = false;
    bool wrapLines = false;

    // Colours; an invalid colour where the setting holds none.
    QColor textColor;
    QColor insertionPointColor;
    QColor backgroundColor;
    QColor invisibleCharacterColor;
    QColor gutterTextColor;
    QColor gutterBorderColor;
    QColor gutterBackgroundColor;

    // The marks drawn for invisible characters.
    QString newLineCharacter;
    QString tabCharacter;
    QString spaceCharacter;
    QString fullwidthSpaceCharacter;

    /// The font of the text: the family named, at the size in pixels.
    QFont font() const
    {
        QFont font(fontName);
        font.setPixelSize(fontSize > 0 ? int(fontSize) : 12);
        return font;
    }

    bool operator==(const EditorSettings&) const = default;
};
