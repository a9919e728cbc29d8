#pragma once

#include <QByteArray>
#include <QColor>

/// How a colour setting is stored: the text "srgb R G B A" (four decimal fractions),
/// written and read by the same pair so that every colour round-trips exactly.
class ColorArchive
{
public:
    static QByteArray archivedData(const QColor& color);
    /// The colour held by `data`; an invalid QColor when the data is not an archive.
    static QColor unarchive(const QByteArray& data);
};
