#include "editor/TextMimeData.h"

#include <QStringList>

namespace {

const QString kPlainText = QStringLiteral("text/plain");
const QString kPlainTextUtf8 = QStringLiteral("text/plain;charset=utf-8");

} // namespace

TextMimeData::TextMimeData(const TextSnapshot& text, Range range)
    : _text(text)
    , _range(range)
{}

QStringList TextMimeData::formats() const
{
    return {kPlainText, kPlainTextUtf8};
}

bool TextMimeData::hasFormat(const QString& mimeType) const
{
    return mimeType == kPlainText || mimeType == kPlainTextUtf8;
}

QVariant TextMimeData::retrieveData(const QString& mimeType, QMetaType type) const
{
    if (!hasFormat(mimeType)) {
        return QMimeData::retrieveData(mimeType, type);
    }
    const QString text = _text.text(_range);
    if (type.id() == QMetaType::QByteArray) {
        return text.toUtf8();
    }
    return text;
}

QString TextMimeData::withLineFeeds(QString text)
{
    text.replace(QLatin1String("\r\n"), QLatin1String("\n"));
    text.replace(QLatin1Char('\r'), QLatin1Char('\n'));
    return text;
}
