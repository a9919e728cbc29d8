#include "editor/GutterView.h"

#include "document/TextStore.h"
#include "editor/TextView.h"

#include <algorithm>

GutterView::GutterView(TextView* clientView)
    : QObject(clientView)
{
    _look.updatePreferences(clientView->editorSettings());
    setClientView(clientView);
}

GutterView::~GutterView()
{
    if (_clientView && _clientView->gutterWidth() > 0) {
        _clientView->setGutter(0, {});
    }
}

void GutterView::updatePreferences(const EditorSettings& settings)
{
    _look.updatePreferences(settings);
    apply();
}

void GutterView::setClientView(TextView* clientView)
{
    if (_clientView == clientView) {
        return;
    }
    if (_clientView && _clientView->gutterWidth() > 0) {
        _clientView->setGutter(0, {});
    }
    _clientView = clientView;
    apply();
}

void GutterView::setVisible(bool visible)
{
    if (_visible == visible) {
        return;
    }
    _visible = visible;
    apply();
}

void GutterView::apply()
{
    if (!_clientView) {
        return;
    }
    if (_visible) {
        _look.numberLinesOf(*_clientView, int(requiredThickness()));
    } else {
        _clientView->setGutter(0, {});
    }
}

qint64 GutterView::lineNumberForCharacterIndex(qint64 index, const TextStore* inText)
{
    if (!inText) {
        return 0;
    }
    const TextSnapshot& text = inText->text();
    return text.lineAt(std::clamp<qint64>(index, 0, text.length()));
}

QList<GutterView::Label> GutterView::labelsInRect() const
{
    if (!_clientView || !_visible) {
        return {};
    }
    return _look.labels(_clientView->visibleLines(), _clientView->textLayout().rowHeight(),
                        _clientView->gutterWidth());
}
