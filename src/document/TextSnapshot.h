#pragma once

#include "document/TextTree.h"
#include "platform/Range.h"

#include <QChar>
#include <QString>

/// One version of a text store's text: a value that costs O(1) to copy and never changes,
/// whatever is done to the store afterwards. A copy taken on the thread that edits the store
/// may be handed to any other thread and read there while the editing goes on.
///
/// Lines end at LF only (the text in memory holds no other line break); a text ending with
/// LF has an empty last line, and an empty text has one line. Positions and lengths are
/// UTF-16 units. Every query costs O(log n), plus the length of what it returns.
class TextSnapshot
{
public:
    /// The empty text.
    TextSnapshot();
    explicit TextSnapshot(TextTree::NodePtr root, quint64 revision = 0);

    qsizetype length() const { return _root->length; }
    bool isEmpty() const { return _root->length == 0; }
    qsizetype lineCount() const { return _root->lineFeeds + 1; }
    /// The store's revision this version was taken at.
    quint64 revision() const { return _revision; }

    /// The unit at `position`; a null QChar outside the text.
    QChar at(qsizetype position) const;
    /// The line (from 0) holding `position`; positions outside the text are pinned to it.
    qsizetype lineAt(qsizetype position) const;
    /// `position`'s offset from the start of its line.
    qsizetype columnAt(qsizetype position) const;
    /// Where `line` starts; lines outside the text are pinned to the first or last.
    qsizetype lineStart(qsizetype line) const;
    /// The length of `line` without its line feed.
    qsizetype lineLength(qsizetype line) const;
    /// The text of `line` without its line feed.
    QString line(qsizetype line) const;
    /// The text of `range`, pinned to the text.
    QString text(Range range) const;
    /// The whole text in one string: for callers that need one, at the cost of a copy.
    QString string() const;

    /// Whether two snapshots are the same version (they share their tree).
    bool isSameVersion(const TextSnapshot& other) const { return _root == other._root; }
    /// The tree, for the store's own readers (chunk iteration).
    const TextTree::NodePtr& root() const { return _root; }
    /// Whether the tree has the shape the store keeps; `why` says what is wrong otherwise.
    bool checkStructure(QString* why = nullptr) const;

private:
    TextTree::NodePtr _root;
    quint64 _revision = 0;
};
