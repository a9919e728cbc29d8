#include "editor/TextBoundaries.h"

#include <QTextBoundaryFinder>

#include <algorithm>

namespace {

// How far around a position the boundaries are looked for: a cluster or a word longer than
// this is cut.
constexpr qsizetype kWindow = 4096;
constexpr qsizetype kClusterWindow = 64;

enum class Kind { Word, Blank, Other };

Kind kindOf(QChar c)
{
    if (c.isLetterOrNumber() || c.isMark() || c == u'_' || c.isSurrogate()) {
        return Kind::Word;
    }
    if (c == u'\t' || c.category() == QChar::Separator_Space) {
        return Kind::Blank;
    }
    return Kind::Other;
}

// The part of `position`'s line within kWindow of it, and where that part starts.
struct Window {
    QString text;
    qsizetype start = 0;
    qsizetype at = 0;
};

Window window(const TextSnapshot& text, qsizetype position)
{
    const qsizetype line = text.lineAt(position);
    const qsizetype lineStart = text.lineStart(line);
    const qsizetype lineEnd = lineStart + text.lineLength(line);
    const qsizetype from = std::max(lineStart, position - kWindow);
    const qsizetype to = std::min(lineEnd, position + kWindow);
    return {text.text(Range(from, to - from)), from, position - from};
}

} // namespace

qsizetype TextBoundaries::nextCharacter(const TextSnapshot& text, qsizetype position)
{
    if (position >= text.length()) {
        return text.length();
    }
    const QString piece = text.text(Range(position, kClusterWindow));
    if (piece.startsWith(u'\n')) {
        return position + 1;
    }
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, piece);
    const qsizetype next = finder.toNextBoundary();
    return position + (next > 0 ? next : 1);
}

qsizetype TextBoundaries::previousCharacter(const TextSnapshot& text, qsizetype position)
{
    if (position <= 0) {
        return 0;
    }
    const qsizetype from = std::max<qsizetype>(0, position - kClusterWindow);
    const QString piece = text.text(Range(from, position - from));
    if (piece.endsWith(u'\n')) {
        return position - 1;
    }
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, piece);
    finder.toEnd();
    const qsizetype previous = finder.toPreviousBoundary();
    return from + (previous >= 0 && previous < piece.size() ? previous : piece.size() - 1);
}

qsizetype TextBoundaries::nextWord(const TextSnapshot& text, qsizetype position)
{
    if (position >= text.length()) {
        return text.length();
    }
    if (text.at(position) == u'\n') {
        return position + 1;
    }
    const Window w = window(text, position);
    qsizetype i = w.at;
    const Kind kind = kindOf(w.text[i]);
    if (kind != Kind::Blank) {
        while (i < w.text.size() && kindOf(w.text[i]) == kind) {
            ++i;
        }
    }
    while (i < w.text.size() && kindOf(w.text[i]) == Kind::Blank) {
        ++i;
    }
    return w.start + i;
}

qsizetype TextBoundaries::previousWord(const TextSnapshot& text, qsizetype position)
{
    if (position <= 0) {
        return 0;
    }
    if (text.at(position - 1) == u'\n') {
        return position - 1;
    }
    const Window w = window(text, position);
    qsizetype i = w.at;
    while (i > 0 && kindOf(w.text[i - 1]) == Kind::Blank) {
        --i;
    }
    if (i > 0) {
        const Kind kind = kindOf(w.text[i - 1]);
        while (i > 0 && kindOf(w.text[i - 1]) == kind) {
            --i;
        }
    }
    return w.start + i;
}

Range TextBoundaries::wordRange(const TextSnapshot& text, qsizetype position)
{
    position = std::clamp<qsizetype>(position, 0, text.length());
    const Window w = window(text, position);
    if (w.text.isEmpty()) {
        return {position, 0};
    }
    qsizetype at = std::min(w.at, w.text.size() - 1);
    // At the end of a run (a click past a word's last letter), the run before.
    if (w.at == w.text.size() || (w.at > 0 && kindOf(w.text[w.at]) == Kind::Blank &&
                                  kindOf(w.text[w.at - 1]) != Kind::Blank)) {
        at = std::max<qsizetype>(0, w.at - 1);
    }
    const Kind kind = kindOf(w.text[at]);
    qsizetype from = at;
    qsizetype to = at + 1;
    while (from > 0 && kindOf(w.text[from - 1]) == kind) {
        --from;
    }
    while (to < w.text.size() && kindOf(w.text[to]) == kind) {
        ++to;
    }
    return {w.start + from, to - from};
}

Range TextBoundaries::lineRange(const TextSnapshot& text, qsizetype position)
{
    const qsizetype line = text.lineAt(position);
    const qsizetype start = text.lineStart(line);
    const qsizetype feed = line + 1 < text.lineCount() ? 1 : 0;
    return {start, text.lineLength(line) + feed};
}

qsizetype TextBoundaries::previousCodePoint(const TextSnapshot& text, qsizetype position)
{
    if (position <= 0) {
        return 0;
    }
    const bool pair = position >= 2 && text.at(position - 1).isLowSurrogate() &&
                      text.at(position - 2).isHighSurrogate();
    return position - (pair ? 2 : 1);
}
