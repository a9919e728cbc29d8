#include "editor/CompletionManager.h"

#include "editor/CompletionPanel.h"
#include "editor/TextView.h"
#include "platform/SharedInstance.h"

#include <QApplication>
#include <QEvent>
#include <QFontMetrics>
#include <QGuiApplication>
#include <QListWidget>
#include <QScreen>
#include <QScrollBar>

#include <algorithm>
#include <utility>
#include <vector>

namespace {

const QString kNoCompletions = QStringLiteral("No Completions");

} // namespace

CompletionManager& CompletionManager::sharedCompletionManager()
{
    return SharedInstance<CompletionManager>::object();
}

CompletionManager::CompletionManager() = default;

CompletionManager::~CompletionManager()
{
    delete _panel;
}

CompletionPanel* CompletionManager::panel()
{
    if (!_panel) {
        _panel = new CompletionPanel;
        QListWidget* table = _panel->tableView();
        connect(table, &QListWidget::currentRowChanged, this,
                &CompletionManager::tableViewSelectionDidChange);
        connect(table, &QListWidget::itemDoubleClicked, this,
                &CompletionManager::doubleClickedTableViewRow);
        // Rows are made as they come into reach: scrolling to the end of the list brings
        // the next ones.
        connect(table->verticalScrollBar(), &QScrollBar::valueChanged, this, [this](int value) {
            const QScrollBar* bar = tableView()->verticalScrollBar();
            if (value + bar->pageStep() >= bar->maximum()) {
                addRows(tableView()->count() + RowBatch);
            }
        });
    }
    return _panel;
}

QListWidget* CompletionManager::tableView()
{
    return panel()->tableView();
}

QString CompletionManager::tableViewObjectValueForRow(int row) const
{
    return row >= 0 && row < _completeWords.size() ? _completeWords[row] : QString();
}

bool CompletionManager::isComplating(const TextView* textView) const
{
    return textView && _textView == textView;
}

void CompletionManager::startCompletion(TextView* textView)
{
    _textView = textView;
    if (!setupCompletionWords()) {
        terminateCompletion();
        return;
    }
    adjustCompletionPanelPosition();
    panel()->show();
    panel()->raise();
    insertSelectedCandidate();
}

bool CompletionManager::setupCompletionWords()
{
    if (!_textView) {
        return false;
    }
    const Range range = _textView->rangeForUserCompletion();
    if (range.isNotFound() || range.length == 0) {
        return false;
    }
    _currentPartialWordRange = range;
    _completeWords = _textView->completionsForPartialWordRange(range);
    QListWidget* table = tableView();
    _reloading = true;
    table->clear();
    _reloading = false;
    // A short partial word has thousands of candidates and the list shows eight: the rows
    // are made a batch at a time, as stepping or scrolling reaches them.
    addRows(RowBatch);
    if (!_completeWords.isEmpty()) {
        _reloading = true;
        table->setCurrentRow(0);
        _reloading = false;
        table->scrollToItem(table->currentItem());
        associatedNotifications(_textView->window());
        return true;
    }
    // Nothing to offer: the text keeps the word as it was typed (a proposal is never in it).
    terminateCompletion();
    _currentPartialWord.clear();
    return false;
}

void CompletionManager::associatedNotifications(QWidget* window)
{
    if (_observedWindow) {
        _observedWindow->removeEventFilter(this);
    }
    _observedWindow = window;
    if (window) {
        window->installEventFilter(this);
    }
}

bool CompletionManager::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == _observedWindow) {
        switch (event->type()) {
        case QEvent::WindowDeactivate:
            // The list itself never takes the window's place.
            if (QApplication::activeWindow() != _panel) {
                terminateCompletion();
            }
            break;
        case QEvent::Resize:
        case QEvent::Move:
        case QEvent::Close:
        case QEvent::Hide:
        case QEvent::WindowStateChange:
            terminateCompletion();
            break;
        default:
            break;
        }
    }
    return QObject::eventFilter(watched, event);
}

void CompletionManager::adjustCompletionPanelPosition()
{
    if (!_textView) {
        return;
    }
    CompletionPanel* list = panel();
    const QRect caret = _textView->rectForPosition(_currentPartialWordRange.location);
    const int baseline = caret.top() + _textView->fontMetrics().ascent();
    QPoint point = _textView->viewport()->mapToGlobal(QPoint(caret.left() - 2, baseline));
    point.ry() += 6;

    // The widest candidate is among the longest: measuring a few of them costs the same
    // for a list of ten words as for one of thousands.
    const QFontMetrics metrics(list->tableView()->font());
    std::vector<const QString*> longest;
    longest.reserve(size_t(_completeWords.size()));
    for (const QString& word : _completeWords) {
        longest.push_back(&word);
    }
    const size_t measured = std::min<size_t>(longest.size(), 32);
    std::partial_sort(longest.begin(), longest.begin() + qsizetype(measured), longest.end(),
                      [](const QString* a, const QString* b) { return a->size() > b->size(); });
    int width = 0;
    for (size_t i = 0; i < measured; ++i) {
        width = qMax(width, metrics.horizontalAdvance(*longest[i]));
    }
    width = qMax(width + 40, 200);
    const int rows = int(qMin<qsizetype>(_completeWords.size(), MaximumRows));
    const int height = (list->rowHeight() + list->intercellSpacing()) * rows + list->chromeHeight();

    QScreen* screen = QGuiApplication::screenAt(point);
    if (!screen) {
        screen = _textView->screen();
    }
    QPoint origin = point;
    if (screen && point.y() + height > screen->geometry().bottom()) {
        // Near the bottom of the screen the list stands above the line instead.
        origin.setY(point.y() - 20 - height);
    }
    list->setGeometry(QRect(origin, QSize(width, height)));
    list->update();
}

void CompletionManager::selectUpperRow()
{
    QListWidget* table = tableView();
    const int row = table->currentRow();
    if (row > 0) {
        table->setCurrentRow(row - 1);
    }
    table->scrollToItem(table->currentItem());
}

void CompletionManager::addRows(int count)
{
    QListWidget* table = tableView();
    const int from = table->count();
    const int to = int(std::min<qsizetype>(_completeWords.size(), count));
    if (to <= from) {
        return;
    }
    const bool reloading = std::exchange(_reloading, true);
    table->addItems(_completeWords.mid(from, to - from));
    _reloading = reloading;
}

void CompletionManager::selectLowerRow()
{
    QListWidget* table = tableView();
    const int row = table->currentRow();
    if (row + 1 >= table->count()) {
        addRows(table->count() + RowBatch);
    }
    if (row + 1 < table->count()) {
        table->setCurrentRow(row + 1);
    }
    table->scrollToItem(table->currentItem());
}

void CompletionManager::tableViewSelectionDidChange()
{
    if (!_reloading) {
        insertSelectedCandidate();
    }
}

void CompletionManager::insertSelectedCandidate()
{
    const QString candidate = tableViewObjectValueForRow(tableView()->currentRow());
    if (_textView && !candidate.isEmpty() && candidate != kNoCompletions) {
        _textView->insertCompletion(candidate, _currentPartialWordRange,
                                    TextView::OtherTextMovement, false);
    }
}

void CompletionManager::doubleClickedTableViewRow()
{
    terminateCompletionWithCancel(false);
}

void CompletionManager::terminateCompletionWithCancel(bool cancel)
{
    if (!_textView) {
        return;
    }
    const QString candidate = tableViewObjectValueForRow(tableView()->currentRow());
    if (!candidate.isEmpty()) {
        _textView->insertCompletion(
            candidate, _currentPartialWordRange,
            cancel ? TextView::CancelTextMovement : TextView::ReturnTextMovement, true);
    }
    // Cancelling leaves the text as typed: the proposed rest of the word was never in it.
    if (cancel) {
        _currentPartialWord.clear();
    }
    terminateCompletion();
}

void CompletionManager::terminateCompletion()
{
    associatedNotifications(nullptr);
    if (_panel) {
        _panel->hide();
    }
    if (_textView && !_textView->proposedCompletion().isEmpty()) {
        _textView->insertCompletion(QString(), _currentPartialWordRange,
                                    TextView::CancelTextMovement, true);
    }
    _textView = nullptr;
    _completeWords.clear();
    if (_panel) {
        _reloading = true;
        _panel->tableView()->clear();
        _reloading = false;
    }
}
