#pragma once

#include "document/DocumentOpener.h"

#include <QString>

#include <optional>

class QWidget;
class TextView;

/// What scripts act on, implemented by the application: its documents, the text view of a
/// document's window, and the in-process script engine with its object model. Scripts
/// reach documents and windows only through it.
class ScriptTarget : public DocumentOpener
{
public:
    /// The main text view of the window that shows `document`; null when none does.
    virtual TextView* textViewOf(Document* document) const = 0;
    /// The window (or tab) that shows `document`; it is destroyed when the user closes it.
    virtual QWidget* windowOf(Document* document) const = 0;
    /// Runs an in-process script; `fileName` names it in error messages. The text of its
    /// compile error, or none when it compiled (it may still have failed while running).
    virtual std::optional<QString> runInProcessScript(const QString& source,
                                                      const QString& fileName) = 0;
};
