#include "document/TextMirror.h"

#include <QTextCursor>
#include <QTextDocument>

#include <algorithm>
#include <cstring>
#include <tuple>
#include <utility>

namespace {

// Room to type into beside a text of `length` characters: without it the first keystrokes
// reallocate the whole copy.
qsizetype roomToType(qsizetype length)
{
    return length / 16 + 4096;
}

QString plainText(const QString& raw)
{
    QString text = raw;
    text.replace(QChar::ParagraphSeparator, u'\n');
    return text;
}

/// How many characters `before` and `after` share at their start, and then at their end.
std::pair<qsizetype, qsizetype> commonEnds(QStringView before, QStringView after)
{
    const qsizetype shorter = std::min(before.size(), after.size());
    qsizetype prefix = 0;
    while (prefix < shorter && before[prefix] == after[prefix]) {
        ++prefix;
    }
    qsizetype suffix = 0;
    while (suffix < shorter - prefix &&
           before[before.size() - 1 - suffix] == after[after.size() - 1 - suffix]) {
        ++suffix;
    }
    return {prefix, suffix};
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
{
    setText(plainText(document->toRawText()));
    connect(document, &QTextDocument::contentsChange, this, &TextMirror::contentsChange);
}

void TextMirror::setText(const QString& text)
{
    const qsizetype gap = roomToType(text.size());
    _capacity = text.size() + gap;
    _buffer.reset(new char16_t[size_t(_capacity)]);
    std::copy(text.utf16(), text.utf16() + text.size(), _buffer.get());
    _gapStart = text.size();
    _gapEnd = text.size() + gap;
}

void TextMirror::moveGap(qsizetype position)
{
    char16_t* data = _buffer.get();
    if (position < _gapStart) {
        const qsizetype moved = _gapStart - position;
        _moved += moved;
        std::memmove(data + _gapEnd - moved, data + position, size_t(moved) * sizeof(char16_t));
        _gapStart = position;
        _gapEnd -= moved;
    } else if (position > _gapStart) {
        const qsizetype moved = position - _gapStart;
        _moved += moved;
        std::memmove(data + _gapStart, data + _gapEnd, size_t(moved) * sizeof(char16_t));
        _gapStart = position;
        _gapEnd += moved;
    }
}

QStringView TextMirror::view(qsizetype from, qsizetype to)
{
    Q_ASSERT(0 <= from && from <= to && to <= size());
    if (from < _gapStart && to > _gapStart) {
        // Out of the way by the shorter move.
        moveGap(to - _gapStart <= _gapStart - from ? to : from);
    }
    const qsizetype start = from < _gapStart ? from : from + gapLength();
    return QStringView(_buffer.get() + start, to - from);
}

void TextMirror::remove(qsizetype location, qsizetype length)
{
    moveGap(location);
    _gapEnd += length;
}

void TextMirror::regrow(qsizetype gap)
{
    const qsizetype length = size();
    std::unique_ptr<char16_t[]> grown(new char16_t[size_t(length + gap)]);
    std::copy(_buffer.get(), _buffer.get() + _gapStart, grown.get());
    std::copy(_buffer.get() + _gapEnd, _buffer.get() + _capacity, grown.get() + _gapStart + gap);
    _buffer = std::move(grown);
    _capacity = length + gap;
    _gapEnd = _gapStart + gap;
    _moved += length;
}

void TextMirror::reserve(qsizetype length)
{
    const qsizetype wanted = std::max(length, size()) + roomToType(length);
    if (_capacity < wanted) {
        regrow(wanted - size());
    }
}

void TextMirror::insert(qsizetype location, QStringView text)
{
    moveGap(location);
    if (gapLength() < text.size()) {
        regrow(text.size() + roomToType(size()));
    }
    std::copy(text.utf16(), text.utf16() + text.size(), _buffer.get() + _gapStart);
    _gapStart += text.size();
}

void TextMirror::contentsChange(int position, int removed, int added)
{
    Q_UNUSED(removed);
    // Qt may count the document's closing paragraph separator in both numbers; the lengths
    // before and after say what really changed.
    const qsizetype oldLength = size();
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
        setText(plainText(_document->toRawText()));
        Q_EMIT textDidChange(0, oldLength, size());
        return;
    }
    // Qt reports some edits as larger than they are (a paste at the very start of the text
    // replaces the whole old text by itself plus the paste): the text both sides share at
    // either end did not change, and the edit told is only what lies between.
    qsizetype prefix = 0;
    qsizetype suffix = 0;
    if (location == 0 && reallyRemoved == oldLength && oldLength > 0) {
        const QString text = plainText(_document->toRawText());
        std::tie(prefix, suffix) = commonEnds(this->text(), text);
        setText(text);
    } else {
        QString inserted;
        if (reallyAdded > 0) {
            QTextCursor cursor(_document);
            cursor.setPosition(int(location));
            cursor.setPosition(int(location + reallyAdded), QTextCursor::KeepAnchor);
            inserted = plainText(cursor.selectedText());
        }
        std::tie(prefix, suffix) = commonEnds(view(location, location + reallyRemoved), inserted);
        if (reallyRemoved > prefix + suffix) {
            remove(location + prefix, reallyRemoved - prefix - suffix);
        }
        if (inserted.size() > prefix + suffix) {
            insert(location + prefix,
                   QStringView(inserted).mid(prefix, inserted.size() - prefix - suffix));
        }
    }
    Q_EMIT textDidChange(location + prefix, reallyRemoved - prefix - suffix,
                         reallyAdded - prefix - suffix);
}
