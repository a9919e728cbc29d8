#pragma once

#include "scripts/ScriptTarget.h"

class DocumentController;
class TextView;

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
    QObject* textViewOf(Document* document) const override;
    QObject* windowOf(Document* document) const override;
    bool isShown(Document* document) const override;
    QString selectedTextOf(Document* document) const override;
    void insertTextAtSelection(Document* document, const QString& text) override;
    void focusTextView(Document* document) override;
    void showAlert(const QString& title, const QString& text, bool caution,
                   bool applicationModal) override;
    std::optional<QString> runInProcessScript(const QString& source,
                                              const QString& fileName) override;

private:
    TextView* mainTextViewOf(Document* document) const;

    DocumentController& _documents;
};
