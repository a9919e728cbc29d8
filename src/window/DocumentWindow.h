#pragma once

#include <QList>
#include <QMainWindow>
#include <QPointer>

#include <functional>

class InformationBar;
class QComboBox;
class QIcon;
class QLabel;
class QProgressBar;
class QSplitter;
class TabWindow;

/// The top-level window of one document: the function pop-up and the information bars above
/// the editor panes, the panes in a split view, and the status line with the progress
/// indicator below.
class DocumentWindow : public QMainWindow
{
    Q_OBJECT

public:
    explicit DocumentWindow(QWidget* parent = nullptr);

    QSplitter* splitView() const { return _splitView; }
    QLabel* infoField() const { return _infoField; }
    QProgressBar* indicator() const { return _indicator; }
    QComboBox* functionPopUp() const { return _functionPopUp; }

    /// The style's mark of a partly checked box, for a menu item in the mixed state.
    QIcon mixedStateIcon() const;
    /// Shows `bar` above the panes, below the bars already shown; the window owns it. A bar
    /// goes away with InformationBar::dismiss().
    void addInformationBar(InformationBar* bar);
    /// The bars shown now, top first.
    QList<InformationBar*> informationBars() const;

    /// Asked before the window closes; returning false keeps it open.
    void setCloseHandler(std::function<bool()> handler) { _closeHandler = std::move(handler); }

    /// The tab window this document window is a tab of; null when it is a window of its own.
    TabWindow* tabWindow() const;
    /// The tab's position in its tab window; -1 for a window of its own.
    int tabIndex() const;
    /// Whether this is what its window shows: a window of its own, or the current tab.
    bool isFrontTab() const;
    /// Shows the window as a window of its own, or, with `asTab`, as a new tab of the front
    /// tab window (a new tab window when there is none).
    void present(bool asTab);
    /// Shows the window as the last tab of `tabWindow` (of a new tab window when null), moving
    /// it there from wherever it is; returns the tab window.
    TabWindow* presentAsTab(TabWindow* tabWindow);
    /// Makes this the current tab of its tab window.
    void selectTab();
    /// Shows the window, raised and active, with its tab selected.
    void bringToFront();

Q_SIGNALS:
    void becameActive();
    /// The window has closed (its close was not refused).
    void closed();
    /// The window became a tab, or moved to another tab window.
    void tabWindowChanged();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    QSplitter* _splitView = nullptr;
    QWidget* _infoArea = nullptr;
    QLabel* _infoField = nullptr;
    QProgressBar* _indicator = nullptr;
    QComboBox* _functionPopUp = nullptr;
    QWidget* _barArea = nullptr;
    QList<QPointer<InformationBar>> _bars;
    std::function<bool()> _closeHandler;
};
