#include "editor/TextView.h"

#include "document/TextMirror.h"
#include "editor/CompletionManager.h"
#include "editor/GutterView.h"
#include "editor/LayoutManager.h"
#include "editor/SpellCheckingController.h"
#include "editor/StringTransform.h"
#include "editor/SyntaxColoringController.h"
#include "editor/TextDocumentLayout.h"
#include "editor/TextViewCompletion.h"
#include "editor/TextViewKeys.h"
#include "editor/TextViewPrivate.h"
#include "editor/TransformationsMenu.h"
#include "editor/UndoActionNames.h"
#include "platform/PropertyList.h"
#include "platform/SystemBeep.h"
#include "syntax/SyntaxDefinitionFolder.h"
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
#include <QSignalBlocker>

namespace {

const QString kEntityReferenceResource = QStringLiteral(":/EntityReference.plist");

} // namespace

TextView::TextView(const EditorServices& services, const EditorSettings& settings, QWidget* parent)
    : QPlainTextEdit(parent)
    , d(std::make_unique<TextViewPrivate>(services, settings))
{
    d->completion =
        std::make_unique<TextViewCompletion>(this, services.completion, services.syntax);
    d->keys = std::make_unique<TextViewKeys>(*this, *d->completion);
    readFontAndColors();
    d->appearance.tabWidth = settings.tabWidth;
    d->typing.autoIndent = settings.autoIndent;
    d->typing.autoBraceMatching = settings.autoBraceMatching;
    d->characterEntity = settings.characterEntity;
    d->completion->setAutoComplete(settings.autoComplete);
    if (QFile::exists(kEntityReferenceResource)) {
        d->entityReference = PropertyList::readFile(kEntityReferenceResource).toList();
    }

    setFrameShape(QFrame::NoFrame);
    setAutoFillBackground(true);
    setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    // Start with the wrapping the window will ask for, so that a large text is not laid out
    // once wrapped and again unwrapped.
    const bool wrap = settings.wrapLines;
    setLineWrapMode(wrap ? QPlainTextEdit::WidgetWidth : QPlainTextEdit::NoWrap);
    setHorizontalScrollBarPolicy(wrap ? Qt::ScrollBarAlwaysOff : Qt::ScrollBarAsNeeded);
    applyFontAndColors();
    updateMargins();
    // Lay the colours onto blocks that scrolling or an edit is about to show before the paint
    // rather than during it: a change made while painting asks for a second paint.
    connect(this, &QPlainTextEdit::updateRequest, this, [this](const QRect& rect) {
        if (d->layoutManager) {
            d->layoutManager->applyTemporaryAttributes(rect.top(), rect.bottom());
        }
    });
}

TextView::~TextView()
{
    d->completion->terminate();
    // The state goes before the base classes: nothing they do on their way out may reach it.
    disconnect(d->storageDestroyed);
    disconnect(this, &QPlainTextEdit::updateRequest, this, nullptr);
}

void TextView::readFontAndColors()
{
    const EditorSettings& settings = d->settings;
    d->appearance.textFont = settings.font();
    d->appearance.textColor = settings.textColor;
    d->appearance.insertionPointColor = settings.insertionPointColor;
    d->appearance.backgroundColor = settings.backgroundColor;
    d->typing.autoIndentBraces = settings.autoIndentBraces;
    d->typing.autoIndentClosingBraces = settings.autoIndentClosingBraces;
    d->typing.chevronMatching = settings.usedChevronsMatching;
    d->typing.spaceTab = settings.spaceTab;
}

void TextView::applyFontAndColors()
{
    QPalette colors = palette();
    if (d->appearance.textColor.isValid()) {
        colors.setColor(QPalette::Text, d->appearance.textColor);
    }
    if (d->appearance.backgroundColor.isValid()) {
        colors.setColor(QPalette::Base, d->appearance.backgroundColor);
        // The one-point strip around the text area shows the text's background too.
        colors.setColor(QPalette::Window, d->appearance.backgroundColor);
    }
    setPalette(colors);
    if (font() != d->appearance.textFont) {
        setFont(d->appearance.textFont);
    }
    // A shared document takes the font as its own; changing it lays the whole text out
    // again, so only when it really changes.
    if (document()->defaultFont() != d->appearance.textFont) {
        document()->setDefaultFont(d->appearance.textFont);
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
    if (textStorage->defaultFont() != d->appearance.textFont) {
        textStorage->setDefaultFont(d->appearance.textFont);
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
        textStorage->setDocumentLayout(new TextDocumentLayout(textStorage));
    }
    setDocument(textStorage);
    disconnect(d->storageDestroyed);
    // QPlainTextEdit does not survive its document going first; fall back to an empty text
    // of its own while the document's QObject part still stands.
    d->storageDestroyed = connect(textStorage, &QObject::destroyed, this, [this] {
        delete d->layoutManager;
        d->layoutManager = nullptr;
        setDocument(nullptr);
        d->layoutManager = new LayoutManager(this, document());
    });
    delete d->layoutManager;
    d->layoutManager = new LayoutManager(this, textStorage);
    if (d->verticalRulerView) {
        d->verticalRulerView->setClientView(this);
    }
    d->completion->setDocument(textStorage);
}

void TextView::setVerticalRulerView(GutterView* ruler)
{
    if (ruler == d->verticalRulerView) {
        return;
    }
    delete d->verticalRulerView;
    d->verticalRulerView = ruler;
    if (ruler) {
        ruler->setParent(this);
        ruler->setClientView(this);
        ruler->setVisible(d->rulersVisible);
    }
    updateMargins();
}

void TextView::setRulersVisible(bool rulersVisible)
{
    d->rulersVisible = rulersVisible;
    if (d->verticalRulerView) {
        d->verticalRulerView->setVisible(rulersVisible);
    }
    updateMargins();
}

void TextView::updateMargins()
{
    const bool showRuler = d->rulersVisible && d->verticalRulerView;
    const int rulerWidth = showRuler ? int(d->verticalRulerView->requiredThickness()) : 0;
    // The extra point on the left and top is the text container's origin.
    setViewportMargins(rulerWidth + 1, 1, 0, 0);
    if (showRuler) {
        const QRect area = contentsRect();
        d->verticalRulerView->setGeometry(area.left(), area.top(), rulerWidth, area.height());
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
    style.setTabStopDistance(spaceWidth * qreal(d->appearance.tabWidth));
    return {fixedPitch, style};
}

void TextView::configureTypingAttributesAndDefaultParagraphStyle()
{
    // The tab interval follows the fixed-pitch font, whatever font the text is shown in.
    d->typingAttributes = defaultTextAttributes();
    setTabStopDistance(d->typingAttributes.paragraphStyle.tabStopDistance());
}

QPointF TextView::textContainerOrigin() const
{
    const qreal margin = document()->documentMargin();
    return {margin + 1.0, margin + 1.0};
}

const EditorServices& TextView::services() const
{
    return d->services;
}

const EditorSettings& TextView::editorSettings() const
{
    return d->settings;
}

void TextView::updatePreferences(const EditorSettings& settings)
{
    d->settings = settings;
    readFontAndColors();
    applyFontAndColors();
    if (d->layoutManager) {
        d->layoutManager->updatePreferences(settings);
    }
    if (d->verticalRulerView) {
        d->verticalRulerView->updatePreferences(settings);
    }
}

void TextView::setWrapLines(bool wrapLines)
{
    if (d->layoutManager) {
        d->layoutManager->removeBackgroundHighlights();
    }
    setHorizontalScrollBarPolicy(wrapLines ? Qt::ScrollBarAlwaysOff : Qt::ScrollBarAsNeeded);
    setLineWrapMode(wrapLines ? QPlainTextEdit::WidgetWidth : QPlainTextEdit::NoWrap);
    viewport()->update();
}

void TextView::setInvisibleCharacters(bool invisibleCharacters)
{
    if (d->layoutManager) {
        d->layoutManager->setShowInvisibleCharacters(invisibleCharacters);
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

void TextView::paintEvent(QPaintEvent* event)
{
    const QRect rect = event->rect();
    if (d->layoutManager) {
        d->layoutManager->applyTemporaryAttributes(rect.top(), rect.bottom());
    }
    QPlainTextEdit::paintEvent(event);
    QPainter painter(viewport());
    if (d->layoutManager) {
        d->layoutManager->drawGlyphs(painter, rect);
    }
    drawInsertionPoint(painter, rect);
}

void TextView::drawInsertionPoint(QPainter& painter, const QRect& rect)
{
    // QPlainTextEdit draws the insertion point by inverting what lies under it; cover that
    // with one in the insertion point's own colour.
    if (!d->appearance.insertionPointColor.isValid() || overwriteMode()) {
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
            painter.fillRect(caret, d->appearance.insertionPointColor);
        }
        break;
    }
}

// Syntax colouring --------------------------------------------------------------------

SyntaxColoringController* TextView::syntaxColoringController()
{
    if (!d->syntaxColoring) {
        d->syntaxColoring = new SyntaxColoringController(this);
    }
    return d->syntaxColoring;
}

void TextView::setSyntaxDictionary(const QVariantMap& syntaxDictionary)
{
    d->syntaxDictionary = syntaxDictionary;
    syntaxColoringController()->setSyntaxDictionary(syntaxDictionary);
    d->completion->syntaxDictionaryChanged();
}

void TextView::setSyntaxDictionay(const QString& path)
{
    setSyntaxDictionary(SyntaxDefinitionFolder::definition(path).value_or(QVariantMap()));
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
    if (!d->syntaxDictionary.isEmpty()) {
        syntaxColoringController()->textDidChanged();
    }
}

std::optional<QVariantList> TextView::makeFunctionDefinition() const
{
    if (d->syntaxDictionary.isEmpty()) {
        return std::nullopt;
    }
    return d->services.syntax.makeFunctionDefinitionWithString(
        TextMirror::mirrorOfDocument(document())->snapshot().string(), d->syntaxDictionary);
}

// Typing ------------------------------------------------------------------------------------

Range TextView::selectedRange() const
{
    const QTextCursor cursor = textCursor();
    return {cursor.selectionStart(), cursor.selectionEnd() - cursor.selectionStart()};
}

void TextView::setSelectedRange(Range range)
{
    QTextCursor cursor(document());
    const qsizetype last = document()->characterCount() - 1;
    cursor.setPosition(int(qBound<qsizetype>(0, range.location, last)));
    cursor.setPosition(int(qBound<qsizetype>(0, range.max(), last)), QTextCursor::KeepAnchor);
    setTextCursor(cursor);
}

qsizetype TextView::cursorPosition() const
{
    return textCursor().position();
}

qsizetype TextView::selectionAnchor() const
{
    return textCursor().anchor();
}

void TextView::setSelection(qsizetype anchor, qsizetype position)
{
    QTextCursor cursor(document());
    const qsizetype last = document()->characterCount() - 1;
    cursor.setPosition(int(qBound<qsizetype>(0, anchor, last)));
    cursor.setPosition(int(qBound<qsizetype>(0, position, last)), QTextCursor::KeepAnchor);
    setTextCursor(cursor);
}

QString TextView::selectedText() const
{
    // The cursor ends each line with U+2029.
    return textCursor().selectedText().replace(QChar::ParagraphSeparator, u'\n');
}

QRect TextView::rectForPosition(qsizetype position) const
{
    QTextCursor cursor(document());
    const qsizetype last = document()->characterCount() - 1;
    cursor.setPosition(int(qBound<qsizetype>(0, position, last)));
    return cursorRect(cursor);
}

qsizetype TextView::positionAt(const QPoint& point) const
{
    return cursorForPosition(point).position();
}

void TextView::scrollRangeToVisible(Range range)
{
    if (range.isNotFound()) {
        return;
    }
    const qsizetype last = document()->characterCount() - 1;
    const QTextCursor saved = textCursor();
    QTextCursor target(document());
    target.setPosition(int(qBound<qsizetype>(0, range.max(), last)));
    target.setPosition(int(qBound<qsizetype>(0, range.location, last)));
    // The view scrolls only through its cursor: show the range's start with it, then put
    // the selection back where it was without scrolling again.
    const QSignalBlocker blocker(this);
    setTextCursor(target);
    ensureCursorVisible();
    const int vertical = verticalScrollBar()->value();
    const int horizontal = horizontalScrollBar()->value();
    setTextCursor(saved);
    verticalScrollBar()->setValue(vertical);
    horizontalScrollBar()->setValue(horizontal);
}

void TextView::replaceCharactersInRange(Range range, const QString& string)
{
    if (range.length == 0 && string.isEmpty()) {
        return;
    }
    QTextCursor cursor(document());
    cursor.setPosition(int(range.location));
    cursor.setPosition(int(range.max()), QTextCursor::KeepAnchor);
    cursor.insertText(string);
    setTextCursor(cursor);
}

void TextView::insertTextAtSelection(const QString& text)
{
    // Scripts put their output here too: a read-only text takes none.
    if (isReadOnly()) {
        SystemBeep::beep();
        return;
    }
    QTextCursor cursor = textCursor();
    cursor.insertText(text);
    setTextCursor(cursor);
    ensureCursorVisible();
}

void TextView::keyPressEvent(QKeyEvent* event)
{
    d->keys->keyPressed(event, [this](QKeyEvent* key) { QPlainTextEdit::keyPressEvent(key); });
}

void TextView::inputMethodEvent(QInputMethodEvent* event)
{
    d->hasMarkedText = !event->preeditString().isEmpty();
    if (d->hasMarkedText) {
        d->completion->terminateWithCancel(true);
    }
    QPlainTextEdit::inputMethodEvent(event);
}

void TextView::selectAll()
{
    d->completion->terminateWithCancel(true);
    QPlainTextEdit::selectAll();
}

void TextView::focusOutEvent(QFocusEvent* event)
{
    // Focus taken by another part of the window ends the completion; the list itself never
    // takes it, and a window losing its place ends it on its own.
    if (event->reason() != Qt::PopupFocusReason && event->reason() != Qt::ActiveWindowFocusReason) {
        d->completion->terminateWithCancel(true);
    }
    QPlainTextEdit::focusOutEvent(event);
}

void TextView::mousePressEvent(QMouseEvent* event)
{
    Q_EMIT mouseDown(this);
    d->completion->terminateWithCancel(true);
    setFocus(Qt::MouseFocusReason);
    QPlainTextEdit::mousePressEvent(event);
}

// Shifting and transformations ---------------------------------------------------------------

void TextView::applyEdit(const TextEdit& edit)
{
    const bool wasEmpty = document()->isEmpty();
    QTextCursor cursor(document());
    // Placed before the block opens: undoing the step puts the caret back where the block
    // began.
    cursor.setPosition(int(edit.range.location));
    cursor.setPosition(int(edit.range.max()), QTextCursor::KeepAnchor);
    cursor.beginEditBlock();
    if (wasEmpty) {
        // An empty text has no characters to take the attributes from: give the new text
        // the typing attributes, which are the text's own defaults.
        cursor.insertText(edit.string, QTextCharFormat());
    } else {
        cursor.insertText(edit.string);
    }
    cursor.endEditBlock();
    const qsizetype last = document()->characterCount() - 1;
    const Range selection = edit.selection;
    cursor.setPosition(int(qBound<qsizetype>(0, selection.location, last)));
    cursor.setPosition(int(qBound<qsizetype>(0, selection.max(), last)), QTextCursor::KeepAnchor);
    setTextCursor(cursor);
}

void TextView::doReplaceString(const QString& string, Range range, Range selected,
                               const QString& actionName)
{
    if (isReadOnly()) {
        SystemBeep::beep();
        return;
    }
    UndoActionNames* names = UndoActionNames::of(document());
    names->beginStep(actionName);
    applyEdit({range, string, selected});
    names->endStep();
}

void TextView::doInsertString(const QString& string, Range range, Range select,
                              const QString& actionName)
{
    doReplaceString(string, range, select, actionName);
    if (!isReadOnly()) {
        ensureCursorVisible();
    }
}

void TextView::shiftRight(QObject*)
{
    const TextEdit shift = TypingRules(d->typing).shiftRight(
        *TextMirror::mirrorOfDocument(document()), selectedRange());
    doReplaceString(shift.string, shift.range, shift.selection, tr("Shift Right"));
}

void TextView::shiftLeft(QObject*)
{
    if (const auto shift = TypingRules(d->typing).shiftLeft(
            *TextMirror::mirrorOfDocument(document()), selectedRange())) {
        doReplaceString(shift->string, shift->range, shift->selection, tr("Shift Left"));
    }
}

void TextView::exchange(Exchange kind)
{
    struct Transformation {
        QString (*transform)(const QString&);
        const char* actionName; // none for the case changes
    };
    static constexpr Transformation transformations[] = {
        {&StringTransform::stringToFullwidth, QT_TR_NOOP("exchange to Fullwidth")},
        {&StringTransform::stringToHalfwidth, QT_TR_NOOP("exchange to Halfwidth")},
        {&StringTransform::stringHiraganaToKatakana, QT_TR_NOOP("exchange Hiragana to Katakana")},
        {&StringTransform::stringHiraganaToLatin, QT_TR_NOOP("exchange Hiragana to Latin")},
        {&StringTransform::stringKatakanaToHiragana, QT_TR_NOOP("exchange Katakana to Hiragana")},
        {&StringTransform::stringKatakanaToLatin, QT_TR_NOOP("exchange Katakana to Latin")},
        {&StringTransform::stringLatinToHiragana, QT_TR_NOOP("exchange Latin to Hiragana")},
        {&StringTransform::stringLatinToKatakana, QT_TR_NOOP("exchange Latin to Katakana")},
        {&StringTransform::stringMandarinToLatin, QT_TR_NOOP("exchange Mandarin to Latin")},
        {&StringTransform::stringToUpperCase, nullptr},
        {&StringTransform::stringToLowerCase, nullptr},
        {&StringTransform::stringCapitalized, nullptr},
    };
    const Range selection = selectedRange();
    if (selection.length == 0) {
        return;
    }
    const Transformation& transformation = transformations[int(kind)];
    const QString result = transformation.transform(selectedText());
    doInsertString(result, selection, {selection.location, result.size()},
                   transformation.actionName ? tr(transformation.actionName) : QString());
}

void TextView::exchangeToEntityReference(QObject*)
{
    const Range selection = selectedRange();
    if (d->entityReference.isEmpty() || selection.length == 0) {
        return;
    }
    const QString replaced = StringTransform::stringByReplacingEntityReferences(
        selectedText(), d->entityReference, d->characterEntity);
    doInsertString(replaced, selection, {selection.location + replaced.size(), 0}, QString());
}

QMenu* TextView::menuForEvent(QContextMenuEvent*)
{
    QMenu* menu = createStandardContextMenu();
    menu->clear();
    menu->addAction(tr("Cut"), this, &QPlainTextEdit::cut);
    menu->addAction(tr("Copy"), this, &QPlainTextEdit::copy);
    menu->addAction(tr("Paste"), this, &QPlainTextEdit::paste);
    menu->addAction(tr("Delete"), this, [this] { textCursor().removeSelectedText(); });
    menu->addAction(tr("Select All"), this, [this] { selectAll(); });
    menu->addSeparator();
    menu->addAction(tr("Shift Right"), this, [this] { shiftRight(this); });
    menu->addAction(tr("Shift Left"), this, [this] { shiftLeft(this); });
    menu->addSeparator();
    QMenu* transformations = menu->addMenu(tr("Transformations"));
    TransformationsMenu::addItems(transformations, [this] { return this; });
    return menu;
}

void TextView::contextMenuEvent(QContextMenuEvent* event)
{
    QMenu* menu = menuForEvent(event);
    // A misspelt word under the pointer gets the dictionary's guesses at the top.
    SpellCheckingController::addSpellingSuggestions(this, menu, event->pos());
    menu->exec(event->globalPos());
    delete menu;
}

// Fields ------------------------------------------------------------------------------------

LayoutManager* TextView::layoutManager() const
{
    return d->layoutManager;
}

GutterView* TextView::verticalRulerView() const
{
    return d->verticalRulerView;
}

bool TextView::rulersVisible() const
{
    return d->rulersVisible;
}

const TextView::TextAttributes& TextView::typingAttributes() const
{
    return d->typingAttributes;
}

void TextView::setIndicator(QProgressBar* indicator)
{
    d->indicator = indicator;
}

QProgressBar* TextView::indicator() const
{
    return d->indicator;
}

const TextView::Appearance& TextView::appearance() const
{
    return d->appearance;
}

const TypingRules::Settings& TextView::typingSettings() const
{
    return d->typing;
}

TypingRules::Settings& TextView::typing()
{
    return d->typing;
}

TextViewCompletion& TextView::completion() const
{
    return *d->completion;
}

TextViewKeys& TextView::keys() const
{
    return *d->keys;
}

bool TextView::usedIndentClosingBraces() const
{
    return d->usedIndentClosingBraces;
}

void TextView::setUsedIndentClosingBraces(bool value)
{
    d->usedIndentClosingBraces = value;
}

const QVariantList& TextView::entityReference() const
{
    return d->entityReference;
}

bool TextView::characterEntity() const
{
    return d->characterEntity;
}

void TextView::setCharacterEntity(bool value)
{
    d->characterEntity = value;
}

const QVariantMap& TextView::syntaxDictionary() const
{
    return d->syntaxDictionary;
}

bool TextView::hasMarkedText() const
{
    return d->hasMarkedText;
}
