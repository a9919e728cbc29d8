#pragma once

#include "platform/Range.h"

#include <QObject>
#include <QPointer>
#include <QStringList>

class CompletionPanel;
class QListWidget;
class QWidget;
class TextView;

/// Runs the completion list for whichever text view is completing: finds the candidates
/// for the partial word before the insertion point, shows them under it, shows the rest of
/// the chosen one after the typed letters (not in the text) while the user steps through
/// them, and accepts (the word goes into the text) or cancels. Idle when `textView` is none.
class CompletionManager : public QObject
{
    Q_OBJECT

public:
    static CompletionManager& sharedCompletionManager();
    CompletionManager();
    ~CompletionManager() override;

    /// Shows the list for the partial word before `textView`'s insertion point and puts the
    /// first candidate into the text; ends at once when there is none.
    void startCompletion(TextView* textView);
    /// Hides the list and takes the proposed rest of the word away; the text stays as it is.
    void terminateCompletion();
    /// Puts the chosen candidate in for good (accept), or restores the typed word (cancel),
    /// then hides the list.
    void terminateCompletionWithCancel(bool cancel);
    bool isComplating(const TextView* textView) const;
    void selectUpperRow();
    void selectLowerRow();
    /// Fills the list for the view's partial word; false (and the typed word kept) when
    /// there is nothing to offer.
    bool setupCompletionWords();
    /// Places the list under the partial word, or above its line near the bottom of the
    /// screen; at most eight rows high.
    void adjustCompletionPanelPosition();

    QString currentPartialWord() const { return _currentPartialWord; }
    void setCurrentPartialWord(const QString& word) { _currentPartialWord = word; }
    Range currentPartialWordRange() const { return _currentPartialWordRange; }
    const QStringList& completeWords() const { return _completeWords; }
    TextView* textView() const { return _textView; }

    /// The list window and its one column.
    CompletionPanel* panel();
    QListWidget* tableView();
    int numberOfRowsInTableView() const { return int(_completeWords.size()); }
    /// The candidate of `row`; empty when there is none.
    QString tableViewObjectValueForRow(int row) const;

    /// The most rows the list shows at once.
    static constexpr int MaximumRows = 8;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void tableViewSelectionDidChange();
    void doubleClickedTableViewRow();
    void insertSelectedCandidate();
    void associatedNotifications(QWidget* window);
    /// Makes the rows of the first `count` candidates that have none yet.
    void addRows(int count);
    static constexpr int RowBatch = 64;

    CompletionPanel* _panel = nullptr;
    QStringList _completeWords;
    Range _currentPartialWordRange;
    QString _currentPartialWord;
    QPointer<TextView> _textView;
    QPointer<QWidget> _observedWindow;
    bool _reloading = false;
};
