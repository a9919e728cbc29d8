#include "document/DocumentTextCopy.h"

#include "document/Document.h"

#include <QTextCursor>
#include <QTextDocument>

#include <algorithm>

DocumentTextCopy::DocumentTextCopy(Document* document, QObject* parent)
    : QObject(parent)
    , _document(document)
{
    _step.setSingleShot(true);
    _step.setInterval(0);
    connect(&_step, &QTimer::timeout, this, &DocumentTextCopy::copySlice);
    connect(document->textStorage(), &QTextDocument::contentsChange, this,
            &DocumentTextCopy::contentsChange);
    _length = storageLength();
    connect(document, &Document::loadingChanged, this, [this](bool loading) {
        if (!loading && _waitingForLoad) {
            _waitingForLoad = false;
            _step.start();
        }
    });
}

qsizetype DocumentTextCopy::storageLength() const
{
    return _document ? _document->textStorage()->characterCount() - 1 : 0;
}

void DocumentTextCopy::start()
{
    _slices.clear();
    _copied = 0;
    _length = storageLength();
    _waitingForLoad = false;
    _step.start();
}

void DocumentTextCopy::copySlice()
{
    if (!_document) {
        return;
    }
    // The end of a file still going in is not in the text storage yet.
    if (_document->isLoading()) {
        _waitingForLoad = true;
        return;
    }
    QTextDocument* storage = _document->textStorage();
    const qsizetype length = storageLength();
    const qsizetype end = std::min(length, _copied + _sliceLength);
    if (end > _copied) {
        QTextCursor cursor(storage);
        cursor.setPosition(int(_copied));
        cursor.setPosition(int(end), QTextCursor::KeepAnchor);
        _slices.push_back(cursor.selectedText());
        _copied = end;
    }
    if (_copied < length) {
        _step.start();
        return;
    }
    Q_EMIT finished();
}

void DocumentTextCopy::contentsChange(int position, int removed, int added)
{
    Q_UNUSED(removed);
    // Qt may count the storage's closing block end in both numbers; the lengths before and
    // after say what really changed.
    const qsizetype oldLength = _length;
    const qsizetype newLength = storageLength();
    _length = newLength;
    const qsizetype location = std::clamp<qsizetype>(position, 0, oldLength);
    qsizetype reallyAdded = std::clamp<qsizetype>(added, 0, newLength - location);
    qsizetype reallyRemoved = oldLength + reallyAdded - newLength;
    if (reallyRemoved < 0) {
        reallyAdded -= reallyRemoved;
        reallyRemoved = 0;
    }
    if (location >= _copied) {
        return; // not copied yet: read as it is now
    }
    if (location + reallyRemoved > _copied) {
        truncate(location);
        return;
    }
    // Within one slice, the edit is made to the copy; across slices, the copy goes back.
    qsizetype start = 0;
    size_t index = 0;
    while (index < _slices.size() && start + _slices[index].size() <= location) {
        start += _slices[index].size();
        ++index;
    }
    if (index == _slices.size() || location + reallyRemoved > start + _slices[index].size()) {
        truncate(location);
        return;
    }
    QString inserted;
    if (reallyAdded > 0) {
        QTextCursor cursor(_document->textStorage());
        cursor.setPosition(int(location));
        cursor.setPosition(int(location + reallyAdded), QTextCursor::KeepAnchor);
        inserted = cursor.selectedText();
    }
    // In place: a replacement of another length would make a new slice.
    _slices[index].remove(location - start, reallyRemoved);
    _slices[index].insert(location - start, inserted);
    _copied += reallyAdded - reallyRemoved;
}

void DocumentTextCopy::truncate(qsizetype position)
{
    qsizetype start = _copied;
    while (!_slices.empty() && start - _slices.back().size() >= position) {
        start -= _slices.back().size();
        _slices.pop_back();
    }
    if (!_slices.empty() && start > position) {
        QString& last = _slices.back();
        last.truncate(last.size() - (start - position));
    }
    _copied = std::max<qsizetype>(position, 0);
    // A copy that had finished is not the text any more: it goes on from the edit.
    if (!_step.isActive() && !_waitingForLoad) {
        _step.start();
    }
}

DocumentTextCopy::Pieces DocumentTextCopy::takePieces()
{
    Pieces pieces;
    pieces.slices = std::move(_slices);
    pieces.standIns = _document ? _document->characterStandIns() : CharacterStandIns();
    _slices.clear();
    _copied = 0;
    return pieces;
}

QString DocumentTextCopy::text(Pieces pieces)
{
    qsizetype length = 0;
    for (const QString& slice : pieces.slices) {
        length += slice.size();
    }
    QString text;
    text.reserve(length);
    for (QString& slice : pieces.slices) {
        text += slice;
        slice = QString();
    }
    // Every U+2029 in the storage ends a block: the characters themselves have stand-ins.
    text.replace(QChar::ParagraphSeparator, u'\n');
    pieces.standIns.restore(text);
    return text;
}
