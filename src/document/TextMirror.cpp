#include "document/TextMirror.h"

#include <QTextCursor>
#include <QTextDocument>

#include <algorithm>
#include <tuple>
#include <utility>

namespace {

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
    // Qt reports some edits as larger than they are (a paste at the very start of the text
    // replaces the whole old text by itself plus the paste): the text both sides share at
    // either end did not change, and the edit told is only what lies between.
    qsizetype prefix = 0;
    qsizetype suffix = 0;
    if (location == 0 && reallyRemoved == oldLength) {
        QString text = plainText(_document->toRawText());
        std::tie(prefix, suffix) = commonEnds(_string, text);
        _string = std::move(text);
        reserveRoom();
    } else {
        QString inserted;
        if (reallyAdded > 0) {
            QTextCursor cursor(_document);
            cursor.setPosition(int(location));
            cursor.setPosition(int(location + reallyAdded), QTextCursor::KeepAnchor);
            inserted = plainText(cursor.selectedText());
        }
        std::tie(prefix, suffix) =
            commonEnds(QStringView(_string).mid(location, reallyRemoved), inserted);
        // In place: QString::replace() of a different length builds a new string, a copy
        // of the whole text per keystroke; remove() and insert() only move the tail.
        if (reallyRemoved > prefix + suffix) {
            _string.remove(location + prefix, reallyRemoved - prefix - suffix);
        }
        if (inserted.size() > prefix + suffix) {
            _string.insert(location + prefix,
                           QStringView(inserted).mid(prefix, inserted.size() - prefix - suffix));
        }
    }
    Q_EMIT textDidChange(location + prefix, reallyRemoved - prefix - suffix,
                         reallyAdded - prefix - suffix);
}
