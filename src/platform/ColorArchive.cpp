#include "platform/ColorArchive.h"

#include <QList>

QByteArray ColorArchive::archivedData(const QColor& color)
{
    if (!color.isValid()) {
        return {};
    }
    const QColor rgb = color.toRgb();
    // 17 significant digits read back as the very same double, and so the same colour.
    QByteArray data("srgb");
    for (float component : {rgb.redF(), rgb.greenF(), rgb.blueF(), rgb.alphaF()}) {
        data += ' ';
        data += QByteArray::number(double(component), 'g', 17);
    }
    return data;
}

QColor ColorArchive::unarchive(const QByteArray& data)
{
    const QList<QByteArray> parts = data.trimmed().split(' ');
    if (parts.size() != 5 || parts[0] != "srgb") {
        return {};
    }
    float values[4];
    for (int i = 0; i < 4; ++i) {
        bool ok = false;
        const double v = parts[i + 1].toDouble(&ok);
        if (!ok || v < 0.0 || v > 1.0) {
            return {};
        }
        values[i] = float(v);
    }
    return QColor::fromRgbF(values[0], values[1], values[2], values[3]);
}
