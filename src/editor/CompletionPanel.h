#pragma once

#include <QWidget>

class QListWidget;

/// The floating list of the completion: a frameless window that never takes the keyboard
/// focus, with one column of candidates. The text view keeps the keys; the list follows.
class CompletionPanel : public QWidget
{
    Q_OBJECT

public:
    explicit CompletionPanel(QWidget* parent = nullptr);

    QListWidget* tableView() const { return _tableView; }
    /// The height of one row and the space between rows.
    int rowHeight() const;
    int intercellSpacing() const;
    /// What the list needs beyond its rows (its frame).
    int chromeHeight() const;

private:
    QListWidget* _tableView;
};
