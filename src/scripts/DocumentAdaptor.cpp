#include "scripts/DocumentAdaptor.h"

#include "scripts/ScriptingDocument.h"

DocumentAdaptor::DocumentAdaptor(ScriptingDocument* document)
    : QDBusAbstractAdaptor(document)
    , _document(document)
{
    setAutoRelaySignals(false);
}

QString DocumentAdaptor::contents() const
{
    return _document->contents();
}

void DocumentAdaptor::setContents(const QString& text)
{
    _document->setContents(text);
}

QString DocumentAdaptor::selection() const
{
    return _document->selection();
}

QList<qlonglong> DocumentAdaptor::textRange() const
{
    const auto range = _document->textRange();
    return range ? QList<qlonglong>(range->begin(), range->end()) : QList<qlonglong>();
}

void DocumentAdaptor::setTextRange(const QList<qlonglong>& range)
{
    _document->setTextRange(QList<qint64>(range.begin(), range.end()));
}

QString DocumentAdaptor::textEncoding() const
{
    return _document->textEncoding().value_or(QString());
}

QString DocumentAdaptor::filePath() const
{
    return _document->filePath().value_or(QString());
}
