#pragma once

#include <QObject>
#include <QString>

class QTextDocument;

/// A plain copy of a document's text (line breaks as LF), kept in step with every edit.
/// Syntax colouring needs the whole text as one string after each keystroke; asking the
/// document for it would copy the whole text each time, while following the edit costs
/// only moving the tail of the copy. One mirror belongs to one document and serves every
/// pane on it.
class TextMirror : public QObject
{
    Q_OBJECT

public:
    /// The document's mirror, made (reading the whole text once) on first request.
    static TextMirror* mirrorOfDocument(QTextDocument* document);

    const QString& string() const { return _string; }

Q_SIGNALS:
    /// `removed` units at `location` were replaced by `added`; string() already holds the
    /// new text.
    void textDidChange(qsizetype location, qsizetype removed, qsizetype added);

private:
    explicit TextMirror(QTextDocument* document);
    void contentsChange(int position, int removed, int added);
    void reserveRoom();

    QTextDocument* _document;
    QString _string;
};
