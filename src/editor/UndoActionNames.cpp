#include "editor/UndoActionNames.h"

#include <QTextDocument>

UndoActionNames::UndoActionNames(QTextDocument* textStorage)
    : QObject(textStorage)
    , _textStorage(textStorage)
    , _origin(textStorage->availableUndoSteps())
    , _state(_origin)
{
    // The document announces a new step before it reports the change, and an undo or a redo
    // only by the change: following both keeps `_state` at the count before each new step.
    connect(textStorage, &QTextDocument::undoCommandAdded, this,
            &UndoActionNames::undoCommandAdded);
    connect(textStorage, &QTextDocument::contentsChange, this,
            [this] { _state = _textStorage->availableUndoSteps(); });
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
    _steps.erase(_steps.upper_bound(_state), _steps.end());
    _state = _textStorage->availableUndoSteps();
    if (_state < _origin) {
        _origin = _state; // the history was cleared
    }
    _steps[_state] = QString();
}

void UndoActionNames::setActionName(const QString& name)
{
    const int state = _textStorage->availableUndoSteps();
    if (state > 0) {
        _steps[state] = name;
    }
}

QString UndoActionNames::undoActionName() const
{
    if (!_textStorage->isUndoAvailable()) {
        return QString();
    }
    const auto step = _steps.find(_textStorage->availableUndoSteps());
    return step != _steps.end() ? step->second : QString();
}

QString UndoActionNames::redoActionName() const
{
    const int state = _textStorage->availableUndoSteps();
    if (!_textStorage->isRedoAvailable() || state < _origin) {
        return QString();
    }
    const auto step = _steps.upper_bound(state);
    return step != _steps.end() ? step->second : QString();
}
