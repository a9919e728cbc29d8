#pragma once

#include <QWidget>

class Document;
class QLabel;

/// The sidebar's information pane: facts about the document's file and its state.
class InfoController : public QWidget
{
    Q_OBJECT

public:
    explicit InfoController(QWidget* parent = nullptr);

    /// Refreshes every field; nothing changes without a document.
    void updateInformationOfDocument(const Document* document, const QString& syntax);

    QLabel* ownerAccountField() const { return _ownerAccountField; }
    QLabel* groupField() const { return _groupField; }
    QLabel* fileSizeField() const { return _fileSizeField; }
    QLabel* creationField() const { return _creationField; }
    QLabel* modificationField() const { return _modificationField; }
    QLabel* textEncodingField() const { return _textEncodingField; }
    QLabel* lineBreakField() const { return _lineBreakField; }
    QLabel* syntaxField() const { return _syntaxField; }
    QLabel* extensionField() const { return _extensionField; }
    QLabel* urlField() const { return _urlField; }

private:
    QLabel* _ownerAccountField;
    QLabel* _groupField;
    QLabel* _fileSizeField;
    QLabel* _creationField;
    QLabel* _modificationField;
    QLabel* _textEncodingField;
    QLabel* _lineBreakField;
    QLabel* _syntaxField;
    QLabel* _extensionField;
    QLabel* _urlField;
};
