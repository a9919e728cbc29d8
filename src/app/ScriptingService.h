#pragma once

#include <QDBusContext>
#include <QDBusObjectPath>
#include <QObject>
#include <QString>

class Document;

/// The scripting interface for other programs: a D-Bus service on the session bus named
/// "org.tessaran.Tessaran". The application object lives at "/org/tessaran/Tessaran"
/// (interface "org.tessaran.Tessaran.Application": the number of documents, documents by
/// index, the front document); each document at "/org/tessaran/Tessaran/Document/<n>"
/// (interface "org.tessaran.Tessaran.Document": contents, selection, textRange,
/// textEncoding, filePath). The calls of the application's interface are answered in the
/// service's context, so that a call it refuses gets an error reply.
class ScriptingService : public QObject, public QDBusContext
{
    Q_OBJECT

public:
    static constexpr const char* ServiceName = "org.tessaran.Tessaran";
    static constexpr const char* ApplicationPath = "/org/tessaran/Tessaran";

    static ScriptingService& sharedScriptingService();

    explicit ScriptingService(QObject* parent = nullptr);

    /// Registers the objects and, when no other instance holds it, the service name.
    /// False when there is no session bus. A second instance keeps its objects under its
    /// own unique bus name and leaves the first one's name alone.
    bool registerOnSessionBus();
    bool isRegistered() const { return _registered; }
    bool ownsServiceName() const { return _ownsName; }

    /// The object path of a document, registering it on first request.
    QDBusObjectPath pathOf(Document* document);

    /// The description of both interfaces, as D-Bus introspection XML.
    static QString introspectionXml();

private:
    bool _registered = false;
    bool _ownsName = false;
    quint64 _nextDocumentNumber = 1;
};
