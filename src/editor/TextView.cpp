#include "editor/TextView.h"

#include "document/TextMirror.h"
#include "document/TextStore.h"
#include "editor/CompletionManager.h"
#include "editor/GutterView.h"
#include "editor/LayoutManager.h"
#include "editor/SpellCheckingController.h"
#include "editor/StringTransform.h"
#include "editor/SyntaxColoringController.h"
#include "editor/TextViewCompletion.h"
#include "editor/TextViewKeys.h"
#include "editor/TextViewPrivate.h"
#include "editor/TransformationsMenu.h"
#include "platform/PropertyList.h"
#include "platform/SystemBeep.h"
#include "syntax/SyntaxDefinitionFolder.h"
#include "syntax/SyntaxManager.h"

#include <QContextMenuEvent>
#include <QFile>
#include <QFontDatabase>
#include <QFontMetricsF>
#include <QMenu>
#include <QPaintEvent>
#include <QPainter>
#include <QProgressBar>
#include <QScrollBar>

#include <algorithm>
#include <cmath>

namespace {

const QString kEntityReferenceResource = QStringLiteral(":/EntityReference.plist");

} // namespace

TextView::TextView(const EditorServices& services, const EditorSettings& settings, QWidget* parent)
    : TextArea(parent)
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
    setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    // Start with the wrapping the window will ask for, so that a large text is not laid out
    // once wrapped and again unwrapped.
    TextArea::setWrapLines(settings.wrapLines);
    applyFontAndColors();
    updateMargins();
}

TextView::~TextView()
{
    d->completion->terminate();
    // The layers go before the base class: nothing it does on its way out may reach them.
    setFormatProvider(nullptr);
    delete d->layoutManager;
    d->layoutManager = nullptr;
    delete d->verticalRulerView;
    d->verticalRulerView = nullptr;
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
    Colors colors = TextArea::colors();
    const QPalette palette = this->palette();
    colors.text =
        d->appearance.textColor.isValid() ? d->appearance.textColor : palette.color(QPalette::Text);
    colors.background = d->appearance.backgroundColor.isValid() ? d->appearance.backgroundColor
                                                                : palette.color(QPalette::Base);
    colors.caret = d->appearance.insertionPointColor.isValid() ? d->appearance.insertionPointColor
                                                               : colors.text;
    setColors(colors);
    if (textFont() != d->appearance.textFont) {
        setFont(d->appearance.textFont);
        setTextFont(d->appearance.textFont);
    }
    viewport()->update();
}

void TextView::setTextStorage(TextStore* textStorage)
{
    if (!textStorage || textStorage == textStore()) {
        return;
    }
    setFormatProvider(nullptr);
    delete d->layoutManager;
    d->layoutManager = nullptr;
    setTextStore(textStorage);
    d->layoutManager = new LayoutManager(this, textStorage);
    setFormatProvider(d->layoutManager);
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
    }
    updateMargins();
}

void TextView::setRulersVisible(bool rulersVisible)
{
    d->rulersVisible = rulersVisible;
    updateMargins();
}

void TextView::updateMargins()
{
    if (d->verticalRulerView) {
        d->verticalRulerView->setVisible(d->rulersVisible);
    }
}

void TextView::setupInitialTextViewSharedState()
{
    configureTypingAttributesAndDefaultParagraphStyle();
    setReadOnly(false);
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
    QTextOption style;
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
    TextArea::setWrapLines(wrapLines);
}

void TextView::setInvisibleCharacters(bool invisibleCharacters)
{
    if (d->layoutManager) {
        d->layoutManager->setShowInvisibleCharacters(invisibleCharacters);
    }
}

void TextView::paintEvent(QPaintEvent* event)
{
    TextArea::paintEvent(event);
    if (d->layoutManager) {
        QPainter painter(viewport());
        d->layoutManager->drawGlyphs(painter, event->rect());
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
    return d->services.syntax.makeFunctionDefinitionWithString(textStore()->text().string(),
                                                               d->syntaxDictionary);
}

// Typing ------------------------------------------------------------------------------------

void TextView::replaceCharactersInRange(Range range, const QString& string)
{
    if (range.length == 0 && string.isEmpty()) {
        return;
    }
    replaceRange(range, string);
    setSelectedRange({range.location + string.size(), 0});
}

void TextView::insertTextAtSelection(const QString& text)
{
    // Scripts put their output here too: a read-only text takes none.
    if (!canEdit()) {
        SystemBeep::beep();
        return;
    }
    insertText(text);
}

void TextView::keyPressEvent(QKeyEvent* event)
{
    d->keys->keyPressed(event, [this](QKeyEvent* key) { TextArea::keyPressEvent(key); });
}

void TextView::inputMethodEvent(QInputMethodEvent* event)
{
    d->hasMarkedText = !event->preeditString().isEmpty();
    if (d->hasMarkedText) {
        d->completion->terminateWithCancel(true);
    }
    TextArea::inputMethodEvent(event);
}

void TextView::selectAll()
{
    d->completion->terminateWithCancel(true);
    TextArea::selectAll();
}

void TextView::centerCursor()
{
    ensureCursorVisible();
    // The scroll bar counts rows.
    const qreal rows =
        (cursorRect().center().y() - viewport()->height() / 2.0) / textLayout().rowHeight();
    verticalScrollBar()->setValue(verticalScrollBar()->value() + int(std::lround(rows)));
}

void TextView::focusOutEvent(QFocusEvent* event)
{
    // Focus taken by another part of the window ends the completion; the list itself never
    // takes it, and a window losing its place ends it on its own.
    if (event->reason() != Qt::PopupFocusReason && event->reason() != Qt::ActiveWindowFocusReason) {
        d->completion->terminateWithCancel(true);
    }
    TextArea::focusOutEvent(event);
}

void TextView::mousePressEvent(QMouseEvent* event)
{
    Q_EMIT mouseDown(this);
    d->completion->terminateWithCancel(true);
    TextArea::mousePressEvent(event);
}

// Shifting and transformations ---------------------------------------------------------------

void TextView::doReplaceString(const QString& string, Range range, Range selected,
                               const QString& actionName)
{
    if (!canEdit()) {
        SystemBeep::beep();
        return;
    }
    applyEdit({range, string, selected}, actionName);
}

void TextView::doInsertString(const QString& string, Range range, Range select,
                              const QString& actionName)
{
    doReplaceString(string, range, select, actionName);
}

void TextView::shiftRight(QObject*)
{
    const TextEdit shift =
        TypingRules(d->typing).shiftRight(*TextMirror::mirrorOfStore(textStore()), selectedRange());
    doReplaceString(shift.string, shift.range, shift.selection, tr("Shift Right"));
}

void TextView::shiftLeft(QObject*)
{
    if (const auto shift = TypingRules(d->typing).shiftLeft(*TextMirror::mirrorOfStore(textStore()),
                                                            selectedRange())) {
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

QMenu* TextView::menuForEvent(QContextMenuEvent* event)
{
    QMenu* menu = TextArea::createContextMenu(event ? event->pos() : QPoint());
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

TextColorLayers* TextView::colorLayers() const
{
    return d->layoutManager ? &d->layoutManager->colorLayers() : nullptr;
}

void TextView::colorsChanged(Range range)
{
    if (d->layoutManager) {
        d->layoutManager->colorsChanged(range);
    }
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
