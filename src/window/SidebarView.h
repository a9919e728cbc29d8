#pragma once

#include <QList>
#include <QPointer>
#include <QWidget>

class Document;
class GotoController;
class InfoController;
class QParallelAnimationGroup;
class ScriptController;
class SearchController;
class WindowController;

/// The sidebar at the right edge of a document window. It holds four panes, indexed by
/// their type: 0 search, 1 go to line, 2 information, 3 script library, and shows one of
/// them at a time; a change of pane slides the new one in from the right.
class SidebarView : public QWidget
{
    Q_OBJECT

public:
    enum Type { SearchType = 0, GotoType = 1, InfoType = 2, ScriptType = 3 };
    /// The sidebar's width in points.
    static constexpr int Width = 240;
    /// How long a change of pane slides, in milliseconds.
    static constexpr int TransitionDuration = 220;

    explicit SidebarView(WindowController* windowController, QWidget* parent = nullptr);
    ~SidebarView() override;

    /// Puts the sidebar at the right of `editor` (the window's split view), in its place
    /// in the window's layout; it starts hidden.
    void placeBeside(QWidget* editor);

    /// The four panes, in type order.
    const QList<QWidget*>& viewControllers() const { return _viewControllers; }
    QWidget* viewController(qint64 type) const;
    SearchController* searchController() const { return _searchController; }
    GotoController* gotoController() const { return _gotoController; }
    InfoController* infoController() const { return _infoController; }
    ScriptController* scriptController() const { return _scriptController; }
    /// The pane on show (the last one shown), or none.
    QWidget* shownView() const { return _shownView; }

    /// Shows the pane of `type` at once, filling the sidebar.
    void showPane(qint64 type);
    /// Slides `newView` in from the right while `oldView` leaves to the left.
    void doTransition(QWidget* newView, QWidget* oldView);
    /// Whether a change of pane is still sliding.
    bool isTransitionRunning() const;

    void setSearchFieldString(const QString& string);
    void updateInformationOfDocument(const Document* document, const QString& syntax);
    /// Reloads the script pane from the library.
    void reloadData();
    /// Gives the pane's field the keyboard focus (search and go-to panes only).
    void viewFirstResponder(qint64 type);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void finishTransition();

    QList<QWidget*> _viewControllers;
    SearchController* _searchController = nullptr;
    GotoController* _gotoController = nullptr;
    InfoController* _infoController = nullptr;
    ScriptController* _scriptController = nullptr;
    QPointer<QWidget> _shownView;
    QPointer<QWidget> _leavingView;
    QParallelAnimationGroup* _transition = nullptr;
};
