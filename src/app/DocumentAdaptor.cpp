#include "app/DocumentAdaptor.h"

#include "app/ScriptingDocument.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusError>
#include <QDBusMetaType>
#include <QDBusVariant>
#include <QMetaClassInfo>

namespace {

const QString kProperties = QStringLiteral("org.freedesktop.DBus.Properties");
const QStringList kReadOnly = {QStringLiteral("selection"), QStringLiteral("textEncoding"),
                               QStringLiteral("filePath")};
const QStringList kWritable = {QStringLiteral("contents"), QStringLiteral("textRange")};

/// The D-Bus signature of a value as it came out of a message.
QString signatureOf(const QVariant& value)
{
    if (value.metaType() == QMetaType::fromType<QDBusArgument>()) {
        return value.value<QDBusArgument>().currentSignature();
    }
    const char* signature = QDBusMetaType::typeToSignature(value.metaType());
    return signature ? QString::fromLatin1(signature) : QStringLiteral("?");
}

} // namespace

DocumentAdaptor::DocumentAdaptor(ScriptingDocument* document, const QString& path)
    : QDBusVirtualObject(document)
    , _document(document)
    , _path(path)
{}

QString DocumentAdaptor::introspect(const QString& path) const
{
    Q_UNUSED(path);
    const QMetaObject& meta = staticMetaObject;
    return QString::fromUtf8(meta.classInfo(meta.indexOfClassInfo("D-Bus Introspection")).value());
}

bool DocumentAdaptor::handleMessage(const QDBusMessage& message, const QDBusConnection& connection)
{
    const QDBusMessage reply = answer(message);
    if (reply.type() == QDBusMessage::InvalidMessage) {
        // Introspection and the peer interface are Qt's.
        return false;
    }
    connection.send(reply);
    return true;
}

QDBusMessage DocumentAdaptor::answer(const QDBusMessage& message) const
{
    const QString interface = message.interface();
    const QString member = message.member();
    if (interface == QLatin1String(Interface)) {
        return message.createErrorReply(
            QDBusError::UnknownMethod,
            QStringLiteral("%1 has no method %2; its values are properties.")
                .arg(interface, member));
    }
    const bool properties =
        interface == kProperties ||
        (interface.isEmpty() && (member == u"Get" || member == u"GetAll" || member == u"Set"));
    if (!properties) {
        return QDBusMessage();
    }
    const QList<QVariant> arguments = message.arguments();
    const QString signature = message.signature();
    const QString target = arguments.value(0).toString();
    if (member == u"GetAll" && signature == u"s") {
        if (target.isEmpty() || target == QLatin1String(Interface)) {
            return getAll(message);
        }
        if (target.startsWith(QStringLiteral("org.freedesktop.DBus."))) {
            // The standard interfaces have no properties.
            return message.createReply(QVariant::fromValue(QVariantMap()));
        }
    } else if ((member == u"Get" && signature == u"ss") ||
               (member == u"Set" && signature == u"ssv")) {
        if (target.isEmpty() || target == QLatin1String(Interface)) {
            const QString name = arguments.value(1).toString();
            return member == u"Get"
                       ? get(message, name)
                       : set(message, name, arguments.value(2).value<QDBusVariant>().variant());
        }
    } else if (member == u"Get" || member == u"GetAll" || member == u"Set") {
        static const QHash<QString, QString> expected = {
            {QStringLiteral("Get"), QStringLiteral("ss")},
            {QStringLiteral("GetAll"), QStringLiteral("s")},
            {QStringLiteral("Set"), QStringLiteral("ssv")}};
        return message.createErrorReply(QDBusError::InvalidArgs,
                                        QStringLiteral("%1 takes arguments of type %2, not %3.")
                                            .arg(member, expected.value(member), signature));
    } else {
        return message.createErrorReply(
            QDBusError::UnknownMethod,
            QStringLiteral("%1 has no method %2.").arg(kProperties, member));
    }
    return message.createErrorReply(QDBusError::UnknownInterface,
                                    QStringLiteral("%1 has no interface %2.").arg(_path, target));
}

QDBusMessage DocumentAdaptor::get(const QDBusMessage& message, const QString& name) const
{
    QVariant value;
    if (name == u"contents" || name == u"selection") {
        const QString text = name == u"contents" ? _document->contents() : _document->selection();
        // A D-Bus string ends at its first NUL: rather no answer than a text cut short.
        if (const qsizetype nul = text.indexOf(QChar(0)); nul >= 0) {
            return message.createErrorReply(
                QDBusError::NotSupported,
                QStringLiteral("The %1 holds a NUL character (at %2), which a D-Bus string "
                               "cannot carry.")
                    .arg(name == u"contents" ? QStringLiteral("text") : name)
                    .arg(nul));
        }
        value = text;
    } else if (name == u"textRange") {
        const auto range = _document->textRange();
        value = QVariant::fromValue(range ? QList<qlonglong>(range->begin(), range->end())
                                          : QList<qlonglong>());
    } else if (name == u"textEncoding") {
        value = _document->textEncoding().value_or(QString());
    } else if (name == u"filePath") {
        value = _document->filePath().value_or(QString());
    } else {
        return message.createErrorReply(
            QDBusError::UnknownProperty,
            QStringLiteral("%1 has no property %2.").arg(QLatin1String(Interface), name));
    }
    return message.createReply(QVariant::fromValue(QDBusVariant(value)));
}

QDBusMessage DocumentAdaptor::getAll(const QDBusMessage& message) const
{
    QVariantMap values;
    for (const QString& name : kWritable + kReadOnly) {
        const QDBusMessage reply = get(message, name);
        if (reply.type() == QDBusMessage::ErrorMessage) {
            return reply;
        }
        values.insert(name, reply.arguments().value(0).value<QDBusVariant>().variant());
    }
    return message.createReply(QVariant::fromValue(values));
}

QDBusMessage DocumentAdaptor::set(const QDBusMessage& message, const QString& name,
                                  const QVariant& value) const
{
    if (kReadOnly.contains(name)) {
        return message.createErrorReply(QDBusError::PropertyReadOnly,
                                        QStringLiteral("%1 is read-only.").arg(name));
    }
    if (!kWritable.contains(name)) {
        return message.createErrorReply(
            QDBusError::UnknownProperty,
            QStringLiteral("%1 has no property %2.").arg(QLatin1String(Interface), name));
    }
    const QString signature = signatureOf(value);
    std::optional<ScriptingDocument::Refusal> refusal;
    if (name == u"contents") {
        if (signature != u"s") {
            return message.createErrorReply(
                QDBusError::InvalidArgs,
                QStringLiteral("contents takes a string (s), not %1.").arg(signature));
        }
        refusal = _document->setContents(value.toString());
    } else {
        QList<qint64> range;
        if (signature == u"ax") {
            const auto numbers = qdbus_cast<QList<qlonglong>>(value.value<QDBusArgument>());
            range = QList<qint64>(numbers.begin(), numbers.end());
        } else if (signature == u"ai") {
            const auto numbers = qdbus_cast<QList<int>>(value.value<QDBusArgument>());
            range = QList<qint64>(numbers.begin(), numbers.end());
        } else {
            return message.createErrorReply(
                QDBusError::InvalidArgs,
                QStringLiteral("textRange takes an array of two integers (ax), not %1.")
                    .arg(signature));
        }
        refusal = _document->setTextRange(range);
    }
    if (!refusal) {
        return message.createReply();
    }
    if (refusal->kind == ScriptingDocument::Refusal::NotEditable) {
        return message.createErrorReply(QLatin1String(NotEditableError), refusal->message);
    }
    return message.createErrorReply(QDBusError::InvalidArgs, refusal->message);
}
