#pragma once

#include <QDBusAbstractAdaptor>
#include <QDBusObjectPath>
#include <QList>

/// The application on D-Bus: the number of documents, documents by index (0 is the
/// oldest) and the document of the front window.
class ApplicationAdaptor : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.tessaran.Tessaran.Application")
    Q_CLASSINFO("D-Bus Introspection",
                "  <interface name=\"org.tessaran.Tessaran.Application\">\n"
                "    <property name=\"count\" type=\"i\" access=\"read\"/>\n"
                "    <property name=\"frontDocument\" type=\"o\" access=\"read\"/>\n"
                "    <method name=\"document\">\n"
                "      <arg name=\"index\" type=\"i\" direction=\"in\"/>\n"
                "      <arg type=\"o\" direction=\"out\"/>\n"
                "    </method>\n"
                "    <method name=\"documents\">\n"
                "      <arg type=\"ao\" direction=\"out\"/>\n"
                "    </method>\n"
                "  </interface>\n")
    Q_PROPERTY(int count READ count)
    Q_PROPERTY(QDBusObjectPath frontDocument READ frontDocument)

public:
    explicit ApplicationAdaptor(QObject* parent);

    int count() const;
    /// "/" when no document is open.
    QDBusObjectPath frontDocument() const;

public Q_SLOTS:
    /// The document at `index` in opening order; an error reply when there is none.
    QDBusObjectPath document(int index);
    QList<QDBusObjectPath> documents();
};
