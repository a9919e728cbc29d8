#pragma once

#include <QMainWindow>

class QPlainTextEdit;

/// A plain window on one file: the editor's window until documents and their window
/// controllers take over.
class DocumentWindow : public QMainWindow
{
    Q_OBJECT

public:
    /// Opens `path` (UTF-8), or an untitled window when the path is empty.
    explicit DocumentWindow(const QString& path, QWidget* parent = nullptr);

    QPlainTextEdit* textView() const { return _textView; }

private:
    QPlainTextEdit* _textView = nullptr;
};
