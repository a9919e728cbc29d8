#include "app/ScriptHost.h"

#include "app/DocumentController.h"
#include "app/JavaScriptRunner.h"
#include "window/DocumentWindow.h"
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

TextView* ScriptHost::textViewOf(Document* document) const
{
    WindowController* controller = _documents.windowControllerOf(document);
    return controller ? controller->textView() : nullptr;
}

QWidget* ScriptHost::windowOf(Document* document) const
{
    WindowController* controller = _documents.windowControllerOf(document);
    return controller ? controller->window() : nullptr;
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
