#include "app/ScriptingDocument.h"

#include "app/DocumentController.h"
#include "app/JavaScriptRunner.h"
#include "document/Document.h"
#include "editor/TextView.h"
#include "platform/StringEncoding.h"
#include "window/DocumentWindow.h"
#include "window/WindowController.h"

#include <QJSValue>

#include <cmath>
#include <limits>

namespace {

QVariant plainValue(const QVariant& value)
{
    return value.metaType() == QMetaType::fromType<QJSValue>() ? value.value<QJSValue>().toVariant()
                                                               : value;
}

/// A number without a fraction; none for anything else. Numbers beyond 64 bits become the
/// largest ones, which no range check lets through.
std::optional<qint64> wholeNumber(const QVariant& value)
{
    switch (value.typeId()) {
    case QMetaType::Int:
    case QMetaType::LongLong:
    case QMetaType::UInt:
    case QMetaType::ULongLong:
        if (value.typeId() == QMetaType::ULongLong &&
            value.toULongLong() > quint64(std::numeric_limits<qint64>::max())) {
            return std::numeric_limits<qint64>::max();
        }
        return value.toLongLong();
    case QMetaType::Double: {
        const double number = value.toDouble();
        if (!std::isfinite(number) || std::trunc(number) != number) {
            return std::nullopt;
        }
        constexpr double limit = 9.2e18;
        if (std::abs(number) > limit) {
            return number > 0 ? std::numeric_limits<qint64>::max()
                              : std::numeric_limits<qint64>::min();
        }
        return qint64(number);
    }
    default:
        return std::nullopt;
    }
}

void throwRefusal(const ScriptingDocument::Refusal& refusal)
{
    const QJSValue::ErrorType type =
        refusal.kind == ScriptingDocument::Refusal::InvalidValue ? QJSValue::TypeError
        : refusal.kind == ScriptingDocument::Refusal::OutOfRange ? QJSValue::RangeError
                                                                 : QJSValue::GenericError;
    JavaScriptRunner::throwError(type, refusal.message);
}

} // namespace

ScriptingDocument::ScriptingDocument(Document* document)
    : QObject(document)
    , _document(document)
{}

ScriptingDocument* ScriptingDocument::of(Document* document)
{
    if (!document) {
        return nullptr;
    }
    if (auto* existing =
            document->findChild<ScriptingDocument*>(QString(), Qt::FindDirectChildrenOnly)) {
        return existing;
    }
    return new ScriptingDocument(document);
}

TextView* ScriptingDocument::textView() const
{
    // Scripts work on the whole text: the end of a large file still going in goes in first.
    if (_document) {
        _document->finishLoading();
    }
    WindowController* controller =
        DocumentController::sharedDocumentController().windowControllerOf(_document);
    return controller ? controller->textView() : nullptr;
}

QString ScriptingDocument::contents() const
{
    return _document ? _document->string() : QString();
}

std::optional<ScriptingDocument::Refusal> ScriptingDocument::refusalToChange(TextView* view,
                                                                             bool text) const
{
    if (!view) {
        return Refusal{Refusal::NotEditable, tr("The document has no window to change.")};
    }
    const QString name = _document->displayName();
    if (text && view->isReadOnly()) {
        return Refusal{Refusal::NotEditable, tr("“%1” is read-only.").arg(name)};
    }
    return std::nullopt;
}

std::optional<ScriptingDocument::Refusal> ScriptingDocument::setContents(const QString& text)
{
    TextView* view = textView();
    if (auto refusal = refusalToChange(view, true)) {
        return refusal;
    }
    if (const qsizetype nul = text.indexOf(QChar(0)); nul >= 0) {
        return Refusal{
            Refusal::InvalidValue,
            tr("The text holds a NUL character (at %1), which documents do not take.").arg(nul)};
    }
    view->insertTextAtSelection(text);
    return std::nullopt;
}

QString ScriptingDocument::selection() const
{
    TextView* view = textView();
    if (!view) {
        return QString();
    }
    return view->selectedText();
}

std::optional<QList<qint64>> ScriptingDocument::textRange() const
{
    TextView* view = textView();
    if (!view) {
        return std::nullopt;
    }
    const Range selection = view->selectedRange();
    return QList<qint64>{selection.location, selection.length};
}

std::optional<ScriptingDocument::Refusal>
ScriptingDocument::setTextRange(const QList<qint64>& range)
{
    TextView* view = textView();
    if (auto refusal = refusalToChange(view, false)) {
        return refusal;
    }
    if (range.size() != 2) {
        return Refusal{
            Refusal::InvalidValue,
            tr("textRange takes two numbers, a location and a length, not %1.").arg(range.size())};
    }
    const qint64 textLength = _document->length();
    const qint64 location = range[0];
    const qint64 length = range[1];
    // Compared without adding the two: their sum may not fit in 64 bits.
    if (location < 0 || length < 0 || location > textLength || length > textLength - location) {
        return Refusal{Refusal::OutOfRange,
                       tr("The range %1, %2 does not lie inside the text, which has %3 "
                          "characters (UTF-16 code units).")
                           .arg(location)
                           .arg(length)
                           .arg(textLength)};
    }
    view->setSelectedRange({location, length});
    return std::nullopt;
}

std::optional<QString> ScriptingDocument::textEncoding() const
{
    if (!_document) {
        return std::nullopt;
    }
    const quint32 encoding =
        StringEncoding::convertNSStringEncodingToEncoding(_document->documentEncoding());
    if (encoding == StringEncoding::InvalidId) {
        return std::nullopt;
    }
    const QString name = StringEncoding::convertEncodingToIANACharSetName(encoding);
    return name.isNull() ? std::nullopt : std::optional<QString>(name);
}

std::optional<QString> ScriptingDocument::filePath() const
{
    if (!_document || _document->fileURL().isEmpty()) {
        return std::nullopt;
    }
    return _document->fileURL();
}

QVariant ScriptingDocument::textRangeValue() const
{
    const auto range = textRange();
    if (!range) {
        return QVariant::fromValue(nullptr);
    }
    return QVariantList{(*range)[0], (*range)[1]};
}

void ScriptingDocument::setContentsValue(const QVariant& value)
{
    const QVariant text = plainValue(value);
    const std::optional<Refusal> refusal =
        text.typeId() == QMetaType::QString
            ? setContents(text.toString())
            : Refusal{Refusal::InvalidValue, tr("contents takes a string.")};
    if (refusal) {
        throwRefusal(*refusal);
    }
}

void ScriptingDocument::setTextRangeValue(const QVariant& value)
{
    const QVariant list = plainValue(value);
    std::optional<Refusal> refusal;
    QList<qint64> range;
    if (list.typeId() == QMetaType::QVariantList) {
        for (const QVariant& item : list.toList()) {
            if (const std::optional<qint64> number = wholeNumber(item)) {
                range.append(*number);
            } else {
                refusal = Refusal{Refusal::InvalidValue, tr("textRange takes whole numbers.")};
                break;
            }
        }
    } else {
        refusal = Refusal{Refusal::InvalidValue,
                          tr("textRange takes a list of two numbers, a location and a length.")};
    }
    if (!refusal) {
        refusal = setTextRange(range);
    }
    if (refusal) {
        throwRefusal(*refusal);
    }
}

QVariant ScriptingDocument::textEncodingValue() const
{
    const auto name = textEncoding();
    return name ? QVariant(*name) : QVariant::fromValue(nullptr);
}

QVariant ScriptingDocument::filePathValue() const
{
    const auto path = filePath();
    return path ? QVariant(*path) : QVariant::fromValue(nullptr);
}
