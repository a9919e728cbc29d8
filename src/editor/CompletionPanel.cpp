#include "editor/CompletionPanel.h"

#include <QFontDatabase>
#include <QListWidget>
#include <QVBoxLayout>

CompletionPanel::CompletionPanel(QWidget* parent)
    : QWidget(parent, Qt::ToolTip | Qt::FramelessWindowHint | Qt::WindowDoesNotAcceptFocus)
    , _tableView(new QListWidget(this))
{
    setObjectName(QStringLiteral("CompletionPanel"));
    setAttribute(Qt::WA_ShowWithoutActivating);
    setFocusPolicy(Qt::NoFocus);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(_tableView);
    _tableView->setFocusPolicy(Qt::NoFocus);
    // The manager sizes the list to its rows, however few.
    _tableView->setMinimumSize(1, 1);
    _tableView->setUniformItemSizes(true);
    _tableView->setSpacing(0);
    _tableView->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    _tableView->setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    _tableView->setSelectionMode(QAbstractItemView::SingleSelection);
    _tableView->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
}

int CompletionPanel::rowHeight() const
{
    const int hinted = _tableView->sizeHintForRow(0);
    return hinted > 0 ? hinted : _tableView->fontMetrics().height() + 2;
}

int CompletionPanel::intercellSpacing() const
{
    return 2 * _tableView->spacing();
}

int CompletionPanel::chromeHeight() const
{
    return 2 * _tableView->frameWidth();
}
