#pragma once

#include <QObject>
#include <QVariantList>

/// What in-process scripts see as `application`: the open documents, oldest first, the
/// front document and a way to open an address in the default application.
class ScriptingApplication : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QVariantList documents READ documents)
    Q_PROPERTY(QObject* frontDocument READ frontDocument)
    Q_PROPERTY(int count READ count)

public:
    explicit ScriptingApplication(QObject* parent = nullptr);

    /// The scripting objects of the open documents (ScriptingDocument), oldest first.
    QVariantList documents() const;
    /// The scripting object of the document of the active window (or the newest); null
    /// when no document is open.
    QObject* frontDocument() const;
    /// The number of open documents.
    int count() const;

    /// Opens `url` with the desktop's default application.
    Q_INVOKABLE bool openUrl(const QString& url) const;
};
