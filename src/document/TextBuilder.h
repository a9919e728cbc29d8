#pragma once

#include "document/TextSnapshot.h"

#include <QString>
#include <QStringView>

#include <vector>

/// Builds a text from the front to the back in time linear in its length: the text goes
/// into chunks as it comes, and the tree over them is made once, bottom-up. The loader's
/// way of filling a store.
class TextBuilder
{
public:
    /// Appends a copy of `text`.
    void append(QStringView text);
    /// Appends a string, taken as a chunk as it is when it has a chunk's size (no copy).
    void append(QString&& text);
    qsizetype length() const { return _length; }

    /// The text so far, sharing its chunks; the building goes on.
    TextSnapshot snapshot() const;
    /// The whole text; the builder starts again empty.
    TextSnapshot finish();

private:
    void emitPending();

    std::vector<TextTree::NodePtr> _leaves;
    QString _pending;
    qsizetype _length = 0;
};
