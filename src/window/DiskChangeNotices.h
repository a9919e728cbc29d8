#pragma once

#include "platform/FileStamp.h"
#include "window/InformationBar.h"

#include <QObject>
#include <QPointer>

#include <optional>

class DiskComparisonDialog;
class Document;
class FileWatcher;
class WindowController;

/// Keeps a document window in step with its file when another program changes it. Without
/// unsaved changes the document reads the file again by itself, keeping each pane's insertion
/// point and scroll position; with unsaved changes a bar says the file changed on disk and
/// offers to reload (one undoable step), to keep this version (the next Save replaces the
/// file) or to compare the two. A file deleted or renamed is said so in a bar; Save writes it
/// again. The file is looked at whenever it or its folder changes and when the window becomes
/// active; the editor's own saves, which leave the file as the document knows it, say nothing.
class DiskChangeNotices : public QObject
{
    Q_OBJECT

public:
    explicit DiskChangeNotices(WindowController* controller);

    /// The bar about the file on disk shown now; null when none is.
    InformationBar* bar() const { return _bar; }
    /// The comparison opened last by the bar's "Compare" button, while it is open.
    DiskComparisonDialog* comparison() const;

    /// Compares the file on disk with the state the document is based on, and acts on a
    /// change not acted on yet.
    void check();

private:
    /// Reads the file again, keeping the panes' places; false, with a bar saying why, when it
    /// cannot be read.
    bool reload();
    void keepMyVersion();
    void compare();
    void showChangedBar();
    void showGoneBar();
    void showBar(const QString& message);
    void dismissBar();
    /// The name the file has now when another program renamed it within its folder.
    QString renamedTo() const;

    WindowController* _controller;
    Document* _document;
    FileWatcher* _watcher;
    QPointer<InformationBar> _bar;
    QPointer<DiskComparisonDialog> _comparison;
    // The state of the file on disk acted on last (none inside: the file was gone), so that a
    // change is acted on once however many times it is noticed.
    std::optional<std::optional<FileStamp>> _handled;
    // The document was marked modified only because its file went away, and has not been
    // edited since: when the file comes back it reloads as an unmodified document would.
    bool _modifiedByRemoval = false;
};
