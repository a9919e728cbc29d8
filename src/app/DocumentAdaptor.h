#pragma once

#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QString>

class ScriptingDocument;

/// One document on D-Bus. `contents` written inserts the text at the selection;
/// `textRange` written with a location and a length inside the text selects that range; a
/// missing value (no window, no encoding name, never saved) reads as an empty string or
/// list. It answers the property calls itself, so that what it refuses (a value of the
/// wrong type, a range outside the text, text that a D-Bus string cannot carry, an edit
/// while the file is still loading) gets an error that says why, and changes nothing.
class DocumentAdaptor : public QDBusVirtualObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.tessaran.Tessaran.Document")
    Q_CLASSINFO("D-Bus Introspection",
                "  <interface name=\"org.tessaran.Tessaran.Document\">\n"
                "    <property name=\"contents\" type=\"s\" access=\"readwrite\"/>\n"
                "    <property name=\"selection\" type=\"s\" access=\"read\"/>\n"
                "    <property name=\"textRange\" type=\"ax\" access=\"readwrite\"/>\n"
                "    <property name=\"textEncoding\" type=\"s\" access=\"read\"/>\n"
                "    <property name=\"filePath\" type=\"s\" access=\"read\"/>\n"
                "  </interface>\n")

public:
    static constexpr const char* Interface = "org.tessaran.Tessaran.Document";
    /// The error of a change refused because the document cannot be changed now.
    static constexpr const char* NotEditableError = "org.tessaran.Tessaran.Error.NotEditable";

    DocumentAdaptor(ScriptingDocument* document, const QString& path);
    QString path() const { return _path; }

    QString introspect(const QString& path) const override;
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;
    /// The reply to a call of the properties interface (Get, GetAll, Set); an invalid
    /// message for any other call.
    QDBusMessage answer(const QDBusMessage& message) const;

private:
    QDBusMessage get(const QDBusMessage& message, const QString& name) const;
    QDBusMessage getAll(const QDBusMessage& message) const;
    QDBusMessage set(const QDBusMessage& message, const QString& name, const QVariant& value) const;

    ScriptingDocument* _document;
    QString _path;
};
