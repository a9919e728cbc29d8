#include "app/ScriptHost.h"

#include "app/DocumentController.h"
#include "app/JavaScriptRunner.h"
#include "editor/TextView.h"
#include "window/DocumentWindow.h"
#include "window/ScriptAlert.h"
#include "window/WindowController.h"

ScriptHost::ScriptHost(DocumentController& documents)
    : _documents(documents)
{}

const std::vector<Document*>& ScriptHost::documents() const
{
    return _documents.documents();
}

Document* ScriptHost::currentDocument() const
{
    return _documents.currentDocument();
}

Document* ScriptHost::newDocument()
{
    return _documents.newDocument();
}

Document* ScriptHost::openDocumentWithContentsOfURL(const QString& path, bool display)
{
    return _documents.openDocumentWithContentsOfURL(path, display);
}

TextView* ScriptHost::mainTextViewOf(Document* document) const
{
    WindowController* controller = _documents.windowControllerOf(document);
    return controller ? controller->textView() : nullptr;
}

QObject* ScriptHost::textViewOf(Document* document) const
{
    return mainTextViewOf(document);
}

QObject* ScriptHost::windowOf(Document* document) const
{
    WindowController* controller = _documents.windowControllerOf(document);
    return controller ? controller->window() : nullptr;
}

bool ScriptHost::isShown(Document* document) const
{
    const TextView* view = mainTextViewOf(document);
    return view && view->window()->isVisible();
}

QString ScriptHost::selectedTextOf(Document* document) const
{
    const TextView* view = mainTextViewOf(document);
    if (!view) {
        return QString();
    }
    return view->selectedText();
}

void ScriptHost::insertTextAtSelection(Document* document, const QString& text)
{
    if (TextView* view = mainTextViewOf(document)) {
        view->insertTextAtSelection(text);
    }
}

void ScriptHost::focusTextView(Document* document)
{
    if (TextView* view = mainTextViewOf(document)) {
        view->setFocus();
    }
}

void ScriptHost::showAlert(const QString& title, const QString& text, bool caution,
                           bool applicationModal)
{
    ScriptAlert::show(title, text, caution, applicationModal);
}

std::optional<QString> ScriptHost::runInProcessScript(const QString& source,
                                                      const QString& fileName)
{
    const JavaScriptRunner::Result result = JavaScriptRunner::run(source, fileName);
    if (result.outcome == JavaScriptRunner::Outcome::CompileError) {
        return result.errorText();
    }
    return std::nullopt;
}
