#include "editor/TextView.h"

#include "editor/EditorController.h"
#include "editor/GutterView.h"
#include "editor/LayoutManager.h"
#include "editor/SpellCheckingController.h"
#include "editor/SyntaxColoringController.h"
#include "editor/TextMirror.h"
#include "platform/PropertyList.h"
#include "platform/UserDefaults.h"
#include "syntax/SyntaxManager.h"

#include <QAbstractTextDocumentLayout>
#include <QContextMenuEvent>
#include <QFile>
#include <QFontDatabase>
#include <QFontMetricsF>
#include <QMenu>
#include <QPaintEvent>
#include <QPainter>
#include <QProgressBar>
#include <QScrollBar>

namespace {

const QString kEntityReferenceResource = QStringLiteral(":/EntityReference.plist");

} // namespace

TextView::TextView(QWidget* parent)
    : QPlainTextEdit(parent)
{
    const UserDefaults& defaults = UserDefaults::standardUserDefaults();
    readFontAndColors();
    _tabWidth = defaults.integerForKey(QStringLiteral("DefaultTabWidth"));
    _autoIndent = defaults.boolForKey(QStringLiteral("AutoIndent"));
    _autoBraceMatching = defaults.boolForKey(QStringLiteral("AutoBraceMatching"));
    _characterEntity = defaults.boolForKey(QStringLiteral("CharacterEntity"));
    _autoComplete = defaults.boolForKey(QStringLiteral("AutoComplete"));
    if (QFile::exists(kEntityReferenceResource)) {
        _entityReference = PropertyList::readFile(kEntityReferenceResource).toList();
    }

    setFrameShape(QFrame::NoFrame);
    setAutoFillBackground(true);
    setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    // Start with the wrapping the window will ask for, so that a large text is not laid out
    // once wrapped and again unwrapped.
    const bool wrap = defaults.boolForKey(QStringLiteral("DefaultWrapLines"));
    setLineWrapMode(wrap ? QPlainTextEdit::WidgetWidth : QPlainTextEdit::NoWrap);
    setHorizontalScrollBarPolicy(wrap ? Qt::ScrollBarAlwaysOff : Qt::ScrollBarAsNeeded);
    applyFontAndColors();
    updateMargins();
    // Lay the colours onto blocks that scrolling or an edit is about to show before the paint
    // rather than during it: a change made while painting asks for a second paint.
    connect(this, &QPlainTextEdit::updateRequest, this, [this](const QRect& rect) {
        if (_layoutManager) {
            _layoutManager->applyTemporaryAttributes(rect.top(), rect.bottom());
        }
    });
}

TextView::~TextView() = default;

void TextView::readFontAndColors()
{
    const UserDefaults& defaults = UserDefaults::standardUserDefaults();
    QFont font(defaults.stringForKey(QStringLiteral("DefaultFont")));
    const qint64 size = defaults.integerForKey(QStringLiteral("DefaultFontSize"));
    // Point sizes are device-independent pixels here.
    font.setPixelSize(size > 0 ? int(size) : 12);
    _textFont = font;
    _textColor = EditorController::keyedUnarchiverOfUserDefaults(
        defaults, QStringLiteral("DefaultTextColor"));
    _insertionPointColor = EditorController::keyedUnarchiverOfUserDefaults(
        defaults, QStringLiteral("DefaultInsertionPointColor"));
    _backgroundColor = EditorController::keyedUnarchiverOfUserDefaults(
        defaults, QStringLiteral("DefaultBackgroundColor"));
    _autoIndentBraces = defaults.boolForKey(QStringLiteral("AutoIndentBraces"));
    _autoIndentClosingBraces = defaults.boolForKey(QStringLiteral("AutoIndentClosingBraces"));
    _UsedChevronMatching = defaults.boolForKey(QStringLiteral("UsedChevronsMatching"));
    _spaceTab = defaults.boolForKey(QStringLiteral("SpaceTab"));
}

void TextView::applyFontAndColors()
{
    QPalette colors = palette();
    if (_textColor.isValid()) {
        colors.setColor(QPalette::Text, _textColor);
    }
    if (_backgroundColor.isValid()) {
        colors.setColor(QPalette::Base, _backgroundColor);
        // The one-point strip around the text area shows the text's background too.
        colors.setColor(QPalette::Window, _backgroundColor);
    }
    setPalette(colors);
    if (font() != _textFont) {
        setFont(_textFont);
    }
    // A shared document takes the font as its own; changing it lays the whole text out
    // again, so only when it really changes.
    if (document()->defaultFont() != _textFont) {
        document()->setDefaultFont(_textFont);
    }
    viewport()->update();
}

void TextView::setTextStorage(QTextDocument* textStorage)
{
    if (!textStorage || textStorage == document()) {
        return;
    }
    // Give the document this view's font, tab interval and wrapping before a layout is
    // attached, so that a large text is laid out as few times as possible.
    if (textStorage->defaultFont() != _textFont) {
        textStorage->setDefaultFont(_textFont);
    }
    QTextOption option = textStorage->defaultTextOption();
    const QTextOption wanted = defaultTextAttributes().paragraphStyle;
    const QTextOption::WrapMode wrapMode = wrapLines() ? wordWrapMode() : QTextOption::NoWrap;
    if (option.tabStopDistance() != wanted.tabStopDistance() || !option.tabs().isEmpty() ||
        option.wrapMode() != wrapMode) {
        option.setTabs({});
        option.setTabStopDistance(wanted.tabStopDistance());
        option.setWrapMode(wrapMode);
        textStorage->setDefaultTextOption(option);
    }
    // QPlainTextEdit needs a plain-text layout. Asking the document for its layout would
    // make a rich-text one, so look for an existing one among its children instead.
    auto* layout =
        textStorage->findChild<QAbstractTextDocumentLayout*>(QString(), Qt::FindDirectChildrenOnly);
    if (!qobject_cast<QPlainTextDocumentLayout*>(layout)) {
        textStorage->setDocumentLayout(new QPlainTextDocumentLayout(textStorage));
    }
    setDocument(textStorage);
    disconnect(_storageDestroyed);
    // QPlainTextEdit does not survive its document going first; fall back to an empty text
    // of its own while the document's QObject part still stands.
    _storageDestroyed = connect(textStorage, &QObject::destroyed, this, [this] {
        delete _layoutManager;
        _layoutManager = nullptr;
        setDocument(nullptr);
        _layoutManager = new LayoutManager(this, document());
    });
    delete _layoutManager;
    _layoutManager = new LayoutManager(this, textStorage);
    if (_verticalRulerView) {
        _verticalRulerView->setClientView(this);
    }
}

void TextView::setVerticalRulerView(GutterView* ruler)
{
    if (ruler == _verticalRulerView) {
        return;
    }
    delete _verticalRulerView;
    _verticalRulerView = ruler;
    if (ruler) {
        ruler->setParent(this);
        ruler->setClientView(this);
        ruler->setVisible(_rulersVisible);
    }
    updateMargins();
}

void TextView::setRulersVisible(bool rulersVisible)
{
    _rulersVisible = rulersVisible;
    if (_verticalRulerView) {
        _verticalRulerView->setVisible(rulersVisible);
    }
    updateMargins();
}

void TextView::updateMargins()
{
    const bool showRuler = _rulersVisible && _verticalRulerView;
    const int rulerWidth = showRuler ? int(_verticalRulerView->requiredThickness()) : 0;
    // The extra point on the left and top is the text container's origin.
    setViewportMargins(rulerWidth + 1, 1, 0, 0);
    if (showRuler) {
        const QRect area = contentsRect();
        _verticalRulerView->setGeometry(area.left(), area.top(), rulerWidth, area.height());
    }
}

void TextView::resizeEvent(QResizeEvent* event)
{
    // QPlainTextEdit lays every block out again whenever its width changes, wrapped or not:
    // about 0.1 s for a 20 MB text, at the first show and at every resize. Unwrapped blocks
    // are laid out without regard to the width (and the horizontal scroll range follows the
    // widest line, not the width), so hide the change of width from it.
    if (lineWrapMode() == QPlainTextEdit::NoWrap &&
        event->oldSize().width() != event->size().width()) {
        QResizeEvent sameWidth(event->size(),
                               QSize(event->size().width(), event->oldSize().height()));
        QPlainTextEdit::resizeEvent(&sameWidth);
    } else {
        QPlainTextEdit::resizeEvent(event);
    }
    updateMargins();
}

void TextView::setupInitialTextViewSharedState()
{
    configureTypingAttributesAndDefaultParagraphStyle();
    setUndoRedoEnabled(true);
    setReadOnly(false);
    setTextInteractionFlags(Qt::TextEditorInteraction);
    // Rich text, images, substitutions and link detection have no place in a plain-text edit.
    applyFontAndColors();
}

TextView::TextAttributes TextView::defaultTextAttributes() const
{
    const QFont fixedPitch = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    const QFontMetricsF metrics(fixedPitch);
    qreal spaceWidth = metrics.horizontalAdvance(QLatin1Char(' '));
    if (spaceWidth <= 0) {
        spaceWidth = metrics.maxWidth();
    }
    QTextOption style = document()->defaultTextOption();
    style.setTabs({});
    style.setTabStopDistance(spaceWidth * qreal(_tabWidth));
    return {fixedPitch, style};
}

void TextView::configureTypingAttributesAndDefaultParagraphStyle()
{
    // The tab interval follows the fixed-pitch font, whatever font the text is shown in.
    _typingAttributes = defaultTextAttributes();
    setTabStopDistance(_typingAttributes.paragraphStyle.tabStopDistance());
}

QPointF TextView::textContainerOrigin() const
{
    const qreal margin = document()->documentMargin();
    return {margin + 1.0, margin + 1.0};
}

void TextView::updatePreferences()
{
    readFontAndColors();
    applyFontAndColors();
    if (_layoutManager) {
        _layoutManager->updatePreferences();
    }
    if (_verticalRulerView) {
        _verticalRulerView->updatePreferences();
    }
}

void TextView::setWrapLines(bool wrapLines)
{
    if (_layoutManager) {
        _layoutManager->removeBackgroundHighlights();
    }
    setHorizontalScrollBarPolicy(wrapLines ? Qt::ScrollBarAlwaysOff : Qt::ScrollBarAsNeeded);
    setLineWrapMode(wrapLines ? QPlainTextEdit::WidgetWidth : QPlainTextEdit::NoWrap);
    viewport()->update();
}

void TextView::setInvisibleCharacters(bool invisibleCharacters)
{
    if (_layoutManager) {
        _layoutManager->setShowInvisibleCharacters(invisibleCharacters);
    }
    viewport()->update();
}

QList<TextView::ShownBlock> TextView::shownBlocks(qreal top, qreal bottom) const
{
    QList<ShownBlock> shown;
    const qreal viewportBottom = viewport()->height();
    QPointF offset = contentOffset();
    for (QTextBlock block = firstVisibleBlock(); block.isValid(); block = block.next()) {
        const QRectF rect = blockBoundingRect(block).translated(offset);
        if (block.isVisible() && rect.bottom() >= top && rect.top() <= bottom) {
            shown.append({block, offset, rect});
        }
        offset.ry() += rect.height();
        if (offset.y() > bottom || offset.y() > viewportBottom) {
            break;
        }
    }
    return shown;
}

Range TextView::visibleCharacterRange() const
{
    const QList<ShownBlock> shown = shownBlocks(0, viewport()->height());
    if (shown.isEmpty()) {
        return {0, 0};
    }
    const qsizetype from = shown.first().block.position();
    const QTextBlock& last = shown.last().block;
    const qsizetype to = last.position() + last.length() - (last.next().isValid() ? 0 : 1);
    return {from, to - from};
}

void TextView::contextMenuEvent(QContextMenuEvent* event)
{
    QMenu* menu = createStandardContextMenu(event->pos());
    SpellCheckingController::addSpellingSuggestions(this, menu, event->pos());
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->popup(event->globalPos());
}

void TextView::paintEvent(QPaintEvent* event)
{
    const QRect rect = event->rect();
    if (_layoutManager) {
        _layoutManager->applyTemporaryAttributes(rect.top(), rect.bottom());
    }
    QPlainTextEdit::paintEvent(event);
    QPainter painter(viewport());
    if (_layoutManager) {
        _layoutManager->drawGlyphs(painter, rect);
    }
    drawInsertionPoint(painter, rect);
}

void TextView::drawInsertionPoint(QPainter& painter, const QRect& rect)
{
    // QPlainTextEdit draws the insertion point by inverting what lies under it; cover that
    // with one in the insertion point's own colour.
    if (!_insertionPointColor.isValid() || overwriteMode()) {
        return;
    }
    const int position = getPaintContext().cursorPosition;
    if (position < 0) {
        return; // blinked off, or an input method is composing
    }
    for (const ShownBlock& shown : shownBlocks(rect.top(), rect.bottom())) {
        if (!shown.block.contains(position)) {
            continue;
        }
        const QTextLayout* layout = shown.block.layout();
        const int inBlock = position - shown.block.position();
        const QTextLine line = layout->lineForTextPosition(inBlock);
        if (line.isValid()) {
            const QRectF caret(shown.offset.x() + line.cursorToX(inBlock),
                               shown.offset.y() + line.y(), cursorWidth(), line.height());
            painter.fillRect(caret, _insertionPointColor);
        }
        break;
    }
}

// Syntax colouring --------------------------------------------------------------------

SyntaxColoringController* TextView::syntaxColoringController()
{
    if (!_syntaxColoring) {
        _syntaxColoring = new SyntaxColoringController(this);
    }
    return _syntaxColoring;
}

void TextView::setSyntaxDictionary(const QVariantMap& syntaxDictionary)
{
    _syntaxDictionary = syntaxDictionary;
    syntaxColoringController()->setSyntaxDictionary(syntaxDictionary);
}

void TextView::setSyntaxDictionay(const QString& path)
{
    setSyntaxDictionary(PropertyList::readDictionary(path).value_or(QVariantMap()));
    syntaxAllColoring();
}

void TextView::removeSyntaxDictionary()
{
    setSyntaxDictionary(QVariantMap());
}

void TextView::syntaxVisibleColoring()
{
    syntaxColoringController()->syntaxVisibleColoring();
}

void TextView::syntaxAllColoring()
{
    syntaxColoringController()->syntaxAllColoring();
}

void TextView::performSyntaxAllColoring()
{
    syntaxColoringController()->performSyntaxAllColoring();
}

void TextView::textDidChanged()
{
    if (!_syntaxDictionary.isEmpty()) {
        syntaxColoringController()->textDidChanged();
    }
}

std::optional<QVariantList> TextView::makeFunctionDefinition() const
{
    if (_syntaxDictionary.isEmpty()) {
        return std::nullopt;
    }
    return SyntaxManager::sharedSyntaxManager().makeFunctionDefinitionWithString(
        TextMirror::mirrorOfDocument(document())->string(), _syntaxDictionary);
}
