#pragma once

#include <QObject>
#include <QString>

#include <vector>

class QTextDocument;

/// The names of a text's undo steps ("Replace All", "Shift Right"), for the Edit menu's
/// Undo and Redo titles. QTextDocument keeps no names of its own: the steps are counted
/// as the document adds them, and a name is kept beside the step that was added last.
class UndoActionNames : public QObject
{
    Q_OBJECT

public:
    /// The names of `textStorage`'s steps, made on first use and owned by the text.
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
    QString nameOfStep(int step) const;

    QTextDocument* _textStorage;
    std::vector<QString> _names; // _names[i] names step i + 1
};
