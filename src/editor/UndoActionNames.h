#pragma once

#include <QObject>
#include <QString>

#include <map>

class QTextDocument;

/// The names of a text's undo steps ("Replace All", "Shift Right"), for the Edit menu's
/// Undo and Redo titles. QTextDocument keeps no names of its own, and counts its undo
/// history in single edits rather than steps: each step is known here by the count of
/// edits that stands once it is done, noted as the document adds it.
class UndoActionNames : public QObject
{
    Q_OBJECT

public:
    /// The names of `textStorage`'s steps, made on first use and owned by the text. Make it
    /// before the first edit whose name should show in Redo.
    static UndoActionNames* of(QTextDocument* textStorage);

    /// Names the step the text added last.
    void setActionName(const QString& name);
    /// The name of the step Undo would take back; empty when it has none.
    QString undoActionName() const;
    /// The name of the step Redo would make again; empty when it has none.
    QString redoActionName() const;

private:
    explicit UndoActionNames(QTextDocument* textStorage);
    void undoCommandAdded();

    QTextDocument* _textStorage;
    int _origin = 0; // steps older than this object are not known
    int _state = 0;  // the edit count the last change left
    std::map<int, QString> _steps;
};
