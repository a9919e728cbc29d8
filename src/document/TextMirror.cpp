#include "document/TextMirror.h"

#include "document/TextChunkIterator.h"

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

/// How many characters [from, to) of `before` shares with `after` at its start, and then
/// at its end: read from the chunks, so a large removal is not copied to be compared.
std::pair<qsizetype, qsizetype> commonEnds(const TextSnapshot& before, qsizetype from, qsizetype to,
                                           QStringView after)
{
    const qsizetype shorter = std::min(to - from, after.size());
    qsizetype prefix = 0;
    for (TextChunkIterator chunks(before, from); !chunks.atEnd() && prefix < shorter;
         chunks.next()) {
        const QStringView chunk = chunks.chunk();
        const qsizetype limit = std::min(chunk.size(), shorter - prefix);
        qsizetype i = 0;
        while (i < limit && chunk[i] == after[prefix + i]) {
            ++i;
        }
        prefix += i;
        if (i < limit) {
            break;
        }
    }
    qsizetype suffix = 0;
    for (TextChunkIterator chunks(before, to, TextChunkIterator::Backward);
         !chunks.atEnd() && suffix < shorter - prefix; chunks.next()) {
        const QStringView chunk = chunks.chunk();
        const qsizetype limit = std::min(chunk.size(), shorter - prefix - suffix);
        qsizetype i = 0;
        while (i < limit && chunk[chunk.size() - 1 - i] == after[after.size() - 1 - suffix - i]) {
            ++i;
        }
        suffix += i;
        if (i < limit) {
            break;
        }
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

void TextMirror::setText(QStringView text)
{
    _source.setSnapshot(TextSnapshot(TextTree::fromText(text), snapshot().revision() + 1));
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
    QString inserted;
    if (location == 0 && reallyRemoved == oldLength && oldLength > 0) {
        // Qt reports some edits as larger than they are (a paste at the very start of the
        // text replaces the whole old text by itself plus the paste).
        inserted = plainText(_document->toRawText());
    } else if (reallyAdded > 0) {
        QTextCursor cursor(_document);
        cursor.setPosition(int(location));
        cursor.setPosition(int(location + reallyAdded), QTextCursor::KeepAnchor);
        inserted = plainText(cursor.selectedText());
    }
    // The text both sides share at either end did not change: the edit told is only what
    // lies between.
    const auto [prefix, suffix] =
        commonEnds(snapshot(), location, location + reallyRemoved, inserted);
    const qsizetype removedMiddle = reallyRemoved - prefix - suffix;
    const qsizetype addedMiddle = inserted.size() - prefix - suffix;
    if (removedMiddle > 0 || addedMiddle > 0) {
        _source.setSnapshot(
            TextSnapshot(TextTree::replace(snapshot().root(), location + prefix, removedMiddle,
                                           QStringView(inserted).sliced(prefix, addedMiddle)),
                         snapshot().revision() + 1));
    }
    Q_EMIT textDidChange(location + prefix, removedMiddle, reallyAdded - prefix - suffix);
}
