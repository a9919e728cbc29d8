#include "window/InfoController.h"

#include "document/Document.h"
#include "document/EncodingManager.h"
#include "platform/StringEncoding.h"

#include <QDateTime>
#include <QFileInfo>
#include <QFormLayout>
#include <QLabel>

namespace {

const QString kUnknown = QStringLiteral("---");

QLabel* makeField(QFormLayout* layout, const QString& title)
{
    auto* field = new QLabel(kUnknown);
    field->setTextInteractionFlags(Qt::TextSelectableByMouse);
    field->setWordWrap(true);
    layout->addRow(title, field);
    return field;
}

} // namespace

InfoController::InfoController(QWidget* parent)
    : QWidget(parent)
{
    auto* layout = new QFormLayout(this);
    layout->setLabelAlignment(Qt::AlignRight);
    _ownerAccountField = makeField(layout, tr("Owner:"));
    _groupField = makeField(layout, tr("Group:"));
    _fileSizeField = makeField(layout, tr("Size:"));
    _creationField = makeField(layout, tr("Created:"));
    _modificationField = makeField(layout, tr("Modified:"));
    _textEncodingField = makeField(layout, tr("Encoding:"));
    _lineBreakField = makeField(layout, tr("Line Breaks:"));
    _syntaxField = makeField(layout, tr("Syntax:"));
    _extensionField = makeField(layout, tr("Extension:"));
    _urlField = makeField(layout, tr("Path:"));
}

void InfoController::updateInformationOfDocument(const Document* document, const QString& syntax)
{
    if (!document) {
        return;
    }
    const QString path = document->fileURL();
    const QFileInfo info(path);
    if (!path.isEmpty() && info.exists()) {
        const QString pattern = QStringLiteral("yyyy-MM-dd HH:mm");
        _ownerAccountField->setText(info.owner());
        _groupField->setText(info.group());
        _fileSizeField->setText(QString::number(info.size()));
        const QDateTime created =
            info.birthTime().isValid() ? info.birthTime() : info.metadataChangeTime();
        _creationField->setText(created.toLocalTime().toString(pattern));
        _modificationField->setText(info.lastModified().toLocalTime().toString(pattern));
    } else {
        for (QLabel* field : {_ownerAccountField, _groupField, _fileSizeField, _creationField,
                              _modificationField}) {
            field->setText(kUnknown);
        }
    }
    _textEncodingField->setText(
        StringEncoding::localizedNameOfStringEncoding(document->documentEncoding()));
    _lineBreakField->setText(
        EncodingManager::lineBreaksStatusTitle(document->documentLineBreaks()));
    _syntaxField->setText(syntax.isEmpty() ? kUnknown : syntax);
    if (path.isEmpty()) {
        _extensionField->setText(kUnknown);
        _urlField->setText(kUnknown);
    } else {
        _extensionField->setText(info.suffix());
        _urlField->setText(path);
    }
}
