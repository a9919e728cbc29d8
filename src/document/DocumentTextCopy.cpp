#include "document/DocumentTextCopy.h"

#include "document/Document.h"
#include "document/TextMirror.h"

#include <algorithm>

DocumentTextCopy::DocumentTextCopy(Document* document, QObject* parent)
    : QObject(parent)
    , _document(document)
    , _mirror(TextMirror::mirrorOfDocument(document->textStorage()))
{
    _step.setSingleShot(true);
    _step.setInterval(0);
    connect(&_step, &QTimer::timeout, this, &DocumentTextCopy::copySlice);
    connect(_mirror, &TextMirror::textDidChange, this, &DocumentTextCopy::textDidChange);
    connect(document, &Document::loadingChanged, this, [this](bool loading) {
        if (!loading && _waitingForLoad) {
            _waitingForLoad = false;
            _step.start();
        }
    });
}

void DocumentTextCopy::start()
{
    _slices.clear();
    _copied = 0;
    _waitingForLoad = false;
    _step.start();
}

void DocumentTextCopy::copySlice()
{
    if (!_document || !_mirror) {
        return;
    }
    // The end of a file still going in is not in the text storage yet.
    if (_document->isLoading()) {
        _waitingForLoad = true;
        return;
    }
    const qsizetype size = _mirror->size();
    const qsizetype end = std::min(size, _copied + _sliceLength);
    if (end > _copied) {
        _slices.push_back(_mirror->view(_copied, end).toString());
        _copied = end;
    }
    if (_copied < size) {
        _step.start();
        return;
    }
    Q_EMIT finished();
}

void DocumentTextCopy::textDidChange(qsizetype location, qsizetype removed, qsizetype added)
{
    if (location >= _copied) {
        return; // not copied yet: read as it is now
    }
    // Within one slice, the edit is made to the copy; across slices, the copy goes back.
    qsizetype start = 0;
    size_t index = 0;
    while (index < _slices.size() && start + _slices[index].size() <= location) {
        start += _slices[index].size();
        ++index;
    }
    if (location + removed > _copied || index == _slices.size() ||
        location + removed > start + _slices[index].size()) {
        truncate(location);
        return;
    }
    // In place: a replacement of another length would make a new slice.
    QString& slice = _slices[index];
    slice.remove(location - start, removed);
    slice.insert(location - start, _mirror->view(location, location + added));
    _copied += added - removed;
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
    pieces.standIns.restore(text);
    return text;
}

std::vector<QByteArray> DocumentTextCopy::utf8(Pieces pieces)
{
    std::vector<QByteArray> parts;
    parts.reserve(pieces.slices.size());
    QString carried;
    for (QString& slice : pieces.slices) {
        if (!carried.isEmpty()) {
            slice.prepend(carried);
            carried.clear();
        }
        // A slice may end between the halves of a surrogate pair: the first half goes on.
        if (!slice.isEmpty() && slice.back().isHighSurrogate()) {
            carried = slice.back();
            slice.chop(1);
        }
        pieces.standIns.restore(slice);
        parts.push_back(slice.toUtf8());
        slice = QString();
    }
    if (!carried.isEmpty()) {
        parts.push_back(carried.toUtf8());
    }
    return parts;
}
