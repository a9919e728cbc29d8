#include "app/ScriptingApplication.h"

#include "app/DocumentController.h"
#include "app/ScriptingDocument.h"

#include <QDesktopServices>
#include <QUrl>

ScriptingApplication::ScriptingApplication(QObject* parent)
    : QObject(parent)
{}

QVariantList ScriptingApplication::documents() const
{
    QVariantList list;
    for (Document* document : DocumentController::sharedDocumentController().documents()) {
        list.append(QVariant::fromValue<QObject*>(ScriptingDocument::of(document)));
    }
    return list;
}

QObject* ScriptingApplication::frontDocument() const
{
    return ScriptingDocument::of(DocumentController::sharedDocumentController().currentDocument());
}

int ScriptingApplication::count() const
{
    return int(DocumentController::sharedDocumentController().documents().size());
}

bool ScriptingApplication::openUrl(const QString& url) const
{
    return QDesktopServices::openUrl(QUrl(url));
}
