#pragma once

#include "scripts/ScriptTarget.h"

class DocumentController;

/// The application's side of scripting: the documents of the document controller, the
/// text views of their windows, and JavaScript with the scripting object model.
class ScriptHost : public ScriptTarget
{
public:
    explicit ScriptHost(DocumentController& documents);

    const std::vector<Document*>& documents() const override;
    Document* currentDocument() const override;
    Document* newDocument() override;
    Document* openDocumentWithContentsOfURL(const QString& path, bool display = true) override;
    TextView* textViewOf(Document* document) const override;
    QWidget* windowOf(Document* document) const override;
    std::optional<QString> runInProcessScript(const QString& source,
                                              const QString& fileName) override;

private:
    DocumentController& _documents;
};
