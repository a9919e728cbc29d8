#include "window/DiskChangeNotices.h"

#include "document/Document.h"
#include "editor/TextView.h"
#include "platform/FileWatcher.h"
#include "window/DiskComparisonDialog.h"
#include "window/DocumentWindow.h"
#include "window/WindowController.h"

#include <QDir>
#include <QFileInfo>
#include <QScrollBar>

#include <algorithm>

namespace {

// Where a pane is in the text, by lines and columns, which a text read anew still has.
struct PanePlace {
    QPointer<TextView> view;
    int anchorLine = 0;
    int anchorColumn = 0;
    int line = 0;
    int column = 0;
    int horizontal = 0;
    int vertical = 0;
};

std::pair<int, int> lineAndColumn(const Document& text, qsizetype position)
{
    const qsizetype line = text.lineOfPosition(position);
    return {int(line), int(position - text.rangeOfLine(line).location)};
}

qsizetype positionOf(const Document& text, int line, int column)
{
    const Range range = text.rangeOfLine(std::min<qsizetype>(line, text.lineCount() - 1));
    return range.location + std::min<qsizetype>(column, range.length);
}

std::vector<PanePlace> placesOf(const Document& text, const std::vector<TextView*>& views)
{
    std::vector<PanePlace> places;
    for (TextView* view : views) {
        PanePlace place;
        place.view = view;
        std::tie(place.anchorLine, place.anchorColumn) =
            lineAndColumn(text, view->selectionAnchor());
        std::tie(place.line, place.column) = lineAndColumn(text, view->cursorPosition());
        place.horizontal = view->horizontalScrollBar()->value();
        place.vertical = view->verticalScrollBar()->value();
        places.push_back(place);
    }
    return places;
}

void restore(const Document& text, const std::vector<PanePlace>& places)
{
    for (const PanePlace& place : places) {
        if (!place.view) {
            continue;
        }
        place.view->setSelection(positionOf(text, place.anchorLine, place.anchorColumn),
                                 positionOf(text, place.line, place.column));
        // After the cursor, which scrolls to show itself.
        place.view->verticalScrollBar()->setValue(place.vertical);
        place.view->horizontalScrollBar()->setValue(place.horizontal);
    }
}

} // namespace

DiskChangeNotices::DiskChangeNotices(WindowController* controller)
    : QObject(controller)
    , _controller(controller)
    , _document(controller->document())
    , _watcher(new FileWatcher(this))
{
    _watcher->setPath(_document->fileURL());
    connect(_watcher, &FileWatcher::changed, this, &DiskChangeNotices::check);
    // A Save As gives the document another file. The check waits for the watcher to settle:
    // a save announces itself before it has recorded the state it wrote.
    connect(_document, &Document::documentInformationChanged, this,
            [this] { _watcher->setPath(_document->fileURL()); });
    // Reverting reads the file anew, which settles whatever the bar said. Queued: a reading
    // announces itself before it records the state of the file it read.
    connect(_document, &Document::contentsRead, this, &DiskChangeNotices::check,
            Qt::QueuedConnection);
    connect(_document, &Document::contentsChange, this,
            [this](qsizetype, qsizetype removed, qsizetype added) {
                if (removed > 0 || added > 0) {
                    _modifiedByRemoval = false;
                }
            });
    if (DocumentWindow* window = _controller->window()) {
        connect(window, &DocumentWindow::becameActive, this, &DiskChangeNotices::check);
    }
}

DiskComparisonDialog* DiskChangeNotices::comparison() const
{
    return _comparison;
}

void DiskChangeNotices::check()
{
    const QString path = _document->fileURL();
    if (path.isEmpty()) {
        return;
    }
    const std::optional<FileStamp> now = FileStamp::ofFile(path);
    if (now == _document->fileStamp()) {
        // The file is as the document knows it: saved by the editor, or put back as it was.
        _handled.reset();
        dismissBar();
        if (_modifiedByRemoval) {
            _modifiedByRemoval = false;
            _document->setDocumentEdited(false);
        }
        return;
    }
    if (_handled && *_handled == now) {
        return;
    }
    _handled = now;
    if (!now) {
        showGoneBar();
    } else if (!_document->isDocumentEdited() || _modifiedByRemoval) {
        reload();
    } else {
        showChangedBar();
    }
}

bool DiskChangeNotices::reload()
{
    const std::vector<PanePlace> places = placesOf(*_document, _controller->textViews());
    _document->beginUndoGrouping(tr("Reload"));
    QString error;
    const bool reloaded = _document->reloadFromFile(&error);
    _document->endUndoGrouping();
    if (!reloaded) {
        showBar(tr("“%1” has changed on disk, but could not be read again. %2")
                    .arg(_document->displayName(), error));
        return false;
    }
    _handled.reset();
    _modifiedByRemoval = false;
    dismissBar();
    _controller->resetupInitialTextViewSharedState();
    restore(*_document, places);
    return true;
}

void DiskChangeNotices::keepMyVersion()
{
    // The document is now based on the file as it is, so the next Save replaces it without
    // asking again; it stays unsaved until then.
    _document->setFileStamp(FileStamp::ofFile(_document->fileURL()));
    _document->setDocumentEdited(true);
    _handled.reset();
}

void DiskChangeNotices::compare()
{
    if (_comparison) {
        _comparison->close();
    }
    _comparison = new DiskComparisonDialog(_document, _controller->window());
    _comparison->show();
}

void DiskChangeNotices::showChangedBar()
{
    showBar(tr("“%1” has changed on disk since it was opened or saved, and this window has "
               "unsaved changes. Reload takes the file’s text (Undo brings yours back); Keep my "
               "version lets the next Save replace the file.")
                .arg(_document->displayName()));
    _bar->setObjectName(QStringLiteral("changedOnDiskBar"));
    _bar->addButton(tr("Reload"), [this] { reload(); });
    _bar->addButton(tr("Keep my version"), [this] { keepMyVersion(); });
    _bar->addButton(
        tr("Compare"), [this] { compare(); }, false);
}

void DiskChangeNotices::showGoneBar()
{
    const QString name = _document->displayName();
    const QString newName = renamedTo();
    showBar(newName.isEmpty()
                ? tr("“%1” is no longer on disk: another program deleted or moved it. Save "
                     "writes it again.")
                      .arg(name)
                : tr("“%1” has been renamed “%2” on disk by another program. Save writes it "
                     "again as “%1”.")
                      .arg(name, newName));
    _bar->setObjectName(QStringLiteral("goneFromDiskBar"));
    // Closing the window must not lose the only copy of the text left.
    if (!_document->isDocumentEdited()) {
        _document->setDocumentEdited(true);
        _modifiedByRemoval = true;
    }
}

void DiskChangeNotices::showBar(const QString& message)
{
    dismissBar();
    auto* bar = new InformationBar(InformationBar::Kind::Warning, message);
    connect(bar, &InformationBar::dismissed, this, [this, bar] {
        if (_bar == bar) {
            _bar = nullptr;
        }
    });
    _bar = bar;
    if (DocumentWindow* window = _controller->window()) {
        window->addInformationBar(_bar);
    }
}

void DiskChangeNotices::dismissBar()
{
    if (_bar) {
        _bar->dismiss();
    }
    _bar = nullptr;
}

QString DiskChangeNotices::renamedTo() const
{
    const std::optional<FileStamp> known = _document->fileStamp();
    if (!known) {
        return {};
    }
    const QFileInfo file(_document->fileURL());
    // A rename keeps the file itself; a folder too large to look through says only "moved".
    const QFileInfoList entries =
        QDir(file.absolutePath()).entryInfoList(QDir::Files | QDir::Hidden | QDir::System);
    if (entries.size() > 10'000) {
        return {};
    }
    for (const QFileInfo& entry : entries) {
        const std::optional<FileStamp> stamp = FileStamp::ofFile(entry.absoluteFilePath());
        if (stamp && stamp->isSameFile(*known)) {
            return entry.fileName();
        }
    }
    return {};
}
