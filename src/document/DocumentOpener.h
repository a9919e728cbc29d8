#pragma once

#include <QString>

#include <vector>

class Document;

/// The application's open documents, as the layers below the application reach them: the
/// application's document controller implements it and hands it down, so that recovery,
/// scripts and panes can find and open documents without knowing windows or menus.
class DocumentOpener
{
public:
    virtual ~DocumentOpener() = default;

    /// The open documents, oldest first.
    virtual const std::vector<Document*>& documents() const = 0;
    /// The document of the active window (its current tab), else the most recent document
    /// that its window shows; null when none is open.
    virtual Document* currentDocument() const = 0;
    /// Opens a new untitled document in its own window.
    virtual Document* newDocument() = 0;
    /// Opens the file in a window (or brings its window forward when it is open already);
    /// null after showing why it could not be opened.
    virtual Document* openDocumentWithContentsOfURL(const QString& path, bool display = true) = 0;
};
