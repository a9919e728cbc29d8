#pragma once

#include "editor/ColorStore.h"
#include "editor/TextColorLayers.h"
#include "editor/TextFormatProvider.h"
#include "platform/CharacterStandIns.h"
#include "platform/Range.h"

#include <QColor>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QRectF>
#include <QString>
#include <QTextCharFormat>
#include <QTextLayout>

struct EditorSettings;
struct TextChange;
class QPainter;
class Document;
class TextStore;
class TextView;

/// The pane's own layer over the shared text: the marks of invisible characters and the
/// colour store (syntax colours and a background layer for search and go-to highlights).
///
/// Colours never enter the document. The pane's view asks for them line by line as it lays
/// out and paints the lines it shows (this object is its format provider); the formats of a
/// line are composed from the stores of all panes on the document: both panes colour the
/// same text with the same definition, so they agree, and a highlight laid down through one
/// pane shows in both.
class LayoutManager : public QObject, public TextFormatProvider
{
    Q_OBJECT

public:
    enum class InvisibleKind { NewLine, Tab, Space, FullwidthSpace };

    /// Draws for `textView` (its "first text view") over `textStorage`, with the view's
    /// settings.
    LayoutManager(TextView* textView, TextStore* textStorage);
    ~LayoutManager() override;

    TextView* firstTextView() const { return _textView; }
    TextStore* textStorage() const { return _textStorage; }
    /// The document whose text this is; none for a text storage of its own.
    Document* document() const;

    /// Takes up the mark strings and their colour from `settings`, and hides the marks.
    void updatePreferences(const EditorSettings& settings);

    /// Whether the view shows the marks of invisible characters.
    bool showInvisibleCharacters() const;
    void setShowInvisibleCharacters(bool showInvisibleCharacters);
    /// The marks' font (a 10-point system font) and colour.
    const QTextCharFormat& attributes() const { return _attributes; }
    const QString& characterOfNewLine() const { return _characterOfNewLine; }
    const QString& characterOfTab() const { return _characterOfTab; }
    const QString& characterOfSpace() const { return _characterOfSpace; }
    const QString& characterOfFullwidthSpace() const { return _characterOfFullwidthSpace; }
    const QString& characterOf(InvisibleKind kind) const;

    /// Draws the marks of the characters that stand in for others meeting `rect` (viewport
    /// coordinates); the view draws those of invisible characters itself.
    void drawGlyphs(QPainter& painter, const QRectF& rect);

    /// The characters that stand in the text for those it cannot hold (the document's). Each
    /// is drawn as a mark of the character it stands for, in the colour of invisible
    /// characters: "¶" for U+2029, "␍" (or "↵" in a font without it) for a CR kept as read,
    /// "�" for the others.
    void setCharacterStandIns(const CharacterStandIns& standIns);
    const CharacterStandIns& characterStandIns() const { return _standIns; }
    /// The mark drawn in `font` for a stand-in of `original`.
    static QString markOfStandIn(QChar original, const QFont& font);

    // Colour store: syntax colours (foreground).
    /// Colours `forCharacterRange` with `foreground`, replacing the colours that were there.
    /// Ranges reaching past the text are clipped to it.
    void setTemporaryAttributes(const QColor& foreground, Range forCharacterRange);
    void addTemporaryAttribute(const QColor& foreground, Range forCharacterRange)
    {
        setTemporaryAttributes(foreground, forCharacterRange);
    }
    /// Replaces the syntax colours inside `range` by `runs` (text order) in one step; the
    /// cheap way for a colouring pass to hand over a whole range.
    void setSyntaxColors(Range range, const std::vector<ColorStore::Run>& runs);
    void removeTemporaryAttribute(Range forCharacterRange);
    void removeAllTemporaryAttributes();
    /// The syntax colours meeting `range`, in text order.
    std::vector<ColorStore::Run> temporaryAttributes(Range range) const;

    // Colour store: background layer. It stands for a background colour of the text itself,
    // so it is one for the whole document: setting or removing it through any pane acts on
    // what every pane on the document had laid down.
    /// Replaces the background highlights by `ranges` in `color`.
    void setBackgroundHighlights(const QList<Range>& ranges, const QColor& color);
    void addBackgroundHighlight(const QColor& color, Range forCharacterRange);
    void removeBackgroundHighlights();
    bool hasBackgroundHighlights() const;
    std::vector<ColorStore::Run> backgroundHighlights(Range range) const;

    // Misspelt words, underlined. Each pane marks what it shows; the marks of every pane on
    // the document are drawn.
    /// The marked words meeting `range`, clipped to it, in text order.
    QList<Range> misspelledWords(Range range) const;

    /// This pane's colours, as a view over the text asks for them line by line.
    TextColorLayers& colorLayers() { return _layers; }
    const TextColorLayers& colorLayers() const { return _layers; }

    /// The colours of `range` changed in colorLayers() behind this object's back (a
    /// colouring pass writes there directly): repaints the shown lines of every pane on the
    /// document that meet it.
    void colorsChanged(Range range);

    /// The formats the colours of every pane on the document give the text of `line`.
    LineFormats formatsForLine(qsizetype line, qsizetype lineStart, qsizetype lineLength) override;

    /// Shows `text` at `position` in grey, laid out as if it were typed there, without
    /// putting it into the document: it never reaches the saved text, the undo stack or the
    /// modified state. An empty text takes it away, as does any change of the text.
    void setProposedText(qsizetype position, const QString& text);
    const QString& proposedText() const;

Q_SIGNALS:
    /// The background highlights this pane had laid down went away, through whichever pane
    /// on the document removed or replaced them.
    void backgroundHighlightsRemoved();

private:
    void clearBackgroundHighlights();
    void textStorageDidChange(const TextChange& change);

    QPointer<TextView> _textView;
    QPointer<TextStore> _textStorage;
    TextStore* _registeredStorage = nullptr;

    QTextCharFormat _attributes;
    QString _characterOfNewLine;
    QString _characterOfTab;
    QString _characterOfSpace;
    QString _characterOfFullwidthSpace;

    TextColorLayers _layers;
    CharacterStandIns _standIns;
};
