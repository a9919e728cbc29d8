#pragma once

#include <QDialog>
#include <QString>
#include <QTemporaryDir>

class Document;
class QLabel;
class QPlainTextEdit;
class QProcess;

/// A window that shows how the file on disk and the text of its document differ, as the
/// unified output of `diff -u` (lines only on disk marked -, lines only in the document +),
/// so the user can decide which version to keep. It compares the texts as read, whatever
/// encoding and line breaks the file uses; it changes neither of them.
class DiskComparisonDialog : public QDialog
{
    Q_OBJECT

public:
    DiskComparisonDialog(Document* document, QWidget* parent = nullptr);

    /// What the dialog shows: the differences, or a sentence saying there are none or why
    /// they could not be found. Empty until the comparison is done.
    QString differences() const;

Q_SIGNALS:
    /// The comparison is done and shown.
    void compared();

private:
    void start(Document* document);
    void showResult(const QString& text, bool isDiff);

    QTemporaryDir _folder;
    QProcess* _diff = nullptr;
    QLabel* _legend = nullptr;
    QPlainTextEdit* _text = nullptr;
    bool _done = false;
};
