#include "editor/UndoActionNames.h"

#include <QTextDocument>

UndoActionNames::UndoActionNames(QTextDocument* document)
    : QObject(document)
    , _document(document)
{
    connect(document, &QTextDocument::undoCommandAdded, this, &UndoActionNames::stepAdded);
    connect(document, &QTextDocument::undoAvailable, this, &UndoActionNames::changed);
    connect(document, &QTextDocument::redoAvailable, this, &UndoActionNames::changed);
    connect(document, &QTextDocument::contentsChanged, this, &UndoActionNames::changed);
}

UndoActionNames* UndoActionNames::of(QTextDocument* document)
{
    if (!document) {
        return nullptr;
    }
    auto* names = document->findChild<UndoActionNames*>(QString(), Qt::FindDirectChildrenOnly);
    return names ? names : new UndoActionNames(document);
}

void UndoActionNames::beginStep(const QString& actionName)
{
    _pending = actionName;
}

void UndoActionNames::endStep()
{
    _pending.clear();
    Q_EMIT changed();
}

void UndoActionNames::stepAdded()
{
    // The new step is the last one undo can reach; any steps that redo could reach are gone.
    const int steps = _document->availableUndoSteps();
    _names = _names.mid(0, qMax(0, steps - 1));
    while (_names.size() < steps - 1) {
        _names.append(QString());
    }
    _names.append(_pending);
    _pending.clear();
    Q_EMIT changed();
}

QString UndoActionNames::undoActionName() const
{
    const int index = _document->availableUndoSteps() - 1;
    return index >= 0 && index < _names.size() ? _names[index] : QString();
}

QString UndoActionNames::redoActionName() const
{
    if (_document->availableRedoSteps() == 0) {
        return {};
    }
    const int index = _document->availableUndoSteps();
    return index < _names.size() ? _names[index] : QString();
}
