#include "editor/TextMirror.h"

#include <QTextCursor>
#include <QTextDocument>

#include <algorithm>

namespace {

QString plainText(const QString& raw)
{
    QString text = raw;
    text.replace(QChar::ParagraphSeparator, u'\n');
    return text;
}

} // namespace

TextMirror* TextMirror::mirrorOfDocument(QTextDocument* document)
{
    if (!document) {
        return nullptr;
    }
    if (auto* mirror = document->findChild<TextMirror*>(QString(), Qt::FindDirectChildrenOnly)) {
        return mirror;
    }
    return new TextMirror(document);
}

TextMirror::TextMirror(QTextDocument* document)
    : QObject(document)
    , _document(document)
    , _string(plainText(document->toRawText()))
{
    reserveRoom();
    connect(document, &QTextDocument::contentsChange, this, &TextMirror::contentsChange);
}

void TextMirror::reserveRoom()
{
    // Room to type into: without it the first keystroke reallocates the whole copy.
    _string.reserve(_string.size() + _string.size() / 16 + 4096);
}

void TextMirror::contentsChange(int position, int removed, int added)
{
    Q_UNUSED(removed);
    // Qt may count the document's closing paragraph separator in both numbers; the lengths
    // before and after say what really changed.
    const qsizetype oldLength = _string.size();
    const qsizetype newLength = _document->characterCount() - 1;
    const qsizetype location = std::clamp<qsizetype>(position, 0, oldLength);
    qsizetype reallyAdded = std::clamp<qsizetype>(added, 0, newLength - location);
    qsizetype reallyRemoved = oldLength + reallyAdded - newLength;
    if (reallyRemoved < 0) {
        reallyAdded -= reallyRemoved;
        reallyRemoved = 0;
    }
    if (location + reallyRemoved > oldLength || location + reallyAdded > newLength) {
        // Not an edit this copy can follow: take the whole text again.
        const qsizetype before = oldLength;
        _string = plainText(_document->toRawText());
        Q_EMIT textDidChange(0, before, _string.size());
        return;
    }
    if (location == 0 && reallyRemoved == oldLength) {
        _string = plainText(_document->toRawText());
        reserveRoom();
    } else {
        QString inserted;
        if (reallyAdded > 0) {
            QTextCursor cursor(_document);
            cursor.setPosition(int(location));
            cursor.setPosition(int(location + reallyAdded), QTextCursor::KeepAnchor);
            inserted = plainText(cursor.selectedText());
        }
        // In place: QString::replace() of a different length builds a new string, a copy
        // of the whole text per keystroke; remove() and insert() only move the tail.
        if (reallyRemoved > 0) {
            _string.remove(location, reallyRemoved);
        }
        if (!inserted.isEmpty()) {
            _string.insert(location, inserted);
        }
    }
    Q_EMIT textDidChange(location, reallyRemoved, reallyAdded);
}
