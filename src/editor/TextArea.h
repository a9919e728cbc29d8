#pragma once

#include "document/TextStore.h"
#include "editor/InvisibleCharacterPainter.h"
#include "editor/TextAreaLayout.h"
#include "editor/TextAreaPainter.h"
#include "editor/TextEdit.h"
#include "platform/Range.h"

#include <QAbstractScrollArea>
#include <QBasicTimer>
#include <QFont>
#include <QList>
#include <QPointer>
#include <QTimer>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <memory>

class QMenu;
class TextAreaMouse;
class QMimeData;
class TextFormatProvider;
struct TextChange;

/// A view of a TextStore that lays out only the lines it shows, so that a text of any size
/// opens, scrolls and takes keys at once. Scrolling, wrapping, the caret and selections,
/// the keyboard, the mouse, input methods, the clipboard and drag and drop are its own;
/// what others draw comes through layers that never touch the text: a format provider
/// (colours and highlights), a gutter painted through a callback in the left margin, and
/// the marks of invisible characters.
///
/// Positions, lengths and ranges are UTF-16 units of the store's text. Every edit goes
/// through the store as one undo step (typed keys merge as the store merges them).
class TextArea : public QAbstractScrollArea
{
    Q_OBJECT

public:
    /// A selection: where it started and where the caret is. Empty, it is a caret.
    struct Selection {
        qsizetype anchor = 0;
        qsizetype position = 0;

        Range range() const { return {std::min(anchor, position), std::abs(position - anchor)}; }
        bool isEmpty() const { return anchor == position; }
        bool operator==(const Selection&) const = default;
    };
    using Colors = TextAreaPainter::Colors;
    using ShownLine = TextAreaLayout::ShownLine;
    /// Paints the gutter: the rectangle to paint, and the lines on screen with their
    /// places (the gutter and the viewport share their vertical coordinates).
    using GutterPainter =
        std::function<void(QPainter& painter, const QRect& rect, const QList<ShownLine>& lines)>;

    explicit TextArea(QWidget* parent = nullptr);
    ~TextArea() override;

    /// Shows `store` (not owned; it may be shared with other views).
    void setTextStore(TextStore* store);
    TextStore* textStore() const { return _store; }

    // Selection. The first selection is the main one, the only one for now.
    const QList<Selection>& selections() const { return _selections; }
    void setSelections(const QList<Selection>& selections);
    Range selectedRange() const { return _selections.first().range(); }
    /// Selects `range` with the caret at its end.
    void setSelectedRange(Range range);
    qsizetype cursorPosition() const { return _selections.first().position; }
    /// Moves the caret; with `extend`, the selection follows it.
    void setCursorPosition(qsizetype position, bool extend = false);
    QString selectedText() const;
    void selectAll();

    // Editing.
    /// Puts `text` in place of the selection as one undo step named `stepName`, and leaves
    /// the caret after it in sight.
    void insertText(const QString& text, const QString& stepName = {});
    /// Replaces `range` as one undo step; the selection moves with the text.
    void replaceRange(Range range, const QString& text, const QString& stepName = {});
    /// Makes an edit worked out from the text (a typing rule's) as one undo step, selects
    /// what it asks for and leaves the caret in sight.
    void applyEdit(const TextEdit& edit, const QString& stepName = {});
    /// Shows `text` grey at `position`, in the line but outside the text: the store, its undo
    /// steps and its modified state never see it, and the caret stays before it. An empty
    /// text takes it away, as does any change of the text.
    void setProposedText(qsizetype position, const QString& text);
    const QString& proposedText() const { return _proposal.text; }
    bool isReadOnly() const { return _readOnly; }
    /// Read-only text can still be selected, searched and copied.
    void setReadOnly(bool readOnly);
    /// While the end of a file is still coming in (it goes in after the text shown): nothing
    /// can be typed.
    bool isLoading() const { return _loading; }
    void setLoading(bool loading);
    /// Whether keys and commands may change the text now.
    bool canEdit() const { return _store && !_readOnly && !_loading; }

    // Typing. The keys end up here; an editor with its own typing rules overrides these.
    /// Text typed at the keyboard or committed by an input method.
    virtual void insertTypedText(const QString& text);
    virtual void insertNewline();
    virtual void insertTab();
    virtual void deleteBackward();
    virtual void deleteForward();

    // Looks.
    bool wrapLines() const { return _style.wrap; }
    void setWrapLines(bool wrap);
    const QFont& textFont() const { return _style.font; }
    void setTextFont(const QFont& font);
    /// A tab advances by this many widths of a space of the text's font.
    int tabWidth() const { return _tabWidth; }
    void setTabWidth(int spaces);
    /// Overrides the tab width with a distance of its own (0: back to tabWidth()).
    void setTabStopDistance(qreal distance);
    qreal tabStopDistance() const { return _style.tabStopDistance; }
    /// Row height as a multiple of the font's line spacing.
    qreal lineSpacing() const { return _lineSpacing; }
    void setLineSpacing(qreal lineSpacing);
    const Colors& colors() const { return _colors; }
    void setColors(const Colors& colors);
    bool showInvisibleCharacters() const { return _style.showInvisibles; }
    void setShowInvisibleCharacters(bool show);
    const InvisibleCharacterPainter::Marks& invisibleCharacterMarks() const
    {
        return _marks.marks();
    }
    void setInvisibleCharacterMarks(const InvisibleCharacterPainter::Marks& marks);

    // Layers.
    void setFormatProvider(TextFormatProvider* provider);
    TextFormatProvider* formatProvider() const { return _provider; }
    /// The provider's formats of `range` changed: the view repaints when the range meets
    /// the screen (lines off screen take their formats up when they are laid out).
    void formatsChanged(Range range);
    /// A gutter `width` wide in the left margin, painted by `painter`; width 0 removes it.
    void setGutter(int width, GutterPainter painter);
    int gutterWidth() const { return _gutterWidth; }
    QWidget* gutter() const { return _gutter; }

    // Geometry, in viewport coordinates.
    qsizetype firstVisibleLine() const { return _layout.anchor().line; }
    Range visibleCharacterRange();
    QList<ShownLine> visibleLines();
    /// Where the caret would stand for `position` (exact on screen, estimated elsewhere).
    QRect rectForPosition(qsizetype position);
    QRect cursorRect() { return rectForPosition(cursorPosition()); }
    qsizetype positionAt(const QPoint& point);
    void scrollRangeToVisible(Range range);
    void ensureCursorVisible();
    /// The layout behind the view: its cache and its height map (tests and benchmarks
    /// count the layouts it made).
    TextAreaLayout& textLayout() { return _layout; }

    QVariant inputMethodQuery(Qt::InputMethodQuery query) const override;

public Q_SLOTS:
    void undo();
    void redo();
    void cut();
    void copy();
    void paste();

Q_SIGNALS:
    void selectionChanged();
    /// The rows on screen changed (scrolling, resizing, wrapping).
    void visibleRangeChanged();

protected:
    /// The menu for a right-click at `position`; the caller shows and deletes it.
    virtual QMenu* createContextMenu(const QPoint& position);
    /// Puts the text of a paste or a drop in place of `range`, as one undo step.
    virtual void insertFromMimeData(const QMimeData* source, Range range);

    bool event(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;
    void keyPressEvent(QKeyEvent* event) override;
    void inputMethodEvent(QInputMethodEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void timerEvent(QTimerEvent* event) override;
    /// Tab and Shift+Tab are typed into the text, not used to move the focus.
    bool focusNextPrevChild(bool) override { return false; }

private:
    friend class TextAreaInputMethod;
    friend class TextAreaKeys;
    friend class TextAreaMouse;

    void textStoreChanged(const TextChange& change);
    void applyStyle();
    void updateGeometries();
    void syncScrollBars();
    void afterScroll();
    /// Scrolls the positions into sight, the last one first in the view's eye.
    void scrollToShow(std::initializer_list<qsizetype> positions);
    void scheduleMeasuring();
    void resetCaretBlink();
    void updateCaret();
    void selectionDidChange();
    void replaceSelection(const QString& text, bool typing, const QString& stepName = {});
    void moveCaret(qsizetype position, bool extend, bool keepPreferredX = false);
    void paintGutter(QPaintEvent* event);
    void commitPreedit();
    /// Undo or redo, leaving the caret where the step's change was.
    void replayStep(void (TextStore::*replay)());
    /// Lays out the input method's composition, else the proposal, else neither.
    void showPreedit();

    QPointer<TextStore> _store;
    TextAreaLayout _layout;
    TextLayoutCache::Style _style;
    TextAreaPainter::Colors _colors;
    InvisibleCharacterPainter _marks;
    TextFormatProvider* _provider = nullptr;
    QList<Selection> _selections{Selection()};
    /// The selections the last repaint was asked for: their rows need painting again.
    QList<Selection> _paintedSelections;
    int _tabWidth = 4;
    qreal _tabStopDistance = 0;
    qreal _lineSpacing = 1.0;
    bool _readOnly = false;
    bool _loading = false;

    // Caret and input.
    QBasicTimer _blink;
    bool _caretShown = true;
    qreal _preferredX = -1;
    bool _ownEdit = false;
    bool _undoing = false;
    qsizetype _undoCaret = -1;
    TextLayoutCache::Preedit _preedit;
    qsizetype _preeditCursor = 0;
    /// Laid out in the pre-edit's place while no input method composes.
    TextLayoutCache::Preedit _proposal;

    std::unique_ptr<TextAreaMouse> _mouse;

    // Layers.
    QWidget* _gutter = nullptr;
    int _gutterWidth = 0;
    GutterPainter _gutterPainter;

    bool _syncing = false;
    qsizetype _lastScrollValue = 0;
    QTimer _measuring;
};
