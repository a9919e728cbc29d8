#pragma once

#include "document/Document.h"

#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QVariant>

#include <optional>
class TextView;

/// What scripts see of one document: its text, its selection as text and as a range, the
/// name of its encoding and its file path. The same properties serve the in-process
/// scripts (the QVariant forms, where "none" is null) and the D-Bus service. Every value
/// is computed on access from the document and its window.
///
/// A change the document cannot take (a range outside the text, a value of the wrong
/// kind, text with NUL characters, an edit while the file is still going in) is refused
/// with a reason and changes nothing; in-process scripts get it as a thrown error.
class ScriptingDocument : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QVariant contents READ contentsValue WRITE setContentsValue)
    Q_PROPERTY(QString selection READ selection)
    Q_PROPERTY(QVariant textRange READ textRangeValue WRITE setTextRangeValue)
    Q_PROPERTY(QVariant textEncoding READ textEncodingValue)
    Q_PROPERTY(QVariant filePath READ filePathValue)

public:
    /// Why a change was not made.
    struct Refusal {
        enum Kind {
            InvalidValue, ///< not a value of the property's kind
            OutOfRange,   ///< a range that does not lie inside the text
            NotEditable,  ///< the document cannot be changed now (loading, read-only, no window)
        };
        Kind kind;
        QString message;
    };

    /// The document's scripting object, created on first request (a child of it).
    static ScriptingDocument* of(Document* document);

    Document* document() const { return _document; }
    /// The main text view of the document's window; null without a window.
    TextView* textView() const;

    /// The whole text.
    QString contents() const;
    /// Inserts `text` at the selection as typed text (it replaces the selection).
    std::optional<Refusal> setContents(const QString& text);
    /// The selected text; "" without a text view.
    QString selection() const;
    /// Location and length of the selection in UTF-16 code units; none without a text view.
    std::optional<QList<qint64>> textRange() const;
    /// Selects the range given as exactly two numbers, location and length, inside the text.
    std::optional<Refusal> setTextRange(const QList<qint64>& range);
    /// The IANA name of the document's encoding; none when it has none.
    std::optional<QString> textEncoding() const;
    /// The file's path; none for a document never saved.
    std::optional<QString> filePath() const;

    QVariant contentsValue() const { return contents(); }
    void setContentsValue(const QVariant& value);
    QVariant textRangeValue() const;
    void setTextRangeValue(const QVariant& value);
    QVariant textEncodingValue() const;
    QVariant filePathValue() const;

private:
    explicit ScriptingDocument(Document* document);
    /// The reason the text (`text`) or the selection cannot be changed now; none when it can.
    std::optional<Refusal> refusalToChange(TextView* view, bool text) const;

    QPointer<Document> _document;
};
