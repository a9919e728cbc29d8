#include "editor/LayoutManager.h"

#include "document/Document.h"
#include "editor/TextDocumentLayout.h"
#include "editor/TextView.h"
#include "editor/UndoActionNames.h"

#include <QFontDatabase>
#include <QFontMetrics>
#include <QHash>
#include <QPainter>
#include <QTextBlock>
#include <QTextDocument>

#include <algorithm>

namespace {

// Every pane on a document, so that the formats of a shared block come from all of them.
QHash<const QTextDocument*, QList<LayoutManager*>>& panesByDocument()
{
    static QHash<const QTextDocument*, QList<LayoutManager*>> panes;
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

LayoutManager::LayoutManager(TextView* textView, QTextDocument* textStorage)
    : QObject(textView)
    , _textView(textView)
    , _textStorage(textStorage)
    , _registeredStorage(textStorage)
    , _layers(textStorage ? textStorage->characterCount() : 0)
{
    updatePreferences(textView->editorSettings());
    if (textStorage) {
        panesByDocument()[textStorage].append(this);
        connect(textStorage, &QTextDocument::contentsChange, this,
                &LayoutManager::textStorageDidChange);
        // The Edit menu names the steps the document makes itself (Replace All) as well as
        // the pane's: the record must follow the text from before the first of them.
        UndoActionNames::of(textStorage);
    }
}

Document* LayoutManager::document() const
{
    // A document owns the text storage it holds its text in.
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
    for (InvisibleKind kind : {InvisibleKind::NewLine, InvisibleKind::Tab, InvisibleKind::Space,
                               InvisibleKind::FullwidthSpace}) {
        QStaticText& mark = _marks[static_cast<int>(kind)];
        mark.setText(characterOf(kind));
        mark.setTextFormat(Qt::PlainText);
        mark.prepare(QTransform(), _attributes.font());
    }
    setShowInvisibleCharacters(false);
}

void LayoutManager::setShowInvisibleCharacters(bool showInvisibleCharacters)
{
    if (_showInvisibleCharacters == showInvisibleCharacters) {
        return;
    }
    _showInvisibleCharacters = showInvisibleCharacters;
    if (_textView) {
        _textView->viewport()->update();
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

QList<LayoutManager::InvisibleMark> LayoutManager::invisibleCharacterMarks(const QRectF& rect) const
{
    QList<InvisibleMark> marks;
    if (!_textView) {
        return marks;
    }
    for (const TextView::ShownBlock& shown : _textView->shownBlocks(rect.top(), rect.bottom())) {
        const QTextBlock& block = shown.block;
        const QTextLayout* layout = block.layout();
        const QString text = block.text();
        const qsizetype blockStart = block.position();
        // Every block but the last ends in a line break, held as one LF in memory.
        const bool endsWithLineBreak = block.next().isValid();
        // Proposed or composed text is laid out without being in the text: positions in the
        // layout after it are that much further on.
        const int insertedAt = layout->preeditAreaPosition();
        const int inserted = int(layout->preeditAreaText().size());
        const auto toLayout = [&](int k) {
            return inserted > 0 && k >= insertedAt ? k + inserted : k;
        };
        const auto toText = [&](int k) {
            if (inserted == 0 || k <= insertedAt) {
                return k;
            }
            return std::max(insertedAt, k - inserted);
        };
        for (int i = 0; i < layout->lineCount(); ++i) {
            const QTextLine line = layout->lineAt(i);
            const qreal top = shown.offset.y() + line.y();
            if (top > rect.bottom() || top + line.height() < rect.top()) {
                continue;
            }
            // Only the characters under the rectangle: an unwrapped line may be very long.
            const qreal left = rect.left() - shown.offset.x();
            const qreal right = rect.right() - shown.offset.x();
            const int lineStart = toText(line.textStart());
            const int lineEnd = toText(line.textStart() + line.textLength());
            int from = std::max(lineStart, toText(line.xToCursor(left)) - 1);
            int to = std::min(lineEnd, toText(line.xToCursor(right)) + 1);
            const bool isLastLine = i == layout->lineCount() - 1;
            for (int k = std::max(from, 0); k < to || (k == to && isLastLine && k == text.size());
                 ++k) {
                InvisibleKind kind;
                qreal nudge = 0;
                if (k >= text.size()) {
                    if (!endsWithLineBreak) {
                        break;
                    }
                    kind = InvisibleKind::NewLine;
                } else {
                    switch (text.at(k).unicode()) {
                    case u'\n':
                    case u'\r':
                    case 0x2029:
                        kind = InvisibleKind::NewLine;
                        break;
                    case u'\t':
                        kind = InvisibleKind::Tab;
                        break;
                    case u' ':
                    case 0x00A0:
                        kind = InvisibleKind::Space;
                        nudge = 1;
                        break;
                    case 0x3000:
                        kind = InvisibleKind::FullwidthSpace;
                        break;
                    default:
                        continue;
                    }
                }
                const QPointF origin(shown.offset.x() + line.cursorToX(toLayout(k)) + nudge, top);
                marks.append({blockStart + k, kind, origin});
            }
        }
    }
    return marks;
}

void LayoutManager::setCharacterStandIns(const CharacterStandIns& standIns)
{
    if (_standIns == standIns) {
        return;
    }
    _standIns = standIns;
    if (_textView) {
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

void LayoutManager::drawStandIns(QPainter& painter, const QRectF& rect)
{
    if (_standIns.isEmpty() || !_textView) {
        return;
    }
    painter.save();
    const QFont font = _textView->font();
    painter.setFont(font);
    painter.setPen(_attributes.foreground().color());
    for (const TextView::ShownBlock& shown : _textView->shownBlocks(rect.top(), rect.bottom())) {
        const QString text = shown.block.text();
        const QTextLayout* layout = shown.block.layout();
        for (qsizetype k = 0; k < text.size(); ++k) {
            const QChar original = _standIns.originalOf(text[k]);
            if (original.isNull()) {
                continue;
            }
            const QTextLine line = layout->lineForTextPosition(int(k));
            if (!line.isValid()) {
                continue;
            }
            const QPointF baseline(shown.offset.x() + line.cursorToX(int(k)),
                                   shown.offset.y() + line.y() + line.ascent());
            painter.drawText(baseline, markOfStandIn(original, font));
        }
    }
    painter.restore();
}

void LayoutManager::drawGlyphs(QPainter& painter, const QRectF& rect)
{
    drawStandIns(painter, rect);
    if (!_showInvisibleCharacters) {
        return;
    }
    const QList<InvisibleMark> marks = invisibleCharacterMarks(rect);
    if (_textView) {
        const QList<TextView::ShownBlock> shown = _textView->shownBlocks(rect.top(), rect.bottom());
        if (!shown.isEmpty()) {
            const QTextBlock& last = shown.last().block;
            _lengthToRedraw = last.position() + last.text().size();
        }
    }
    painter.save();
    painter.setFont(_attributes.font());
    painter.setPen(_attributes.foreground().color());
    for (const InvisibleMark& mark : marks) {
        painter.drawStaticText(mark.origin, _marks[static_cast<int>(mark.kind)]);
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

QList<QTextLayout::FormatRange> LayoutManager::formatsForBlock(const QTextBlock& block) const
{
    QList<QTextLayout::FormatRange> formats;
    const QList<LayoutManager*> panes = panesByDocument().value(_textStorage);
    QList<TextFormatProvider::LineFormats> layers;
    layers.reserve(panes.size());
    for (const LayoutManager* pane : panes) {
        layers.append(pane->_layers.lineFormats(block.position(), block.length()));
    }
    // Backgrounds first, so that a foreground laid later never hides them.
    for (const TextFormatProvider::LineFormats& pane : std::as_const(layers)) {
        formats.append(pane.background);
    }
    for (const TextFormatProvider::LineFormats& pane : std::as_const(layers)) {
        formats.append(pane.foreground);
    }
    if (!_standIns.isEmpty()) {
        const QString text = block.text();
        for (qsizetype k = 0; k < text.size(); ++k) {
            if (!_standIns.originalOf(text[k]).isNull()) {
                QTextLayout::FormatRange range;
                range.start = int(k);
                range.length = 1;
                range.format = standInFormat();
                formats.append(range);
            }
        }
    }
    // Text laid out but not in the document (proposed or being composed) moves the formats
    // after it along; proposed text is grey.
    const QTextLayout* layout = block.layout();
    const int inserted = layout ? int(layout->preeditAreaText().size()) : 0;
    if (inserted == 0) {
        return formats;
    }
    const int at = layout->preeditAreaPosition();
    QList<QTextLayout::FormatRange> moved;
    moved.reserve(formats.size() + 2);
    for (QTextLayout::FormatRange range : std::as_const(formats)) {
        if (range.start >= at) {
            range.start += inserted;
        } else if (range.start + range.length > at) {
            QTextLayout::FormatRange after = range;
            after.start = at + inserted;
            after.length = range.start + range.length - at;
            range.length = at - range.start;
            moved.append(range);
            range = after;
        }
        moved.append(range);
    }
    for (const LayoutManager* pane : panes) {
        if (!pane->_proposedText.isEmpty() && pane->_proposal.block() == block) {
            QTextLayout::FormatRange proposed;
            proposed.start = at;
            proposed.length = inserted;
            proposed.format.setForeground(QColor(Qt::lightGray));
            proposed.format.setBackground(Qt::transparent);
            moved.append(proposed);
            break;
        }
    }
    return moved;
}

void LayoutManager::setProposedText(qsizetype position, const QString& text)
{
    const bool shows = !text.isEmpty() && _textStorage;
    const QTextBlock block = shows ? _textStorage->findBlock(int(position)) : QTextBlock();
    if (!_proposedText.isEmpty()) {
        const QTextBlock shownIn = _proposal.block();
        _proposal = QTextCursor();
        _proposedText.clear();
        if (shownIn.isValid() && shownIn.layout()) {
            shownIn.layout()->setPreeditArea(-1, QString());
            // Stepping through the candidates changes the proposal within one line: it is
            // laid out once, below.
            if (shownIn != block) {
                relayOut(shownIn);
            }
        }
    }
    if (!shows) {
        return;
    }
    _proposal = QTextCursor(_textStorage);
    _proposal.setPosition(int(position));
    _proposedText = text;
    block.layout()->setPreeditArea(int(position - block.position()), text);
    relayOut(block);
}

qsizetype LayoutManager::proposedTextPosition() const
{
    return _proposedText.isEmpty() ? -1 : _proposal.position();
}

void LayoutManager::relayOut(const QTextBlock& block)
{
    QTextLayout* layout = block.layout();
    const QList<QTextLayout::FormatRange> formats = formatsForBlock(block);
    if (formats != layout->formats()) {
        layout->setFormats(formats);
    }
    markBlockDirty(block);
}

void LayoutManager::markBlockDirty(const QTextBlock& block)
{
    // Now, not merged into the next edit's notice.
    if (auto* layout = qobject_cast<TextDocumentLayout*>(_textStorage->documentLayout())) {
        layout->relayOutBlock(block);
    } else {
        _textStorage->markContentsDirty(block.position(), block.length());
    }
}

int LayoutManager::applyTemporaryAttributes(qreal top, qreal bottom)
{
    if (!_textView || !_textStorage) {
        return 0;
    }
    std::vector<std::pair<QTextBlock, QList<QTextLayout::FormatRange>>> changed;
    for (const TextView::ShownBlock& shown : _textView->shownBlocks(top, bottom)) {
        QList<QTextLayout::FormatRange> formats = formatsForBlock(shown.block);
        if (formats != shown.block.layout()->formats()) {
            changed.emplace_back(shown.block, std::move(formats));
        }
    }
    // The change must reach the document layout now; left pending, it would be merged into
    // the next edit's contentsChange. A few blocks are told one by one, so that only their
    // lines are painted again; many in one notice, each then laid out once, when painted.
    if (changed.size() <= 4) {
        for (const auto& [block, formats] : changed) {
            block.layout()->setFormats(formats);
            markBlockDirty(block);
        }
    } else {
        for (const auto& [block, formats] : changed) {
            block.layout()->setFormats(formats);
        }
        const QTextBlock& last = changed.back().first;
        const int from = changed.front().first.position();
        _textStorage->markContentsDirty(from, last.position() + last.length() - from);
    }
    return int(changed.size());
}

void LayoutManager::textStorageDidChange(int position, int removed, int added)
{
    // Qt may count the document's closing paragraph separator in both numbers; the lengths
    // before and after decide what was really removed.
    const qsizetype newLength = _textStorage ? _textStorage->characterCount() : 0;
    qsizetype reallyRemoved = _layers.textLength() + added - newLength;
    qsizetype reallyAdded = added;
    if (reallyRemoved < 0) {
        reallyAdded -= reallyRemoved;
        reallyRemoved = 0;
    }
    _layers.contentsChange(position, reallyRemoved, reallyAdded);
    Q_UNUSED(removed);

    // The document lays the edited blocks out again right after this signal: give them their
    // moved colours now, so that the next paint finds nothing to change and the edit is laid
    // out and painted once, not twice. Only a few blocks: a large paste is coloured when its
    // blocks are painted.
    if (_textStorage) {
        QTextBlock block = _textStorage->findBlock(position);
        for (int count = 0; block.isValid() && block.position() <= position + added && count < 64;
             block = block.next(), ++count) {
            const QList<QTextLayout::FormatRange> formats = formatsForBlock(block);
            if (formats != block.layout()->formats()) {
                block.layout()->setFormats(formats);
            }
        }
    }
}

void LayoutManager::colorsChanged(Range range)
{
    // Only the shown lines the colours changed in are painted again: a slice of the
    // whole-text colouring off screen paints nothing, a keyword typed paints its line.
    for (LayoutManager* pane : panesByDocument().value(_textStorage)) {
        TextView* view = pane->_textView;
        if (!view) {
            continue;
        }
        QRectF dirty;
        for (const TextView::ShownBlock& shown : view->shownBlocks(0, view->viewport()->height())) {
            const qsizetype start = shown.block.position();
            if (start >= range.max()) {
                break;
            }
            if (start + shown.block.length() > range.location) {
                dirty |= shown.rect;
            }
        }
        if (!dirty.isEmpty()) {
            const QRect lines = dirty.toAlignedRect();
            view->viewport()->update(0, lines.top(), view->viewport()->width(), lines.height());
        }
    }
}
