#include "window/GotoController.h"

#include "document/Document.h"
#include "editor/TextView.h"
#include "search/SearchManager.h"
#include "window/DocumentWindow.h"
#include "window/WindowController.h"

#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>

GotoController::GotoController(WindowController* windowController, QWidget* parent)
    : QWidget(parent)
    , _windowController(windowController)
{
    setObjectName(QStringLiteral("GotoView"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(10, 12, 10, 10);
    layout->addWidget(new QLabel(tr("Go to Line:"), this));
    _gotoField = new QLineEdit(this);
    _gotoField->setObjectName(QStringLiteral("gotoField"));
    _gotoField->setPlaceholderText(tr("12, 3-5, +2, -1, 10:20:30, start, end"));
    _gotoField->setClearButtonEnabled(true);
    layout->addWidget(_gotoField);
    auto* help = new QLabel(tr("Lines count from 1. \"+n\" and \"-n\" count from the selection; "
                               "colons separate several descriptions, shown in turn."),
                            this);
    help->setWordWrap(true);
    help->setEnabled(false);
    layout->addWidget(help);
    layout->addStretch(1);

    connect(_gotoField, &QLineEdit::textChanged, this, &GotoController::controlTextDidChange);
    connect(_gotoField, &QLineEdit::returnPressed, this, [this] { gotoLine(_gotoField); });
}

void GotoController::controlTextDidChange()
{
    SearchManager::sharedSearchManager().gotoTextFieldDidChange(_gotoField->text());
}

void GotoController::gotoLine(QObject* sender)
{
    Q_UNUSED(sender);
    TextView* textView = _windowController->textView();
    if (!textView || _windowController->document()->length() == 0) {
        return;
    }
    SearchManager::sharedSearchManager().gotoLine(textView);
}
