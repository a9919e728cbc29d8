#pragma once

#include <QList>
#include <QMainWindow>
#include <QPointer>

#include <optional>
#include <utility>

class DocumentWindow;
class QMenuBar;
class QStackedWidget;
class TabBar;

/// A window that holds document windows as tabs. Each tab keeps its own window controller,
/// sidebar, panes and status line; the window's menu bar and title are those of the current
/// tab, so every command acts on it. The window closes when its last tab goes.
class TabWindow : public QMainWindow
{
    Q_OBJECT

public:
    explicit TabWindow(QWidget* parent = nullptr);
    ~TabWindow() override;

    /// The open tab windows, the one activated last first.
    static QList<TabWindow*> tabWindows();
    /// The tab window new tabs go to: the active one, else the one activated last.
    static TabWindow* frontTabWindow();

    TabBar* tabBar() const { return _tabBar; }
    int count() const;
    DocumentWindow* documentWindow(int index) const;
    int indexOf(const DocumentWindow* window) const;
    DocumentWindow* currentDocumentWindow() const;
    void setCurrentDocumentWindow(DocumentWindow* window);

    /// Puts `window` in a tab at `index` (the end when -1) and selects it; a document window
    /// of its own or a tab of another window moves here.
    void insertDocumentWindow(int index, DocumentWindow* window);
    /// Selects the next tab, or the first after the last.
    void selectNextTab();
    /// Selects the previous tab, or the last before the first.
    void selectPreviousTab();
    /// Moves the tab of `window` into a new tab window, whose top left corner is put at
    /// `topLeft` when given; null when the tab is this window's only one.
    TabWindow* moveTabToNewWindow(DocumentWindow* window,
                                  std::optional<QPoint> topLeft = std::nullopt);
    /// Where a tab let go at `globalPosition` lands: the tab window whose tab bar lies there,
    /// and the index it takes there.
    static std::pair<TabWindow*, int> dropTarget(const QPoint& globalPosition);

protected:
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void currentChanged(int index);
    void tabMoved(int from, int to);
    void widgetRemoved(int index);
    void tabDroppedOutside(int index, const QPoint& globalPosition);
    void updateTab(DocumentWindow* window);
    void updateTitle();
    void showMenusOf(DocumentWindow* window);
    void bringToFront();

    TabBar* _tabBar = nullptr;
    QStackedWidget* _stack = nullptr;
    /// The document windows, in the order of their tabs.
    QList<QPointer<DocumentWindow>> _windows;
    /// The menu bar of the tab whose menus the window's menu bar shows.
    QPointer<QMenuBar> _shownMenuBar;
    bool _closing = false;
};
