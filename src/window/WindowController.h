#pragma once

#include "window/DocumentSharing.h"
#include "window/FindCommands.h"
#include "window/SidebarController.h"
#include "window/SyntaxChoice.h"
#include "window/ViewToggles.h"

#include <QObject>
#include <QPointer>
#include <QString>

#include <vector>

class DiskChangeNotices;
class Document;
class DocumentWindow;
class EditorController;
class ReadingNotices;
class QAction;
class QMenu;
class SidebarView;
class StatusLine;
class TextView;
struct PreferencesValues;

/// The controller of one document's window: its editor panes (one, or two on the same text
/// in a split view), its window identifier and the validation of its menus. It applies every
/// flag to each pane. Its other jobs have classes of their own that it forwards to: the View
/// toggles (ViewToggles), the syntax choice (SyntaxChoice), the status line (StatusLine), the
/// sidebar (SidebarController), the find commands (FindCommands) and sharing
/// (DocumentSharing).
class WindowController : public QObject
{
    Q_OBJECT

public:
    /// Menu item tags read by validateMenuItem().
    enum Tag {
        SplitPaneTag = 50,
        LineNumbersTag = 51,
        InvisibleCharactersTag = 52,
        WrapLinesTag = 53,
        AutoIndentTag = 54,
        BraceMatchingTag = 55,
        SpellCheckingTag = 56,
        CompletionTag = 57,
        VerticalSplitTag = 58,
        EncodingTag = 200,
        LineBreaksTag = 300,
        SyntaxTag = 500,
    };

    explicit WindowController(Document* document);
    ~WindowController() override;

    Document* document() const { return _document; }
    DocumentWindow* window() const;
    /// The window's main text view: the pane created, clicked or focused last.
    TextView* textView() const;
    /// The text views of every pane, in order.
    std::vector<TextView*> textViews() const;

    /// Builds the first pane and restores the window's state.
    void windowDidLoad();

    // Toggles: with a sender the flag is inverted first; with none it is only applied.
    void toggleGutterView(QObject* sender);
    void toggleInvisibleCharacters(QObject* sender);
    void toggleWrapLines(QObject* sender);
    void toggleAutoIndent(QObject* sender);
    void toggleAutoBraceMatching(QObject* sender);
    void toggleAutoComplete(QObject* sender);
    void toggleSpellChecking(QObject* sender);

    bool showGutterView() const { return _toggles.isOn(ViewToggles::LineNumbers); }
    bool showInvisibleCharacters() const { return _toggles.isOn(ViewToggles::InvisibleCharacters); }
    bool wrapLines() const { return _toggles.isOn(ViewToggles::WrapLines); }
    bool autoIndent() const { return _toggles.isOn(ViewToggles::AutoIndent); }
    bool autoBraceMatching() const { return _toggles.isOn(ViewToggles::BraceMatching); }
    bool autoComplete() const { return _toggles.isOn(ViewToggles::AutoComplete); }
    bool allowSpellChecking() const { return _toggles.isOn(ViewToggles::SpellChecking); }
    bool isSplitView() const { return _isSplitView; }
    bool useVerticalforSplitView() const { return _useVerticalforSplitView; }
    bool syntaxColouring() const { return _syntax.syntaxColouring(); }
    bool defaultForFileType() const { return _syntax.defaultForFileType(); }
    QString selectedSyntaxName() const { return _syntax.selectedSyntaxName(); }

    /// Sets titles and check marks of a menu item from the window's state.
    bool validateMenuItem(QAction* item) const;

    /// Counts the characters of `text` for the status line, then rebuilds it.
    void updateSelectCharacterInformation(const QString& text);
    /// Rebuilds the status line from the last count and the document's state.
    void updateToolbarInformation();
    /// The status line's text.
    QString toolbarInformation() const;
    qint64 infoCharacters() const;
    /// Re-attaches every pane after the document's text was replaced.
    void resetupInitialTextViewSharedState();
    /// After each reading of the settings: sets the window's toggles back to `settings` and
    /// reads the panes' syntax definitions again (the panes and the document take up changed
    /// settings as they are pushed).
    void updatePreferences(const PreferencesValues& settings);
    /// Replaces the document's text by its file read in another encoding, as one undoable
    /// step: when the document has unsaved edits (which undo brings back), only if they can be
    /// written in that encoding; in any case only if the file's bytes decode in it. Otherwise
    /// says why and changes nothing.
    void reopenUsingEncoding(quint64 encoding);
    /// Sets the document's line-break style (the Line Breaks menu).
    void setLineBreaks(qsizetype lineBreaks);
    /// The bars that say what the last reading found out about the file.
    ReadingNotices* readingNotices() const { return _notices; }
    /// What the window says and does when another program changes or removes the file.
    DiskChangeNotices* diskChangeNotices() const { return _diskNotices; }
    /// Shares the whole text by e-mail (tag 0), message (1) or through the web share address
    /// of Twitter (2), Facebook (3) or Sina Weibo (4).
    void shareUsing(int tag);
    /// The address that hands `text` to the sharing service of `tag`.
    static QUrl sharingURL(int tag, const QString& subject, const QString& text)
    {
        return DocumentSharing::sharingURL(tag, subject, text);
    }

    QString windowIdentifier() const { return _windowIdentifier; }
    /// Records the window's identifier, "pane:syntax" (the sidebar pane shown and the syntax
    /// chosen, each "None" when there is none), in the document too.
    void setWindowIdentifier(const QString& identifier);

    /// Applies the window's syntax choice (by file extension or by name) to the main text view.
    void syntaxSettingToTextView();
    /// The user's choice from the syntax menu, applied to every pane.
    void selectedSyntaxColoring(QAction* item);
    /// Rebuilds the function pop-up from the main text view's text (as it opens).
    void updateFunctionDefinitionList();
    /// The function pop-up's action: selects the chosen definition's lines.
    void selectedFunctionDefinitionItem(int index);

    // Sidebar and split panes.
    SidebarView* sidebarView() const { return _sidebarView; }
    bool isSidebarView() const { return _sidebar.isShown(); }
    qint64 lastSelectedType() const { return _sidebar.lastSelectedType(); }
    /// With a sender, opens, switches or closes the sidebar with the pane of the sender's
    /// "tag"; with none, shows the pane recorded in the window identifier.
    void swicthSidebar(QObject* sender) { _sidebar.swicthSidebar(sender); }
    void swicthSidebarType(qint64 type) { _sidebar.swicthSidebarType(type); }
    void doTransition(QWidget* newView, QWidget* oldView, SidebarView* sidebarView);
    /// Shows the pane of `type`, opening the sidebar or switching to it, and never closes it.
    void showSidebarType(qint64 type) { _sidebar.showSidebarType(type); }
    void toggleSplitView(QObject* sender);
    void toggleUsingVerticalSplitPane(QObject* sender);
    void toggleFocusOnNextSplitPane(QObject* sender);
    void reloadData();

    // Find commands on the main text view.
    void findNext(QObject*) { _find.findNext(); }
    void findPrevious(QObject*) { _find.findPrevious(); }
    void replaceAndFindNext(QObject*) { _find.replaceAndFindNext(); }
    void replaceAndFindPrevious(QObject*) { _find.replaceAndFindPrevious(); }
    void replaceAll(QObject*) { _find.replaceAll(); }
    void useSelectionforFind(QObject*) { _find.useSelectionforFind(); }
    void jumpToSelection(QObject*) { _find.jumpToSelection(); }
    /// Puts a recent search string into the search pane's field.
    void setSearchString(const QString& string) { _find.setSearchString(string); }

Q_SIGNALS:
    void toolbarInformationChanged(const QString& text);

protected:
    /// While the end of a large file is still going in: the first key, click or drag anywhere
    /// puts the rest in before it is handled, so that what the user does meets the whole text.
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void addPane();
    /// A sender is the user's menu item: the flag is inverted first. Either way every pane
    /// gets the window's flag.
    void toggle(ViewToggles::Toggle toggle, QObject* sender);
    void applyStateToPane(TextView* view);
    void textDidChange();
    /// The panes take no typing, and the busy indicator shows, while the text goes in.
    void loadingChanged(bool loading);
    void textViewMouseDown(TextView* view);
    void updateTitle();

    Document* _document;
    QPointer<DocumentWindow> _window;
    std::vector<EditorController*> _panes;
    QPointer<TextView> _mainTextView;
    StatusLine* _statusLine = nullptr;

    ViewToggles _toggles;
    QString _spellCheckLanguage;
    bool _isSplitView = false;
    bool _useVerticalforSplitView = false;
    SidebarController _sidebar{*this};
    SyntaxChoice _syntax{*this};
    FindCommands _find{*this};
    QString _windowIdentifier;
    SidebarView* _sidebarView = nullptr;
    ReadingNotices* _notices = nullptr;
    DiskChangeNotices* _diskNotices = nullptr;
};
