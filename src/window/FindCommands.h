#pragma once

#include <QString>

#include <functional>

class LayoutManager;
class SearchManager;
class WindowController;

/// The find commands of a window's menus, on its main text view. The search itself is the
/// SearchManager's; the sidebar's search pane holds what is looked for.
class FindCommands
{
public:
    explicit FindCommands(WindowController& controller)
        : _controller(controller)
    {}

    void findNext();
    void findPrevious();
    void replaceAndFindNext();
    void replaceAndFindPrevious();
    void replaceAll();
    /// Puts the selection into the search pane's field, showing the pane.
    void useSelectionforFind();
    /// Scrolls the selection into sight.
    void jumpToSelection();
    /// Puts a recent search string into the search pane's field.
    void setSearchString(const QString& string);

private:
    /// Runs `command` of the search manager on the layout of the main text view, if any.
    void onMainView(const std::function<void(SearchManager&, LayoutManager*)>& command);

    WindowController& _controller;
};
