#include "editor/EditorController.h"

#include "document/Document.h"
#include "editor/GutterView.h"
#include "editor/LayoutManager.h"
#include "editor/TextView.h"

EditorController::EditorController(const EditorServices& services, const EditorSettings& settings,
                                   QObject* parent)
    : QObject(parent)
    , _textView(new TextView(services, settings))
{}

EditorController::~EditorController()
{
    delete _textView.data();
}

TextView* EditorController::view() const
{
    return _textView.data();
}

TextView* EditorController::textView() const
{
    return _textView.data();
}

LayoutManager* EditorController::layoutManager() const
{
    return _textView ? _textView->layoutManager() : nullptr;
}

GutterView* EditorController::gutterView() const
{
    return _textView ? _textView->verticalRulerView() : nullptr;
}

void EditorController::setupInitialTextViewSharedStateWithTextStorage(TextStore* textStorage)
{
    if (!_textView || !textStorage) {
        return;
    }
    _textView->setTextStorage(textStorage);
    _textView->setupInitialTextViewSharedState();
    _textView->setVerticalRulerView(new GutterView(_textView));
    _textView->setRulersVisible(true);
    QWidget* window = _textView->window();
    if (window != _textView && window->isVisible()) {
        window->raise();
        window->activateWindow();
    }
    _textView->setFocus(Qt::OtherFocusReason);
}

void EditorController::setupInitialTextViewSharedStateWithDocument(Document* document)
{
    setupInitialTextViewSharedStateWithTextStorage(document ? document->textStore() : nullptr);
}

void EditorController::updatePreferences(const EditorSettings& settings)
{
    if (_textView) {
        _textView->updatePreferences(settings);
    }
}
