#include "scripts/ScriptingDocument.h"

#include "document/Document.h"
#include "document/DocumentController.h"
#include "editor/TextView.h"
#include "platform/StringEncoding.h"
#include "window/DocumentWindow.h"
#include "window/WindowController.h"

#include <QJSValue>
#include <QTextCursor>
#include <QTextDocument>

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
    WindowController* controller =
        DocumentController::sharedDocumentController().windowControllerOf(_document);
    return controller ? controller->textView() : nullptr;
}

QString ScriptingDocument::contents() const
{
    return _document ? _document->string() : QString();
}

void ScriptingDocument::setContents(const QString& text)
{
    TextView* view = textView();
    if (!view) {
        return;
    }
    view->insertTextAtSelection(text);
}

QString ScriptingDocument::selection() const
{
    TextView* view = textView();
    if (!view) {
        return QString();
    }
    // The editor keeps line breaks as LF; the cursor hands them out as U+2029.
    QString text = view->textCursor().selectedText();
    text.replace(QChar::ParagraphSeparator, u'\n');
    return text;
}

std::optional<QList<qint64>> ScriptingDocument::textRange() const
{
    TextView* view = textView();
    if (!view) {
        return std::nullopt;
    }
    const QTextCursor cursor = view->textCursor();
    return QList<qint64>{cursor.selectionStart(), cursor.selectionEnd() - cursor.selectionStart()};
}

void ScriptingDocument::setTextRange(const QList<qint64>& range)
{
    TextView* view = textView();
    if (!view || range.size() != 2) {
        return;
    }
    const qint64 end = view->document()->characterCount() - 1;
    const qint64 location = std::clamp<qint64>(range[0], 0, end);
    const qint64 last = std::clamp<qint64>(location + std::max<qint64>(range[1], 0), 0, end);
    QTextCursor cursor = view->textCursor();
    cursor.setPosition(int(location));
    cursor.setPosition(int(last), QTextCursor::KeepAnchor);
    view->setTextCursor(cursor);
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

void ScriptingDocument::setTextRangeValue(const QVariant& value)
{
    QVariant list = value;
    if (list.metaType() == QMetaType::fromType<QJSValue>()) {
        list = list.value<QJSValue>().toVariant();
    }
    if (list.typeId() != QMetaType::QVariantList) {
        return;
    }
    QList<qint64> range;
    for (const QVariant& item : list.toList()) {
        range.append(qint64(item.toDouble()));
    }
    setTextRange(range);
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
