#include "window/FindCommands.h"

#include "editor/TextView.h"
#include "search/SearchManager.h"
#include "window/SidebarView.h"
#include "window/WindowController.h"

void FindCommands::onMainView(const std::function<void(SearchManager&, LayoutManager*)>& command)
{
    if (TextView* view = _controller.textView()) {
        command(SearchManager::sharedSearchManager(), view->layoutManager());
    }
}

void FindCommands::findNext()
{
    onMainView([](SearchManager& search, LayoutManager* layout) {
        search.findNextWithLayoutManager(layout);
    });
}

void FindCommands::findPrevious()
{
    onMainView([](SearchManager& search, LayoutManager* layout) {
        search.findPreviousWithLayoutManager(layout);
    });
}

void FindCommands::replaceAndFindNext()
{
    onMainView([](SearchManager& search, LayoutManager* layout) {
        search.replaceAndFindNextWithLayoutManager(layout);
    });
}

void FindCommands::replaceAndFindPrevious()
{
    onMainView([](SearchManager& search, LayoutManager* layout) {
        search.replaceAndFindPreviousWithLayoutManager(layout);
    });
}

void FindCommands::replaceAll()
{
    onMainView([](SearchManager& search, LayoutManager* layout) {
        search.replacingAllStringWithLayoutManager(layout);
    });
}

void FindCommands::useSelectionforFind()
{
    TextView* view = _controller.textView();
    if (!view || view->selectedRange().length == 0) {
        return;
    }
    const qsizetype anchor = view->selectionAnchor();
    const qsizetype position = view->cursorPosition();
    const QString selection = view->selectedText();
    if (!_controller.isSidebarView() || _controller.lastSelectedType() != SidebarView::SearchType) {
        _controller.swicthSidebarType(SidebarView::SearchType);
    }
    _controller.sidebarView()->setSearchFieldString(selection);
    view->setSelection(anchor, position);
}

void FindCommands::jumpToSelection()
{
    if (TextView* view = _controller.textView()) {
        view->ensureCursorVisible();
    }
}

void FindCommands::setSearchString(const QString& string)
{
    _controller.sidebarView()->setSearchFieldString(string);
}
