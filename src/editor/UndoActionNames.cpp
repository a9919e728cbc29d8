#include "editor/UndoActionNames.h"

#include "document/Document.h"

#include <QTextDocument>

UndoActionNames::UndoActionNames(QTextDocument* document)
    : QObject(document)
    , _document(document)
{
    connect(document, &QTextDocument::undoCommandAdded, this, &UndoActionNames::stepAdded);
    // The document drops the steps redo could reach just before it adds a new one, and both
    // stacks when it is given a new text.
    connect(document, &QTextDocument::redoAvailable, this, [this](bool available) {
        if (!available) {
            dropStepsAfter(_document->availableUndoSteps());
        }
        Q_EMIT changed();
    });
    connect(document, &QTextDocument::undoAvailable, this, [this](bool available) {
        if (!available && _document->availableRedoSteps() == 0) {
            _steps.clear();
        }
        Q_EMIT changed();
    });
    connect(document, &QTextDocument::contentsChanged, this, &UndoActionNames::changed);
    // The document names the steps it makes itself.
    if (const auto* owner = qobject_cast<const Document*>(document->parent())) {
        connect(owner, &Document::namedStepBegins, this, &UndoActionNames::beginStep);
        connect(owner, &Document::namedStepEnded, this, &UndoActionNames::endStep);
    }
}

UndoActionNames* UndoActionNames::of(QTextDocument* document)
{
    if (!document) {
        return nullptr;
    }
    auto* names = document->findChild<UndoActionNames*>(QString(), Qt::FindDirectChildrenOnly);
    return names ? names : new UndoActionNames(document);
}

UndoActionNames* UndoActionNames::of(const Document* document)
{
    return document ? of(document->textStorage()) : nullptr;
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

void UndoActionNames::dropStepsAfter(int position)
{
    while (!_steps.isEmpty() && _steps.last().end > position) {
        _steps.removeLast();
    }
}

void UndoActionNames::stepAdded()
{
    const int end = _document->availableUndoSteps();
    dropStepsAfter(end - 1);
    _steps.append({end, _pending});
    _pending.clear();
    Q_EMIT changed();
}

QString UndoActionNames::undoActionName() const
{
    const int position = _document->availableUndoSteps();
    for (auto step = _steps.crbegin(); step != _steps.crend(); ++step) {
        if (step->end == position) {
            return step->name;
        }
        if (step->end < position) {
            break;
        }
    }
    return {};
}

QString UndoActionNames::redoActionName() const
{
    if (_document->availableRedoSteps() == 0) {
        return {};
    }
    const int position = _document->availableUndoSteps();
    for (const Step& step : _steps) {
        if (step.end > position) {
            return step.name;
        }
    }
    return {};
}
