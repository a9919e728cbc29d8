#include "document/TextSnapshot.h"

#include "document/TextChunkIterator.h"
#include "platform/LargeBuffer.h"

TextSnapshot::TextSnapshot()
    : _root(TextTree::empty())
{}

TextSnapshot::TextSnapshot(TextTree::NodePtr root, quint64 revision)
    : _root(root ? std::move(root) : TextTree::empty())
    , _revision(revision)
{}

QChar TextSnapshot::at(qsizetype position) const
{
    if (position < 0 || position >= length()) {
        return {};
    }
    const TextTree::Hit hit = TextTree::leafAt(*_root, position, true);
    return hit.leaf->text[position - hit.start];
}

qsizetype TextSnapshot::lineAt(qsizetype position) const
{
    position = qBound(qsizetype(0), position, length());
    const TextTree::Hit hit = TextTree::leafAt(*_root, position, true);
    // The line feeds before the position in its chunk, counted from the nearer end.
    const TextTree::Leaf& leaf = *hit.leaf;
    const qsizetype offset = position - hit.start;
    if (offset <= leaf.length / 2) {
        return hit.lineFeedsBefore + TextTree::countLineFeeds(leaf.text.constData(), offset);
    }
    return hit.lineFeedsBefore + leaf.lineFeeds -
           TextTree::countLineFeeds(leaf.text.constData() + offset, leaf.length - offset);
}

qsizetype TextSnapshot::columnAt(qsizetype position) const
{
    position = qBound(qsizetype(0), position, length());
    return position - lineStart(lineAt(position));
}

qsizetype TextSnapshot::lineStart(qsizetype line) const
{
    line = qBound(qsizetype(0), line, lineCount() - 1);
    if (line == 0) {
        return 0;
    }
    const TextTree::Hit hit = TextTree::leafWithLineFeed(*_root, line);
    const qsizetype k = line - hit.lineFeedsBefore;
    return hit.start + TextTree::findLineFeed(hit.leaf->text.constData(), hit.leaf->length, k) + 1;
}

qsizetype TextSnapshot::lineLength(qsizetype line) const
{
    line = qBound(qsizetype(0), line, lineCount() - 1);
    const qsizetype start = lineStart(line);
    const qsizetype end = line + 1 < lineCount() ? lineStart(line + 1) - 1 : length();
    return end - start;
}

QString TextSnapshot::line(qsizetype line) const
{
    line = qBound(qsizetype(0), line, lineCount() - 1);
    return text(Range(lineStart(line), lineLength(line)));
}

QString TextSnapshot::text(Range range) const
{
    const qsizetype start = qBound(qsizetype(0), range.location, length());
    // Pinned without adding, so that no range (NSNotFound's included) overflows.
    const qsizetype end = range.length <= 0 || range.location >= length() ? start
                          : range.length >= length() - range.location
                              ? length()
                              : qMax(start, range.location + range.length);
    QString result;
    result.reserve(end - start);
    LargeBuffer::adviseHugePages(result.data(), (end - start) * 2);
    for (TextChunkIterator chunks(*this, start); !chunks.atEnd() && chunks.start() < end;
         chunks.next()) {
        const QStringView piece = chunks.chunk();
        result.append(piece.first(qMin(piece.size(), end - chunks.start())));
    }
    return result;
}

QString TextSnapshot::string() const
{
    return text(Range(0, length()));
}

bool TextSnapshot::checkStructure(QString* why) const
{
    return TextTree::check(_root, why);
}
