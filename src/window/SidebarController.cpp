#include "window/SidebarController.h"

#include "document/Document.h"
#include "editor/TextView.h"
#include "window/DocumentWindow.h"
#include "window/SidebarView.h"
#include "window/WindowController.h"

namespace {

const QString kNone = QStringLiteral("None");

} // namespace

void SidebarController::swicthSidebar(QObject* sender)
{
    if (sender) {
        swicthSidebarType(sender->property("tag").toLongLong());
        return;
    }
    const QStringList fields = _controller.document()->windowIdentifier().split(u':');
    if (fields.isEmpty() || fields[0] == kNone || (fields.size() > 1 && fields[1] == u"59")) {
        return;
    }
    bool isNumber = false;
    const qint64 type = fields[0].toLongLong(&isNumber);
    if (isNumber) {
        swicthSidebarType(type);
    }
}

void SidebarController::swicthSidebarType(qint64 type)
{
    DocumentWindow* window = _controller.window();
    SidebarView* sidebar = _controller.sidebarView();
    if (!window || !sidebar->viewController(type)) {
        return;
    }
    Document* document = _controller.document();
    const QString syntaxName = _controller.selectedSyntaxName();
    const QString syntax = _controller.syntaxColouring() ? syntaxName : kNone;
    QWidget* oldView = sidebar->shownView();
    _isSidebarView = !_isSidebarView;
    _isFullScreen = window->isFullScreen();
    // Outside full screen the window grows by the sidebar and the editor keeps its width; in
    // full screen, and in a tab, whose window the other tabs share, the editor gives up the
    // room. One resize, not an animated series: each step would lay a wrapped text out again.
    const bool growsWindow = !_isFullScreen && window->isWindow();
    if (_isSidebarView) {
        sidebar->showPane(type);
        sidebar->updateInformationOfDocument(document, syntaxName);
        sidebar->show();
        if (growsWindow) {
            window->resize(window->width() + SidebarView::Width, window->height());
        }
        _controller.setWindowIdentifier(QString::number(type) + u':' + syntax);
    } else if (_lastSelectedType == type) {
        sidebar->hide();
        if (growsWindow) {
            window->resize(window->width() - SidebarView::Width, window->height());
        }
        _controller.setWindowIdentifier(kNone + u':' + syntax);
    } else {
        sidebar->updateInformationOfDocument(document, syntaxName);
        _controller.doTransition(sidebar->viewController(type), oldView, sidebar);
        _isSidebarView = true;
        _controller.setWindowIdentifier(QString::number(type) + u':' + syntax);
    }
    _lastSelectedType = type;
    if (_isSidebarView) {
        sidebar->viewFirstResponder(type);
    } else if (TextView* view = _controller.textView()) {
        view->setFocus(Qt::OtherFocusReason);
    }
}

void SidebarController::showSidebarType(qint64 type)
{
    if (_isSidebarView && _lastSelectedType == type) {
        _controller.sidebarView()->viewFirstResponder(type);
    } else {
        swicthSidebarType(type);
    }
}
