#include "editor/UndoActionNames.h"

#include <QTextDocument>

UndoActionNames::UndoActionNames(QTextDocument* textStorage)
    : QObject(textStorage)
    , _textStorage(textStorage)
{
    connect(textStorage, &QTextDocument::undoCommandAdded, this,
            &UndoActionNames::undoCommandAdded);
}

UndoActionNames* UndoActionNames::of(QTextDocument* textStorage)
{
    if (!textStorage) {
        return nullptr;
    }
    auto* names = textStorage->findChild<UndoActionNames*>(QString(), Qt::FindDirectChildrenOnly);
    return names ? names : new UndoActionNames(textStorage);
}

void UndoActionNames::undoCommandAdded()
{
    // A new step drops the steps that could have been redone.
    const int steps = _textStorage->availableUndoSteps();
    _names.resize(size_t(std::max(steps, 1)));
    _names[size_t(std::max(steps, 1)) - 1].clear();
}

void UndoActionNames::setActionName(const QString& name)
{
    const int steps = _textStorage->availableUndoSteps();
    if (steps <= 0) {
        return;
    }
    if (_names.size() < size_t(steps)) {
        _names.resize(size_t(steps));
    }
    _names[size_t(steps) - 1] = name;
}

QString UndoActionNames::nameOfStep(int step) const
{
    if (step <= 0 || size_t(step) > _names.size()) {
        return QString();
    }
    return _names[size_t(step) - 1];
}

QString UndoActionNames::undoActionName() const
{
    return _textStorage->isUndoAvailable() ? nameOfStep(_textStorage->availableUndoSteps())
                                           : QString();
}

QString UndoActionNames::redoActionName() const
{
    return _textStorage->isRedoAvailable() ? nameOfStep(_textStorage->availableUndoSteps() + 1)
                                           : QString();
}
