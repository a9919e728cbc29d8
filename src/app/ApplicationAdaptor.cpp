#include "app/ApplicationAdaptor.h"

#include "app/DocumentController.h"
#include "app/ScriptingService.h"

#include <QDBusError>

ApplicationAdaptor::ApplicationAdaptor(QObject* parent)
    : QDBusAbstractAdaptor(parent)
{}

int ApplicationAdaptor::count() const
{
    return int(DocumentController::sharedDocumentController().documents().size());
}

QDBusObjectPath ApplicationAdaptor::frontDocument() const
{
    Document* document = DocumentController::sharedDocumentController().currentDocument();
    return document ? ScriptingService::sharedScriptingService().pathOf(document)
                    : QDBusObjectPath(QStringLiteral("/"));
}

QDBusObjectPath ApplicationAdaptor::document(int index)
{
    const auto& documents = DocumentController::sharedDocumentController().documents();
    if (index < 0 || size_t(index) >= documents.size()) {
        const QString message =
            documents.empty()
                ? QStringLiteral("There is no document at index %1: no document is open.")
                      .arg(index)
                : QStringLiteral("There is no document at index %1: the indexes go from 0 to %2.")
                      .arg(index)
                      .arg(documents.size() - 1);
        ScriptingService& service = ScriptingService::sharedScriptingService();
        if (service.calledFromDBus()) {
            service.sendErrorReply(QDBusError::InvalidArgs, message);
        }
        return QDBusObjectPath(QStringLiteral("/"));
    }
    return ScriptingService::sharedScriptingService().pathOf(documents[size_t(index)]);
}

QList<QDBusObjectPath> ApplicationAdaptor::documents()
{
    QList<QDBusObjectPath> paths;
    for (Document* document : DocumentController::sharedDocumentController().documents()) {
        paths.append(ScriptingService::sharedScriptingService().pathOf(document));
    }
    return paths;
}
