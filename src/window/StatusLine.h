#pragma once

#include <QObject>
#include <QString>

class CharacterCounter;
class TextView;
class WindowController;

/// The status line of a window: the characters of the text or of the selection, the encoding,
/// the line breaks, the syntax, the caret's line and column, and "Read-Only" for a file this
/// process may not write. It follows the main text view's selection and caret, and counts
/// large selections on a worker.
class StatusLine : public QObject
{
    Q_OBJECT

public:
    explicit StatusLine(WindowController* controller);

    /// The line's text, made from the last count and the window's state.
    QString text() const;
    /// The last count: the whole text's, or the selection's.
    qint64 characters() const { return _characters; }
    /// Whether the document's file is one this process may not write, as last looked at.
    bool isFileReadOnly() const { return _fileIsReadOnly; }

    /// The document's file changed: whether it may be written is looked at again.
    void fileChanged();
    /// Shows the text again, and the sidebar's information pane when it is shown.
    void update();
    /// Shows the caret's new place; only the line changes.
    void showCaretPosition();
    /// Shows the whole text's count, which is kept up to date as the text changes.
    void showWholeCount();
    /// The selection of `view` changed: counted when it is the main text view's.
    void selectionChanged(TextView* view);
    /// Counts the characters of `text` and shows the line.
    void countCharacters(const QString& text);

Q_SIGNALS:
    void changed(const QString& text);

private:
    static bool isReadOnlyFile(const QString& path);

    WindowController* _controller;
    CharacterCounter* _counter;
    qint64 _characters = 0;
    bool _allowWhitespaceCount = true;
    bool _countloop = false;
    bool _fileIsReadOnly = false;
};
