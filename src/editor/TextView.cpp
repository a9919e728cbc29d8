#include "editor/TextView.h"

#include "document/TextMirror.h"
#include "editor/BraceMatcher.h"
#include "editor/CompletionDocumentWords.h"
#include "editor/CompletionManager.h"
#include "editor/EditorController.h"
#include "editor/FindIndicator.h"
#include "editor/GutterView.h"
#include "editor/LayoutManager.h"
#include "editor/LineShifter.h"
#include "editor/SpellCheckingController.h"
#include "editor/StringTransform.h"
#include "editor/SyntaxColoringController.h"
#include "editor/TransformationsMenu.h"
#include "editor/UndoActionNames.h"
#include "platform/PropertyList.h"
#include "platform/SystemBeep.h"
#include "platform/UserDefaults.h"
#include "syntax/CompletionCandidates.h"
#include "syntax/SyntaxDefinitionFolder.h"
#include "syntax/SyntaxManager.h"

#include <QAbstractTextDocumentLayout>
#include <QContextMenuEvent>
#include <QFile>
#include <QFontDatabase>
#include <QFontMetricsF>
#include <QFutureWatcher>
#include <QMenu>
#include <QPaintEvent>
#include <QPainter>
#include <QProgressBar>
#include <QScrollBar>
#include <QTimer>
#include <QtConcurrent/QtConcurrentRun>

namespace {

const QString kEntityReferenceResource = QStringLiteral(":/EntityReference.plist");
// Automatic completion starts this long after a typed key.
constexpr int kCompletionDelay = 700;

// White space as the platform's white-space set has it: tab and the space separators.
bool isWhiteSpace(QChar c)
{
    return c == QLatin1Char('\t') || c.category() == QChar::Separator_Space;
}

bool isClosingBracket(const QString& string)
{
    return string.size() == 1 && QStringLiteral("]})>").contains(string[0]);
}

bool isWordCharacter(QChar c)
{
    return c.isLetterOrNumber() || c == QLatin1Char('_') || c.isMark();
}

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
    connect(this, &QPlainTextEdit::cursorPositionChanged, this,
            &TextView::completionEndedElsewhere);
}

TextView::~TextView()
{
    CompletionManager& completion = CompletionManager::sharedCompletionManager();
    if (completion.isComplating(this)) {
        completion.terminateCompletion();
    }
}

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
    disconnect(_textChangedElsewhere);
    _textChangedElsewhere = connect(textStorage, &QTextDocument::contentsChange, this,
                                    &TextView::completionEndedElsewhere);
    prepareCompletionWords();
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
    // A completion under way offered the old definition's words; the new ones are built anew.
    CompletionManager::sharedCompletionManager().terminateCompletion();
    makeCompleteWordsFromSyntaxDictionary();
    prepareCompletionWords();
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
        TextMirror::mirrorOfDocument(document())->text().toString(), _syntaxDictionary);
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
    const int key = event->key();
    // A read-only text takes the keys that move and select, through QPlainTextEdit's own
    // handling, which changes nothing; the editing keys below would insert regardless.
    if (key == Qt::Key_Shift || key == Qt::Key_Control || key == Qt::Key_Alt ||
        key == Qt::Key_Meta || key == Qt::Key_AltGr || isReadOnly()) {
        QPlainTextEdit::keyPressEvent(event);
        return;
    }
    const CompletionGuard guard(this);
    CompletionManager& completion = CompletionManager::sharedCompletionManager();
    const bool completing = completion.isComplating(this);
    const QString characters = event->text();
    const Qt::KeyboardModifiers modifiers =
        event->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier);
    // Ctrl+Space starts completion, as Escape does; while the list is open it does nothing.
    if (key == Qt::Key_Space && modifiers == Qt::ControlModifier) {
        if (!completing) {
            complete(this);
        }
        return;
    }
    if (completing && (key == Qt::Key_Return || key == Qt::Key_Enter) && modifiers == 0) {
        completion.terminateCompletionWithCancel(false);
        return;
    }
    if (hasMarkedText()) {
        if (completing) {
            completion.terminateCompletionWithCancel(true);
        }
        interpretKeyEvent(event);
        return;
    }
    if (completing && characters == QLatin1String(" ")) {
        completion.terminateCompletionWithCancel(true);
        insertText(characters);
        return;
    }
    if (completing && key == Qt::Key_Right) {
        completion.terminateCompletionWithCancel(true);
        return;
    }
    if (completing && key == Qt::Key_Left) {
        completion.terminateCompletionWithCancel(true);
        interpretKeyEvent(event);
        return;
    }
    if (_autoBraceMatching && isClosingBracket(characters)) {
        if (completing) {
            completion.terminateCompletionWithCancel(true);
        }
        _isComplete = false;
        interpretKeyEvent(event);
        return;
    }
    _isComplete = true;
    if (completing && key != Qt::Key_Down && key != Qt::Key_Up) {
        // The key meets the text as typed; the list's refresh shows the proposal again.
        _layoutManager->setProposedText(-1, QString());
    }
    interpretKeyEvent(event);
    // The list follows the typed characters.
    if (completion.isComplating(this) && key != Qt::Key_Down && key != Qt::Key_Up) {
        completion.startCompletion(this);
    }
}

void TextView::interpretKeyEvent(QKeyEvent* event)
{
    const Qt::KeyboardModifiers modifiers =
        event->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier);
    const int key = event->key();
    if (event == QKeySequence::SelectAll) {
        selectAll();
    } else if ((key == Qt::Key_Return || key == Qt::Key_Enter) && modifiers == 0) {
        insertNewline(this);
    } else if (key == Qt::Key_Tab && modifiers == 0) {
        insertTab(this);
    } else if (key == Qt::Key_Backspace && modifiers == 0) {
        deleteBackward(this);
    } else if (key == Qt::Key_Escape && modifiers == 0) {
        cancelOperation(this);
    } else if (key == Qt::Key_Up && event->modifiers() == Qt::NoModifier) {
        moveUp(this);
    } else if (key == Qt::Key_Down && event->modifiers() == Qt::NoModifier) {
        moveDown(this);
    } else if (!event->text().isEmpty() && event->text()[0].isPrint() &&
               !(modifiers & (Qt::ControlModifier | Qt::MetaModifier)) && !isReadOnly()) {
        insertText(event->text());
    } else {
        QPlainTextEdit::keyPressEvent(event);
    }
}

void TextView::inputMethodEvent(QInputMethodEvent* event)
{
    _hasMarkedText = !event->preeditString().isEmpty();
    CompletionManager& completion = CompletionManager::sharedCompletionManager();
    if (_hasMarkedText && completion.isComplating(this)) {
        completion.terminateCompletionWithCancel(true);
    }
    QPlainTextEdit::inputMethodEvent(event);
}

void TextView::insertText(const QString& string)
{
    // A typed key extends the word being completed even when completion was started by
    // hand, so that cancelling can restore what was typed.
    if (_isComplete &&
        (_autoComplete || CompletionManager::sharedCompletionManager().isComplating(this))) {
        _isComplete = false;
        CompletionManager& completion = CompletionManager::sharedCompletionManager();
        if (!hasMarkedText()) {
            if (completion.isComplating(this)) {
                completion.setCurrentPartialWord(completion.currentPartialWord() + string);
            } else {
                // Each typed key schedules its own start; one that finds the list open
                // only refreshes it.
                QTimer::singleShot(kCompletionDelay, this, [this] { complete(this); });
            }
        }
    }
    insertTextAtSelection(string);

    if (!_autoBraceMatching || !isClosingBracket(string) || _usedIndentClosingBraces) {
        return;
    }
    if (string == QLatin1String(">") && !_UsedChevronMatching) {
        return;
    }
    const Range match = autoBraceMatching(string);
    if (match.length > 0) {
        FindIndicator::showFindIndicatorForRange(this, match);
    } else {
        SystemBeep::beep();
    }
}

Range TextView::autoBraceMatching(const QString& closing) const
{
    if (closing.size() != 1) {
        return {0, 0};
    }
    const Range visible = visibleCharacterRange();
    QTextCursor cursor(document());
    cursor.setPosition(int(visible.location));
    cursor.setPosition(int(visible.max()), QTextCursor::KeepAnchor);
    // Paragraph separators stand in for line breaks one for one, so positions hold.
    const QString shown = cursor.selectedText();
    const qsizetype insertion = textCursor().position() - visible.location;
    const Range found = BraceMatcher::autoBraceMatching(shown, insertion, closing[0]);
    return found.length > 0 ? Range(found.location + visible.location, 1) : Range(0, 0);
}

void TextView::insertNewline(QObject*)
{
    QTextCursor cursor = textCursor();
    cursor.insertBlock();
    setTextCursor(cursor);
    autoIndent(this);
    ensureCursorVisible();
}

void TextView::autoIndent(QObject*)
{
    QTextCursor cursor = textCursor();
    const QTextBlock previous = cursor.block().previous();
    if (!_autoIndent || !previous.isValid()) {
        return;
    }
    const auto insert = [this, &cursor](const QString& string) {
        cursor.insertText(string);
        setTextCursor(cursor);
    };
    const QString line = previous.text();
    qsizetype indent = 0;
    while (indent < line.size() && isWhiteSpace(line[indent])) {
        ++indent;
    }
    if (indent > 0) {
        insert(line.left(indent));
    }
    if (!_autoIndentBraces) {
        return;
    }
    qsizetype last = line.size() - 1;
    while (last >= 0 && isWhiteSpace(line[last])) {
        --last;
    }
    if (last < 0 || line[last] != QLatin1Char('{')) {
        return;
    }
    insertTab(this);
    if (!_autoIndentClosingBraces) {
        return;
    }
    cursor = textCursor();
    insert(QStringLiteral("\n"));
    const QString middle = cursor.block().previous().text();
    qsizetype whiteSpace = 0;
    while (whiteSpace < middle.size() && isWhiteSpace(middle[whiteSpace])) {
        ++whiteSpace;
    }
    if (whiteSpace == 0) {
        return;
    }
    const qsizetype k = qMax<qsizetype>(0, whiteSpace - (_spaceTab ? 4 : 1));
    insert(middle.left(k));
    _usedIndentClosingBraces = true;
    insertText(QStringLiteral("}"));
    _usedIndentClosingBraces = false;
    const qsizetype position = textCursor().position();
    FindIndicator::showFindIndicatorForRange(this, {position - 1, 1});
    setSelectedRange({position - k - 2, 0});
    ensureCursorVisible();
}

void TextView::insertTab(QObject*)
{
    CompletionManager& completion = CompletionManager::sharedCompletionManager();
    if (completion.isComplating(this)) {
        completion.terminateCompletionWithCancel(false);
        return;
    }
    QTextCursor cursor = textCursor();
    cursor.insertText(LineShifter::tabUnit(_spaceTab));
    setTextCursor(cursor);
}

void TextView::deleteBackward(QObject*)
{
    CompletionManager& completion = CompletionManager::sharedCompletionManager();
    if (completion.isComplating(this)) {
        QString partial = completion.currentPartialWord();
        if (!partial.isEmpty()) {
            partial.chop(1);
            completion.setCurrentPartialWord(partial);
        }
        const Range selection = selectedRange();
        if (selection.location != 0) {
            setSelectedRange({selection.location - 1, selection.length + 1});
        }
        if (rangeForUserCompletion().isNotFound()) {
            completion.terminateCompletionWithCancel(false);
            return;
        }
    }
    QTextCursor cursor = textCursor();
    const qsizetype location = cursor.position();
    if (_spaceTab && !cursor.hasSelection() && location >= 4) {
        QTextCursor before(document());
        before.setPosition(int(location - 4));
        before.setPosition(int(location), QTextCursor::KeepAnchor);
        if (before.selectedText() == QLatin1String("    ")) {
            cursor = before;
        }
    }
    if (cursor.hasSelection()) {
        cursor.removeSelectedText();
    } else {
        cursor.deletePreviousChar();
    }
    setTextCursor(cursor);
    ensureCursorVisible();
}

void TextView::cancelOperation(QObject*)
{
    CompletionManager& completion = CompletionManager::sharedCompletionManager();
    if (completion.isComplating(this)) {
        completion.terminateCompletionWithCancel(true);
    } else {
        complete(this);
    }
}

void TextView::moveUp(QObject*)
{
    CompletionManager& completion = CompletionManager::sharedCompletionManager();
    if (completion.isComplating(this)) {
        completion.selectUpperRow();
    } else {
        moveCursor(QTextCursor::Up);
    }
}

void TextView::moveDown(QObject*)
{
    CompletionManager& completion = CompletionManager::sharedCompletionManager();
    if (completion.isComplating(this)) {
        completion.selectLowerRow();
    } else {
        moveCursor(QTextCursor::Down);
    }
}

void TextView::selectAll()
{
    CompletionManager& completion = CompletionManager::sharedCompletionManager();
    if (completion.isComplating(this)) {
        completion.terminateCompletionWithCancel(true);
    }
    QPlainTextEdit::selectAll();
}

void TextView::focusOutEvent(QFocusEvent* event)
{
    // Focus taken by another part of the window ends the completion; the list itself never
    // takes it, and a window losing its place ends it on its own.
    if (event->reason() != Qt::PopupFocusReason && event->reason() != Qt::ActiveWindowFocusReason) {
        CompletionManager& completion = CompletionManager::sharedCompletionManager();
        if (completion.isComplating(this)) {
            completion.terminateCompletionWithCancel(true);
        }
    }
    QPlainTextEdit::focusOutEvent(event);
}

void TextView::mousePressEvent(QMouseEvent* event)
{
    Q_EMIT mouseDown(this);
    CompletionManager& completion = CompletionManager::sharedCompletionManager();
    if (completion.isComplating(this)) {
        completion.terminateCompletionWithCancel(true);
    }
    setFocus(Qt::MouseFocusReason);
    QPlainTextEdit::mousePressEvent(event);
}

// Shifting and transformations ---------------------------------------------------------------

void TextView::doReplaceString(const QString& string, Range range, Range selected,
                               const QString& actionName)
{
    if (isReadOnly()) {
        SystemBeep::beep();
        return;
    }
    QTextDocument* text = document();
    const bool wasEmpty = text->isEmpty();
    UndoActionNames* names = UndoActionNames::of(text);
    names->beginStep(actionName);
    QTextCursor cursor(text);
    cursor.beginEditBlock();
    cursor.setPosition(int(range.location));
    cursor.setPosition(int(range.max()), QTextCursor::KeepAnchor);
    if (wasEmpty) {
        // An empty text has no characters to take the attributes from: give the new text
        // the typing attributes, which are the text's own defaults.
        cursor.insertText(string, QTextCharFormat());
    } else {
        cursor.insertText(string);
    }
    cursor.endEditBlock();
    names->endStep();
    setSelectedRange(selected);
}

void TextView::doInsertString(const QString& string, Range range, Range select,
                              const QString& actionName)
{
    if (isReadOnly()) {
        SystemBeep::beep();
        return;
    }
    setSelectedRange(range);
    UndoActionNames* names = UndoActionNames::of(document());
    names->beginStep(actionName);
    QTextCursor cursor = textCursor();
    cursor.beginEditBlock();
    cursor.insertText(string);
    cursor.endEditBlock();
    names->endStep();
    setSelectedRange(select);
    ensureCursorVisible();
}

namespace {

// The text of the lines `range` touches, with their line breaks, and where it starts: a shift
// needs no more of a large text than that.
QString touchedLines(QTextDocument* document, Range range, qsizetype* base)
{
    const QTextBlock first = document->findBlock(int(range.location));
    const QTextBlock last = document->findBlock(int(range.max()));
    *base = first.position();
    QTextCursor cursor(document);
    cursor.setPosition(first.position());
    cursor.setPosition(qMin(last.position() + last.length(), document->characterCount() - 1),
                       QTextCursor::KeepAnchor);
    return cursor.selectedText().replace(QChar::ParagraphSeparator, QLatin1Char('\n'));
}

} // namespace

void TextView::shiftRight(QObject*)
{
    const Range selection = selectedRange();
    qsizetype base = 0;
    const QString lines = touchedLines(document(), selection, &base);
    const LineShifter::Replacement shift =
        LineShifter::shiftRight(lines, {selection.location - base, selection.length}, _spaceTab);
    doReplaceString(shift.string, {shift.range.location + base, shift.range.length},
                    {shift.selection.location + base, shift.selection.length}, tr("Shift Right"));
}

void TextView::shiftLeft(QObject*)
{
    const Range selection = selectedRange();
    qsizetype base = 0;
    const QString lines = touchedLines(document(), selection, &base);
    if (const auto shift = LineShifter::shiftLeft(
            lines, {selection.location - base, selection.length}, _spaceTab)) {
        doReplaceString(shift->string, {shift->range.location + base, shift->range.length},
                        {shift->selection.location + base, shift->selection.length},
                        tr("Shift Left"));
    }
}

void TextView::exchangeSelection(QString (*transform)(const QString&), const QString& actionName)
{
    const Range selection = selectedRange();
    if (selection.length == 0) {
        return;
    }
    // QTextCursor hands line breaks back as paragraph separators.
    const QString selected =
        textCursor().selectedText().replace(QChar::ParagraphSeparator, QLatin1Char('\n'));
    const QString result = transform(selected);
    doInsertString(result, selection, {selection.location, result.size()}, actionName);
}

void TextView::exchangeToFullwidth(QObject*)
{
    exchangeSelection(&StringTransform::stringToFullwidth, tr("exchange to Fullwidth"));
}

void TextView::exchangeToHalfwidth(QObject*)
{
    exchangeSelection(&StringTransform::stringToHalfwidth, tr("exchange to Halfwidth"));
}

void TextView::exchangeHiraganaToKatakana(QObject*)
{
    exchangeSelection(&StringTransform::stringHiraganaToKatakana,
                      tr("exchange Hiragana to Katakana"));
}

void TextView::exchangeHiraganaToLatin(QObject*)
{
    exchangeSelection(&StringTransform::stringHiraganaToLatin, tr("exchange Hiragana to Latin"));
}

void TextView::exchangeKatakanaToHiragana(QObject*)
{
    exchangeSelection(&StringTransform::stringKatakanaToHiragana,
                      tr("exchange Katakana to Hiragana"));
}

void TextView::exchangeKatakanaToLatin(QObject*)
{
    exchangeSelection(&StringTransform::stringKatakanaToLatin, tr("exchange Katakana to Latin"));
}

void TextView::exchangeLatinToHiragana(QObject*)
{
    exchangeSelection(&StringTransform::stringLatinToHiragana, tr("exchange Latin to Hiragana"));
}

void TextView::exchangeLatinToKatakana(QObject*)
{
    exchangeSelection(&StringTransform::stringLatinToKatakana, tr("exchange Latin to Katakana"));
}

void TextView::exchangeMandarinToPingyin(QObject*)
{
    exchangeSelection(&StringTransform::stringMandarinToLatin, tr("exchange Mandarin to Latin"));
}

void TextView::uppercaseWord(QObject*)
{
    exchangeSelection(&StringTransform::stringToUpperCase, QString());
}

void TextView::lowercaseWord(QObject*)
{
    exchangeSelection(&StringTransform::stringToLowerCase, QString());
}

void TextView::capitalizeWord(QObject*)
{
    exchangeSelection(&StringTransform::stringCapitalized, QString());
}

void TextView::exchangeToEntityReference(QObject*)
{
    const Range selection = selectedRange();
    if (_entityReference.isEmpty() || selection.length == 0) {
        return;
    }
    const QString selected =
        textCursor().selectedText().replace(QChar::ParagraphSeparator, QLatin1Char('\n'));
    const QString replaced = StringTransform::stringByReplacingEntityReferences(
        selected, _entityReference, _characterEntity);
    UndoActionNames* names = UndoActionNames::of(document());
    names->beginStep(QString());
    QTextCursor cursor = textCursor();
    cursor.beginEditBlock();
    cursor.insertText(replaced);
    cursor.endEditBlock();
    names->endStep();
    setTextCursor(cursor);
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

// Completion ---------------------------------------------------------------------------------

void TextView::complete(QObject*)
{
    const CompletionGuard guard(this);
    CompletionManager& completion = CompletionManager::sharedCompletionManager();
    if (!completion.isComplating(this)) {
        const Range range = rangeForUserCompletion();
        QString partial;
        if (!range.isNotFound()) {
            QTextCursor cursor(document());
            cursor.setPosition(int(range.location));
            cursor.setPosition(int(range.max()), QTextCursor::KeepAnchor);
            partial = cursor.selectedText();
        }
        completion.setCurrentPartialWord(partial);
    }
    if (hasMarkedText()) {
        return;
    }
    CompletionDocumentWords* words =
        CompletionDocumentWords::of(document(), CompletionCandidates::wordKind(_syntaxDictionary));
    if (!words->prepare()) {
        // The text's words are being read on a worker: complete once they are, unless the
        // user has typed or moved on meanwhile.
        if (!_waitingForWords) {
            _waitingForWords = true;
            const int revision = document()->revision();
            const int position = textCursor().position();
            connect(
                words, &CompletionDocumentWords::ready, this,
                [this, revision, position] {
                    _waitingForWords = false;
                    if (document()->revision() == revision && textCursor().position() == position &&
                        !textCursor().hasSelection()) {
                        complete(this);
                    }
                },
                Qt::SingleShotConnection);
        }
        return;
    }
    completion.startCompletion(this);
}

Range TextView::rangeForUserCompletion() const
{
    const QTextCursor cursor = textCursor();
    const qsizetype end = cursor.selectionStart();
    const QTextBlock block = document()->findBlock(int(end));
    const QString line = block.text();
    qsizetype start = end - block.position();
    const qsizetype inBlockEnd = start;
    while (start > 0 && isWordCharacter(line[start - 1])) {
        --start;
    }
    if (start == inBlockEnd) {
        return Range::notFound();
    }
    return {block.position() + start, inBlockEnd - start};
}

QStringList TextView::completionsForPartialWordRange(Range range) const
{
    if (range.isNotFound() || range.length == 0) {
        return {};
    }
    QTextCursor cursor(document());
    cursor.setPosition(int(range.location));
    cursor.setPosition(int(range.max()), QTextCursor::KeepAnchor);
    const QString partial = cursor.selectedText();
    CompletionDocumentWords* words =
        CompletionDocumentWords::of(document(), CompletionCandidates::wordKind(_syntaxDictionary));
    // While the text's words are being read, the definition's are offered alone.
    return CompletionCandidates::completionsFromTextWords(
        words->wordsForPartialWord(partial).value_or(QStringList()), partial, _syntaxDictionary,
        _completeWords);
}

void TextView::insertCompletion(const QString& word, Range range, int movement, bool isFinal)
{
    const CompletionGuard guard(this);
    // Until accepted, the rest of the word is only shown after the typed letters: it is not
    // in the text, so saving, undo and the modified state never see it.
    if (!isFinal) {
        if (selectedRange() != Range(range.max(), 0)) {
            setSelectedRange({range.max(), 0});
        }
        _layoutManager->setProposedText(range.max(), word.mid(range.length));
        ensureCursorVisible();
        return;
    }
    _layoutManager->setProposedText(-1, QString());
    if (movement == CancelTextMovement) {
        return;
    }
    QTextCursor cursor(document());
    cursor.setPosition(int(range.location));
    cursor.setPosition(int(range.max()), QTextCursor::KeepAnchor);
    const QString typed = cursor.selectedText();
    if (typed != word) {
        // One undo step, apart from the typing before it.
        cursor.beginEditBlock();
        if (word.startsWith(typed)) {
            cursor.setPosition(int(range.max()));
            cursor.insertText(word.mid(typed.size()));
        } else {
            cursor.insertText(word);
        }
        cursor.endEditBlock();
    }
    setSelectedRange({range.location + word.size(), 0});
    ensureCursorVisible();
}

QString TextView::proposedCompletion() const
{
    return _layoutManager ? _layoutManager->proposedText() : QString();
}

void TextView::prepareCompletionWords()
{
    // On the next turn, once the definition of a new window has been chosen: the words are
    // read on a worker, and only for the kind the view offers.
    if (_preparingCompletionWords) {
        return;
    }
    _preparingCompletionWords = true;
    QTimer::singleShot(0, this, [this] {
        _preparingCompletionWords = false;
        CompletionDocumentWords::of(document(), CompletionCandidates::wordKind(_syntaxDictionary));
    });
}

void TextView::completionEndedElsewhere()
{
    // Another change of the text or of the insertion point than the completion's own: the
    // proposed rest of the word no longer belongs there.
    CompletionManager& completion = CompletionManager::sharedCompletionManager();
    if (_completionGuard == 0 && completion.isComplating(this)) {
        completion.terminateCompletion();
    }
}

void TextView::makeCompleteWordsFromSyntaxDictionary()
{
    _completeWords.clear();
    const quint64 build = ++_completeWordsBuild;
    const QVariantMap dictionary = _syntaxDictionary;
    using Result = std::optional<QStringList>;
    auto* watcher = new QFutureWatcher<Result>(this);
    connect(watcher, &QFutureWatcher<Result>::finished, this, [this, watcher, build] {
        const Result words = watcher->result();
        watcher->deleteLater();
        // Only the newest build counts; one that found another running leaves none.
        if (build == _completeWordsBuild) {
            _completeWords = words.value_or(QStringList());
            Q_EMIT completeWordsChanged();
        }
    });
    watcher->setFuture(QtConcurrent::run([dictionary] {
        return SyntaxManager::sharedSyntaxManager().makeCompleteWordsFromSyntaxDictionary(
            dictionary);
    }));
}
