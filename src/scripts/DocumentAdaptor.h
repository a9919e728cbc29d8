#pragma once

#include <QDBusAbstractAdaptor>
#include <QList>
#include <QString>

class ScriptingDocument;

/// One document on D-Bus. `contents` written inserts the text at the selection;
/// `textRange` written with exactly two numbers selects that range; a missing value
/// (no window, no encoding name, never saved) reads as an empty string or list.
class DocumentAdaptor : public QDBusAbstractAdaptor
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
    Q_PROPERTY(QString contents READ contents WRITE setContents)
    Q_PROPERTY(QString selection READ selection)
    Q_PROPERTY(QList<qlonglong> textRange READ textRange WRITE setTextRange)
    Q_PROPERTY(QString textEncoding READ textEncoding)
    Q_PROPERTY(QString filePath READ filePath)

public:
    explicit DocumentAdaptor(ScriptingDocument* document);

    QString contents() const;
    void setContents(const QString& text);
    QString selection() const;
    QList<qlonglong> textRange() const;
    void setTextRange(const QList<qlonglong>& range);
    QString textEncoding() const;
    QString filePath() const;

private:
    ScriptingDocument* _document;
};
