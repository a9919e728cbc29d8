#pragma once

#include "platform/CharacterStandIns.h"

#include <QObject>
#include <QPointer>
#include <QString>
#include <QTimer>

#include <algorithm>
#include <vector>

class Document;
class TextMirror;

/// A copy of a document's text taken from its mirror a slice at a time between the events of
/// the GUI thread, for a worker to use: copying the text of a large file at once would hold
/// up typing for as long as the copy takes. Edits made while the copy is taken are followed: one
/// within what has been copied is made to the copy too (so that typing on and on never puts
/// the end of the copy off), a larger one takes the copy back to where it began.
class DocumentTextCopy : public QObject
{
    Q_OBJECT

public:
    /// What the copy holds once finished: the text in slices as the mirror holds it, and what
    /// makes it the document's text again (see text()).
    struct Pieces {
        std::vector<QString> slices;
        CharacterStandIns standIns;
    };

    explicit DocumentTextCopy(Document* document, QObject* parent = nullptr);

    /// Starts copying (again, from the start, when a copy was finished).
    void start();
    /// Characters copied at each turn of the event loop; a test may lower it.
    void setSliceLength(qsizetype length) { _sliceLength = std::max<qsizetype>(length, 1); }
    bool isCopying() const { return _step.isActive() || _waitingForLoad; }
    /// The pieces of the finished copy, taken out of it.
    Pieces takePieces();

    /// The text the pieces make: what Document::string() gave when the copy finished. Reads
    /// no document, so a worker may call it.
    static QString text(Pieces pieces);

Q_SIGNALS:
    /// The copy holds the whole text as it is now.
    void finished();

private:
    void copySlice();
    void textDidChange(qsizetype location, qsizetype removed, qsizetype added);
    /// Drops what was copied from `position` on.
    void truncate(qsizetype position);

    QPointer<Document> _document;
    QPointer<TextMirror> _mirror;
    QTimer _step;
    std::vector<QString> _slices;
    qsizetype _copied = 0;
    qsizetype _sliceLength = 1024 * 1024;
    bool _waitingForLoad = false;
};
