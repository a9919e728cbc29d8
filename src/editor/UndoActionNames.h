#pragma once

#include <QList>
#include <QObject>
#include <QString>

class Document;
class QTextDocument;

/// The action names of a document's undoable steps, kept beside QTextDocument's own undo
/// stack (which has no names). A step is known by where it ends in the stack, counted in the
/// document's undo commands: undo takes back the step ending at the current position, redo
/// makes again the first step ending beyond it. Steps made by typing have no name.
class UndoActionNames : public QObject
{
    Q_OBJECT

public:
    /// The record of `document`, made on first request; it lives as the document's child.
    static UndoActionNames* of(QTextDocument* document);
    static UndoActionNames* of(const Document* document);

    /// Names the step the next edit block (or single change) of the document adds. Call
    /// endStep() after the block ends, whether or not it changed anything.
    void beginStep(const QString& actionName);
    void endStep();

    /// The name of the step that undo would take back, and that redo would make again.
    QString undoActionName() const;
    QString redoActionName() const;

Q_SIGNALS:
    /// The step names or the position in the stack may have changed.
    void changed();

private:
    explicit UndoActionNames(QTextDocument* document);
    struct Step {
        int end;
        QString name;
    };
    void stepAdded();
    /// Forgets the steps ending beyond `position`.
    void dropStepsAfter(int position);

    QTextDocument* _document;
    QList<Step> _steps;
    QString _pending;
};
