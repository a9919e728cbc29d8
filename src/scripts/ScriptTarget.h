#pragma once

#include "document/DocumentOpener.h"

#include <QString>

#include <optional>

class QObject;

/// What scripts act on, implemented by the application: its documents, the main text view
/// of a document's window, the alerts, and the in-process script engine with its object
/// model. Scripts reach documents, windows and alerts only through it.
class ScriptTarget : public DocumentOpener
{
public:
    /// The main text view of the window that shows `document`, as an object that is
    /// destroyed with the view; null when no window shows the document.
    virtual QObject* textViewOf(Document* document) const = 0;
    /// The window (or tab) that shows `document`; it is destroyed when the user closes it.
    virtual QObject* windowOf(Document* document) const = 0;
    /// Whether the window holding the main text view of `document` is on screen.
    virtual bool isShown(Document* document) const = 0;
    /// The text selected in the main text view of `document`, its lines ended by LF;
    /// empty without a selection or a view.
    virtual QString selectedTextOf(Document* document) const = 0;
    /// Puts `text` in place of the selection of the main text view of `document`, as one
    /// step to undo.
    virtual void insertTextAtSelection(Document* document, const QString& text) = 0;
    /// Gives the keyboard focus to the main text view of `document`, if a window shows it.
    virtual void focusTextView(Document* document) = 0;
    /// Shows an alert with one "OK" button (caution: the warning kind): a sheet on the key
    /// window, or application-modal when `applicationModal` or when no window is in front.
    virtual void showAlert(const QString& title, const QString& text, bool caution,
                           bool applicationModal) = 0;
    /// Runs an in-process script; `fileName` names it in error messages. The text of its
    /// compile error, or none when it compiled (it may still have failed while running).
    virtual std::optional<QString> runInProcessScript(const QString& source,
                                                      const QString& fileName) = 0;
};
