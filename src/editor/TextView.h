#pragma once

#include "editor/EditorServices.h"
#include "editor/TextArea.h"
#include "editor/TextEdit.h"
#include "editor/TextViewCompletion.h"
#include "editor/TextViewKeys.h"
#include "editor/TypingRules.h"
#include "platform/EditorSettings.h"
#include "platform/Range.h"

#include <QColor>
#include <QFont>
#include <QList>
#include <QStringList>
#include <QTextOption>
#include <QVariantList>
#include <QVariantMap>

#include <memory>
#include <optional>

class GutterView;
class LayoutManager;
class SyntaxColoringController;
class TextColorLayers;
class TextViewPrivate;
class QContextMenuEvent;
class QMenu;
class QProgressBar;
class TextStore;

/// The text view of an editor pane: a TextArea (which is itself a scroll area, so the view is
/// also the pane's scroll view) with the editor's typing rules, colours, completion and
/// commands. Its vertical ruler (the line-number gutter) stands in the left margin.
class TextView : public TextArea
{
    Q_OBJECT

public:
    /// The font and paragraph style for typed text.
    struct TextAttributes {
        QFont font;
        QTextOption paragraphStyle;
    };
    /// The font and colours the text is shown in, and the tab width in spaces.
    struct Appearance {
        QFont textFont;
        qint64 tabWidth = 4;
        QColor textColor;
        QColor insertionPointColor;
        QColor backgroundColor;
    };

    /// Takes `settings` into the fields; the view still shows its own empty text.
    TextView(const EditorServices& services, const EditorSettings& settings,
             QWidget* parent = nullptr);
    ~TextView() override;

    /// Shows `textStorage`, a document's text that may be shared with other panes, and makes
    /// this view's LayoutManager for it.
    void setTextStorage(TextStore* textStorage);
    LayoutManager* layoutManager() const;
    /// The colours this pane lays over the text; none before it shows a text.
    TextColorLayers* colorLayers() const;
    /// The colours of `range` in colorLayers() changed behind the layout manager's back: every
    /// pane on the text repaints the lines of it it shows.
    void colorsChanged(Range range);

    /// The vertical ruler (the gutter); the view takes ownership.
    void setVerticalRulerView(GutterView* ruler);
    GutterView* verticalRulerView() const;
    void setRulersVisible(bool rulersVisible);
    bool rulersVisible() const;

    void setupInitialTextViewSharedState();
    void configureTypingAttributesAndDefaultParagraphStyle();
    TextAttributes defaultTextAttributes() const;
    const TextAttributes& typingAttributes() const;

    /// The managers the view works with, for the controllers of the view.
    const EditorServices& services() const;
    /// The settings the view, its layout manager and its gutter follow.
    const EditorSettings& editorSettings() const;
    /// Takes up changed settings: the font, the colours, the marks of invisible characters
    /// (hidden again) and the typing rules that no menu toggles. Tab width, entity references
    /// and the toggles keep the values the view started with or its window gave it.
    void updatePreferences(const EditorSettings& settings);
    void setWrapLines(bool wrapLines);
    void setInvisibleCharacters(bool invisibleCharacters);
    void setIndicator(QProgressBar* indicator);
    QProgressBar* indicator() const;

    const Appearance& appearance() const;
    qint64 tabWidth() const { return appearance().tabWidth; }
    const QColor& textColor() const { return appearance().textColor; }
    const QColor& insertionPointColor() const { return appearance().insertionPointColor; }
    const QColor& backgroundColor() const { return appearance().backgroundColor; }

    /// What the typing rules of this view follow.
    const TypingRules::Settings& typingSettings() const;
    bool autoIndent() const { return typingSettings().autoIndent; }
    void setAutoIndent(bool autoIndent) { typing().autoIndent = autoIndent; }
    bool autoIndentBraces() const { return typingSettings().autoIndentBraces; }
    void setAutoIndentBraces(bool value) { typing().autoIndentBraces = value; }
    bool autoIndentClosingBraces() const { return typingSettings().autoIndentClosingBraces; }
    void setAutoIndentClosingBraces(bool value) { typing().autoIndentClosingBraces = value; }
    bool usedIndentClosingBraces() const;
    void setUsedIndentClosingBraces(bool value);
    bool autoBraceMatching() const { return typingSettings().autoBraceMatching; }
    void setAutoBraceMatching(bool value) { typing().autoBraceMatching = value; }
    bool UsedChevronMatching() const { return typingSettings().chevronMatching; }
    void setUsedChevronMatching(bool value) { typing().chevronMatching = value; }
    bool spaceTab() const { return typingSettings().spaceTab; }
    void setSpaceTab(bool spaceTab) { typing().spaceTab = spaceTab; }
    const QVariantList& entityReference() const;
    bool characterEntity() const;
    void setCharacterEntity(bool value);
    const QVariantMap& syntaxDictionary() const;
    void setSyntaxDictionary(const QVariantMap& syntaxDictionary);
    /// Loads the definition file at `path` and colours the whole text on the next turn; a
    /// file that cannot be read leaves the view without a definition.
    void setSyntaxDictionay(const QString& path);
    /// Drops the definition and every syntax colour of the text.
    void removeSyntaxDictionary();
    void syntaxVisibleColoring();
    void syntaxAllColoring();
    void performSyntaxAllColoring();
    /// After each change of the text: recolours the visible lines (the whole text after a
    /// large insertion).
    void textDidChanged();
    /// The definitions the view's definition finds in its whole text.
    std::optional<QVariantList> makeFunctionDefinition() const;
    SyntaxColoringController* syntaxColoringController();
    const QStringList& completeWords() const { return completion().completeWords(); }
    void setCompleteWords(const QStringList& words) { completion().setCompleteWords(words); }
    bool autoComplete() const { return completion().autoComplete(); }
    void setAutoComplete(bool autoComplete) { completion().setAutoComplete(autoComplete); }
    bool isComplete() const { return completion().isComplete(); }
    void setIsComplete(bool isComplete) { completion().setIsComplete(isComplete); }

    // Typing: indentation, tabs, brackets and completion. The key handling (TextViewKeys)
    // routes each key to one of these, as the platform's key bindings would; the rules
    // themselves are TypingRules'.
    void insertNewline(QObject* = nullptr) { keys().insertNewline(); }
    /// Indents the line just begun like the line before it, one level more after "{".
    void autoIndent(QObject*) { keys().autoIndent(); }
    void insertTab(QObject* = nullptr) { keys().insertTab(); }
    void deleteBackward(QObject* = nullptr) { keys().deleteBackward(); }
    void cancelOperation(QObject* = nullptr) { keys().cancelOperation(); }
    void moveUp(QObject* = nullptr) { keys().moveUp(); }
    void moveDown(QObject* = nullptr) { keys().moveDown(); }
    /// Inserts text typed at the keyboard, then matches a typed closing bracket.
    void insertText(const QString& string) { keys().insertText(string); }
    /// The opening bracket closed by `closing`, typed just before the insertion point,
    /// among the characters shown; (0, 0) when there is none.
    Range autoBraceMatching(const QString& closing) const
    {
        return keys().autoBraceMatching(closing);
    }
    /// Cancels a completion of this view first.
    void selectAll();
    /// Scrolls so that the caret's line stands in the middle of the view.
    void centerCursor();
    /// Whether an input method is composing text in the view.
    bool hasMarkedText() const;

    // Shifting and transformations, each one undoable step.
    void shiftRight(QObject* sender = nullptr);
    void shiftLeft(QObject* sender = nullptr);
    void doReplaceString(const QString& string, Range range, Range selected,
                         const QString& actionName);
    void doInsertString(const QString& string, Range range, Range select,
                        const QString& actionName);
    /// The transformations of the selection, each one undoable step (see exchange()).
    enum class Exchange {
        ToFullwidth,
        ToHalfwidth,
        HiraganaToKatakana,
        HiraganaToLatin,
        KatakanaToHiragana,
        KatakanaToLatin,
        LatinToHiragana,
        LatinToKatakana,
        MandarinToLatin,
        ToUpperCase,
        ToLowerCase,
        Capitalized,
    };
    /// Puts the selection transformed by `kind` in its place, selected.
    void exchange(Exchange kind);
    void exchangeToFullwidth(QObject* = nullptr) { exchange(Exchange::ToFullwidth); }
    void exchangeToHalfwidth(QObject* = nullptr) { exchange(Exchange::ToHalfwidth); }
    void exchangeHiraganaToKatakana(QObject* = nullptr) { exchange(Exchange::HiraganaToKatakana); }
    void exchangeHiraganaToLatin(QObject* = nullptr) { exchange(Exchange::HiraganaToLatin); }
    void exchangeKatakanaToHiragana(QObject* = nullptr) { exchange(Exchange::KatakanaToHiragana); }
    void exchangeKatakanaToLatin(QObject* = nullptr) { exchange(Exchange::KatakanaToLatin); }
    void exchangeLatinToHiragana(QObject* = nullptr) { exchange(Exchange::LatinToHiragana); }
    void exchangeLatinToKatakana(QObject* = nullptr) { exchange(Exchange::LatinToKatakana); }
    void exchangeMandarinToPingyin(QObject* = nullptr) { exchange(Exchange::MandarinToLatin); }
    void uppercaseWord(QObject* = nullptr) { exchange(Exchange::ToUpperCase); }
    void lowercaseWord(QObject* = nullptr) { exchange(Exchange::ToLowerCase); }
    void capitalizeWord(QObject* = nullptr) { exchange(Exchange::Capitalized); }
    /// Character and entity references for the characters of the selection that have one.
    void exchangeToEntityReference(QObject* sender = nullptr);
    /// The context menu: edit commands, the shifts and the transformations.
    QMenu* menuForEvent(QContextMenuEvent* event);

    // Completion (the list itself is the CompletionManager's).
    enum TextMovement {
        OtherTextMovement = 0,
        ReturnTextMovement = 0x10,
        CancelTextMovement = 0x17
    };
    void complete(QObject* = nullptr) { completion().complete(); }
    /// The word before the insertion point, up to it; not found when there is none.
    Range rangeForUserCompletion() const { return completion().rangeForUserCompletion(); }
    QStringList completionsForPartialWordRange(Range range) const
    {
        return completion().completionsForPartialWordRange(range);
    }
    /// Until `isFinal`, shows the part of `word` beyond the partial word after the insertion
    /// point, grey and not in the text. Accepting (final, not cancelling) replaces the partial
    /// word by `word` as one undo step; cancelling leaves the typed word.
    void insertCompletion(const QString& word, Range range, int movement, bool isFinal)
    {
        completion().insertCompletion(word, range, movement, isFinal);
    }
    /// The rest of the word now proposed after the insertion point; empty when none is.
    QString proposedCompletion() const { return completion().proposedCompletion(); }
    /// Rebuilds `completeWords` from the definition on a worker thread.
    void makeCompleteWordsFromSyntaxDictionary()
    {
        completion().makeCompleteWordsFromSyntaxDictionary();
    }

    /// The fixed end of the selection (the caret when nothing is selected).
    qsizetype selectionAnchor() const { return selections().first().anchor; }
    /// Selects from `anchor` to the caret at `position`, both pinned to the text.
    void setSelection(qsizetype anchor, qsizetype position) { setSelections({{anchor, position}}); }
    /// Replaces characters without any of the typing behaviour.
    void replaceCharactersInRange(Range range, const QString& string);
    /// Puts `text` in place of the selection with the insertion point's attributes, leaves
    /// the insertion point after it in sight; none of the typing rules (indentation,
    /// brackets, completion) apply. What scripts and their output write goes in this way.
    /// A read-only view takes nothing (and beeps).
    void insertTextAtSelection(const QString& text);

Q_SIGNALS:
    /// A mouse button went down in the view, before the view handles it.
    void mouseDown(TextView* view);
    /// completeWords changed.
    void completeWordsChanged();

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void inputMethodEvent(QInputMethodEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;

private:
    TypingRules::Settings& typing();
    TextViewCompletion& completion() const;
    TextViewKeys& keys() const;
    void readFontAndColors();
    void applyFontAndColors();
    void updateMargins();

    std::unique_ptr<TextViewPrivate> d;
};
