#pragma once

#include "document/TextSnapshot.h"
#include "platform/Range.h"

#include <QMimeData>

/// Plain text of a range of a snapshot, put on the clipboard, the primary selection or a drag
/// without being copied out until another program asks for it: selecting all of a 100 MB
/// text costs nothing until it is pasted.
class TextMimeData : public QMimeData
{
    Q_OBJECT

public:
    TextMimeData(const TextSnapshot& text, Range range);

    /// Text from the clipboard or a drop with its line breaks made line feeds, as the text
    /// in memory has them.
    static QString withLineFeeds(QString text);

    QStringList formats() const override;
    bool hasFormat(const QString& mimeType) const override;

    const TextSnapshot& snapshot() const { return _text; }
    Range range() const { return _range; }

protected:
    QVariant retrieveData(const QString& mimeType, QMetaType type) const override;

private:
    TextSnapshot _text;
    Range _range;
};
