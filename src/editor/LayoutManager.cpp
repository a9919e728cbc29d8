#include "editor/LayoutManager.h"

#include "document/Document.h"
#include "document/TextStore.h"
#include "editor/TextView.h"

#include <QFontDatabase>
#include <QFontMetrics>
#include <QHash>
#include <QPainter>

#include <algorithm>

namespace {

// Every pane on a text, so that the formats of a shared line come from all of them.
QHash<const TextStore*, QList<LayoutManager*>>& panesByDocument()
{
    static QHash<const TextStore*, QList<LayoutManager*>> panes;
    return panes;
}

// Point sizes are device-independent pixels here, whatever the screen's dots per inch.
QFont systemFontOfSize(int size)
{
    QFont font = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
    font.setPixelSize(size);
    return font;
}

// The look of a character that stands in for another: the font's own glyph (for a
// noncharacter, an empty box) is not drawn, a mark is drawn over its place instead.
const QTextCharFormat& standInFormat()
{
    static const QTextCharFormat format = [] {
        QTextCharFormat hidden;
        hidden.setForeground(Qt::transparent);
        return hidden;
    }();
    return format;
}

} // namespace

LayoutManager::LayoutManager(TextView* textView, TextStore* textStorage)
    : QObject(textView)
    , _textView(textView)
    , _textStorage(textStorage)
    , _registeredStorage(textStorage)
    , _layers(textStorage ? textStorage->text().length() : 0)
{
    updatePreferences(textView->editorSettings());
    if (textStorage) {
        panesByDocument()[textStorage].append(this);
        connect(textStorage, &TextStore::contentsChange, this,
                &LayoutManager::textStorageDidChange);
    }
}

Document* LayoutManager::document() const
{
    // A document owns the text store it holds its text in.
    return _textStorage ? qobject_cast<Document*>(_textStorage->parent()) : nullptr;
}

LayoutManager::~LayoutManager()
{
    auto& panes = panesByDocument();
    auto it = panes.find(_registeredStorage);
    if (it != panes.end()) {
        it->removeAll(this);
        if (it->isEmpty()) {
            panes.erase(it);
        }
    }
}

void LayoutManager::updatePreferences(const EditorSettings& settings)
{
    _attributes = QTextCharFormat();
    _attributes.setFont(systemFontOfSize(10));
    _attributes.setForeground(settings.invisibleCharacterColor);
    _characterOfNewLine = settings.newLineCharacter;
    _characterOfTab = settings.tabCharacter;
    _characterOfSpace = settings.spaceCharacter;
    _characterOfFullwidthSpace = settings.fullwidthSpaceCharacter;
    if (_textView) {
        InvisibleCharacterPainter::Marks marks = _textView->invisibleCharacterMarks();
        marks.newLine = _characterOfNewLine;
        marks.tab = _characterOfTab;
        marks.space = _characterOfSpace;
        marks.fullwidthSpace = _characterOfFullwidthSpace;
        marks.color = settings.invisibleCharacterColor;
        marks.font = _attributes.font();
        _textView->setInvisibleCharacterMarks(marks);
    }
    setShowInvisibleCharacters(false);
}

bool LayoutManager::showInvisibleCharacters() const
{
    return _textView && _textView->showInvisibleCharacters();
}

void LayoutManager::setShowInvisibleCharacters(bool showInvisibleCharacters)
{
    if (_textView && _textView->showInvisibleCharacters() != showInvisibleCharacters) {
        _textView->setShowInvisibleCharacters(showInvisibleCharacters);
    }
}

const QString& LayoutManager::characterOf(InvisibleKind kind) const
{
    switch (kind) {
    case InvisibleKind::NewLine:
        return _characterOfNewLine;
    case InvisibleKind::Tab:
        return _characterOfTab;
    case InvisibleKind::Space:
        return _characterOfSpace;
    case InvisibleKind::FullwidthSpace:
        break;
    }
    return _characterOfFullwidthSpace;
}

void LayoutManager::setCharacterStandIns(const CharacterStandIns& standIns)
{
    if (_standIns == standIns) {
        return;
    }
    _standIns = standIns;
    if (_textView) {
        _textView->textLayout().cache().clear();
        _textView->viewport()->update();
    }
}

QString LayoutManager::markOfStandIn(QChar original, const QFont& font)
{
    switch (original.unicode()) {
    case 0x2029:
        return QStringLiteral("\u00B6");
    case u'\r':
        // The symbol for a carriage return where the font has it, an arrow of return else.
        return QFontMetrics(font).inFont(QChar(0x240D)) ? QStringLiteral("\u240D")
                                                        : QStringLiteral("\u21B5");
    default:
        return QStringLiteral("\uFFFD");
    }
}

void LayoutManager::drawGlyphs(QPainter& painter, const QRectF& rect)
{
    if (_standIns.isEmpty() || !_textView || !_textStorage) {
        return;
    }
    const TextSnapshot& text = _textStorage->text();
    painter.save();
    const QFont font = _textView->textFont();
    painter.setFont(font);
    painter.setPen(_attributes.foreground().color());
    const qreal ascent = QFontMetricsF(font).ascent();
    for (const TextView::ShownLine& shown : _textView->visibleLines()) {
        const qsizetype start = text.lineStart(shown.line);
        const QString line = text.line(shown.line);
        for (qsizetype k = 0; k < line.size(); ++k) {
            const QChar original = _standIns.originalOf(line[k]);
            if (original.isNull()) {
                continue;
            }
            const QRect caret = _textView->rectForPosition(start + k);
            if (caret.bottom() < rect.top() || caret.top() > rect.bottom()) {
                continue;
            }
            painter.drawText(QPointF(caret.left(), caret.top() + ascent),
                             markOfStandIn(original, font));
        }
    }
    painter.restore();
}

void LayoutManager::setTemporaryAttributes(const QColor& foreground, Range forCharacterRange)
{
    _layers.syntaxColors().setColor(foreground.rgba(), forCharacterRange);
    colorsChanged(forCharacterRange);
}

void LayoutManager::setSyntaxColors(Range range, const std::vector<ColorStore::Run>& runs)
{
    // Only what the colouring changed is painted again, not the whole range handed over.
    const Range changed = _layers.replaceSyntaxColors(range, runs);
    if (changed.length > 0) {
        colorsChanged(changed);
    }
}

void LayoutManager::removeTemporaryAttribute(Range forCharacterRange)
{
    _layers.syntaxColors().removeColor(forCharacterRange);
    colorsChanged(forCharacterRange);
}

void LayoutManager::removeAllTemporaryAttributes()
{
    ColorStore& colors = _layers.syntaxColors();
    colors.reset(colors.textLength());
    colorsChanged({0, colors.textLength()});
}

std::vector<ColorStore::Run> LayoutManager::temporaryAttributes(Range range) const
{
    return _layers.syntaxColors().runs(range.location, range.max());
}

void LayoutManager::setBackgroundHighlights(const QList<Range>& ranges, const QColor& color)
{
    // Like a background colour of the text itself, the layer belongs to the whole document:
    // setting it replaces what any pane had laid down.
    clearBackgroundHighlights();
    for (const Range& range : ranges) {
        _layers.backgroundHighlights().setColor(color.rgba(), range);
    }
    colorsChanged({0, _layers.textLength()});
}

void LayoutManager::addBackgroundHighlight(const QColor& color, Range forCharacterRange)
{
    _layers.backgroundHighlights().setColor(color.rgba(), forCharacterRange);
    colorsChanged(forCharacterRange);
}

void LayoutManager::removeBackgroundHighlights()
{
    if (hasBackgroundHighlights()) {
        clearBackgroundHighlights();
        colorsChanged({0, _layers.textLength()});
    }
}

void LayoutManager::clearBackgroundHighlights()
{
    QList<QPointer<LayoutManager>> cleared;
    for (LayoutManager* pane : panesByDocument().value(_textStorage)) {
        ColorStore& highlights = pane->_layers.backgroundHighlights();
        if (!highlights.isEmpty()) {
            highlights.reset(highlights.textLength());
            cleared << pane;
        }
    }
    // Told once every layer is empty, so that no receiver sees a half-cleared document.
    for (const QPointer<LayoutManager>& pane : cleared) {
        if (pane) {
            Q_EMIT pane->backgroundHighlightsRemoved();
        }
    }
}

bool LayoutManager::hasBackgroundHighlights() const
{
    const QList<LayoutManager*> panes = panesByDocument().value(_textStorage);
    return std::any_of(panes.begin(), panes.end(), [](const LayoutManager* pane) {
        return !pane->_layers.backgroundHighlights().isEmpty();
    });
}

std::vector<ColorStore::Run> LayoutManager::backgroundHighlights(Range range) const
{
    return _layers.backgroundHighlights().runs(range.location, range.max());
}

QList<Range> LayoutManager::misspelledWords(Range range) const
{
    QList<Range> words;
    for (const ColorStore::Run& run : _layers.misspellings().runs(range.location, range.max())) {
        words.append({run.location, run.length});
    }
    return words;
}

TextFormatProvider::LineFormats LayoutManager::formatsForLine(qsizetype line, qsizetype lineStart,
                                                              qsizetype lineLength)
{
    LineFormats formats;
    for (const LayoutManager* pane : panesByDocument().value(_textStorage)) {
        LineFormats layer = pane->_layers.lineFormats(lineStart, lineLength);
        formats.foreground.append(layer.foreground);
        formats.background.append(layer.background);
    }
    if (!_standIns.isEmpty() && _textStorage) {
        const QString text = _textStorage->text().line(line);
        for (qsizetype k = 0; k < text.size(); ++k) {
            if (!_standIns.originalOf(text[k]).isNull()) {
                QTextLayout::FormatRange range;
                range.start = int(k);
                range.length = 1;
                range.format = standInFormat();
                formats.foreground.append(range);
            }
        }
    }
    return formats;
}

void LayoutManager::setProposedText(qsizetype position, const QString& text)
{
    if (_textView) {
        _textView->setProposedText(position, text);
    }
}

const QString& LayoutManager::proposedText() const
{
    static const QString none;
    return _textView ? _textView->proposedText() : none;
}

void LayoutManager::textStorageDidChange(const TextChange& change)
{
    _layers.contentsChange(change.position, change.charsRemoved, change.charsAdded);
}

void LayoutManager::colorsChanged(Range range)
{
    // Only the shown lines the colours changed in are painted again: a slice of the
    // whole-text colouring off screen paints nothing, a keyword typed paints its line.
    for (LayoutManager* pane : panesByDocument().value(_textStorage)) {
        if (TextView* view = pane->_textView) {
            view->formatsChanged(range);
        }
    }
}
