#pragma once

#include "editor/ColorStore.h"
#include "editor/TextColorLayers.h"
#include "platform/CharacterStandIns.h"
#include "platform/Range.h"

#include <QColor>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QRectF>
#include <QStaticText>
#include <QString>
#include <QTextCharFormat>
#include <QTextCursor>
#include <QTextLayout>

struct EditorSettings;
class QPainter;
class QTextBlock;
class Document;
class QTextDocument;
class TextView;

/// The pane's own layer over the shared text: the marks of invisible characters and the
/// colour store (syntax colours and a background layer for search and go-to highlights).
///
/// Colours never enter the document. They are applied, just before a pane paints, as the
/// `QTextLayout` formats of the blocks it shows. Qt keeps one layout per block for every
/// view of a document, so the formats laid on a block are composed from the stores of all
/// panes on that document; both panes colour the same text with the same definition, so
/// they agree, and neither pane undoes what the other laid down.
class LayoutManager : public QObject
{
    Q_OBJECT

public:
    enum class InvisibleKind { NewLine, Tab, Space, FullwidthSpace };
    /// One mark as it is drawn: where its top-left stands in viewport coordinates.
    struct InvisibleMark {
        qsizetype location = 0;
        InvisibleKind kind = InvisibleKind::Space;
        QPointF origin;
    };

    /// Draws for `textView` (its "first text view") over `textStorage`, with the view's
    /// settings.
    LayoutManager(TextView* textView, QTextDocument* textStorage);
    ~LayoutManager() override;

    TextView* firstTextView() const { return _textView; }
    QTextDocument* textStorage() const { return _textStorage; }
    /// The document whose text this is; none for a text storage of its own.
    Document* document() const;

    /// Takes up the mark strings and their colour from `settings`, and hides the marks.
    void updatePreferences(const EditorSettings& settings);

    bool showInvisibleCharacters() const { return _showInvisibleCharacters; }
    void setShowInvisibleCharacters(bool showInvisibleCharacters);
    /// The marks' font (a 10-point system font) and colour.
    const QTextCharFormat& attributes() const { return _attributes; }
    const QString& characterOfNewLine() const { return _characterOfNewLine; }
    const QString& characterOfTab() const { return _characterOfTab; }
    const QString& characterOfSpace() const { return _characterOfSpace; }
    const QString& characterOfFullwidthSpace() const { return _characterOfFullwidthSpace; }
    const QString& characterOf(InvisibleKind kind) const;
    /// The end of the text range the last drawing pass covered.
    qsizetype lengthToRedraw() const { return _lengthToRedraw; }

    /// The marks of the shown lines meeting `rect` (viewport coordinates), whether or not
    /// they are shown. Only the characters of those lines within the rectangle are looked at.
    QList<InvisibleMark> invisibleCharacterMarks(const QRectF& rect) const;
    /// Draws the marks meeting `rect` when they are shown, and those of the characters that
    /// stand in for others always.
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

    /// The formats the colours of every pane on the document give `block`.
    QList<QTextLayout::FormatRange> formatsForBlock(const QTextBlock& block) const;
    /// Lays the stored colours onto the shown blocks meeting [top, bottom] (viewport
    /// coordinates); blocks whose formats are already right are left alone, so they are not
    /// laid out again. Returns the number of blocks whose formats changed.
    int applyTemporaryAttributes(qreal top, qreal bottom);

    /// Shows `text` at `position` in grey, laid out as if it were typed there, without
    /// putting it into the document: it never reaches the saved text, the undo stack or the
    /// modified state. An empty text takes it away. The shown text stays before the same
    /// character when the document changes elsewhere.
    void setProposedText(qsizetype position, const QString& text);
    const QString& proposedText() const { return _proposedText; }
    /// Where the proposed text stands in the document; -1 when none is shown.
    qsizetype proposedTextPosition() const;

Q_SIGNALS:
    /// The background highlights this pane had laid down went away, through whichever pane
    /// on the document removed or replaced them.
    void backgroundHighlightsRemoved();

private:
    void relayOut(const QTextBlock& block);
    /// Has the document lay `block` out again and repaint its line.
    void markBlockDirty(const QTextBlock& block);
    void clearBackgroundHighlights();
    void textStorageDidChange(int position, int removed, int added);
    void drawStandIns(QPainter& painter, const QRectF& rect);

    QPointer<TextView> _textView;
    QPointer<QTextDocument> _textStorage;
    QTextDocument* _registeredStorage = nullptr;

    bool _showInvisibleCharacters = false;
    QTextCharFormat _attributes;
    QString _characterOfNewLine;
    QString _characterOfTab;
    QString _characterOfSpace;
    QString _characterOfFullwidthSpace;
    QStaticText _marks[4];
    qsizetype _lengthToRedraw = 0;

    TextColorLayers _layers;
    QTextCursor _proposal;
    QString _proposedText;
    CharacterStandIns _standIns;
};
