// The scripting side of the real editor: what other programs may not do to its documents over
// D-Bus, and the script library of a first run that is killed.
#include "TestSupport.h"
#include "scripts/ScriptManager.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QFileInfo>
#include <QProcess>
#include <QSettings>
#include <QTest>

#include <gtest/gtest.h>

#include <csignal>
#include <limits>

namespace {

const QString kService = QStringLiteral("org.tessaran.Tessaran");
const QString kApplicationPath = QStringLiteral("/org/tessaran/Tessaran");
const QString kApplication = QStringLiteral("org.tessaran.Tessaran.Application");
const QString kDocument = QStringLiteral("org.tessaran.Tessaran.Document");
const QString kProperties = QStringLiteral("org.freedesktop.DBus.Properties");

QDBusConnection bus()
{
    return QDBusConnection::sessionBus();
}

QDBusMessage call(const QString& path, const QString& interface, const QString& method,
                  const QVariantList& arguments = {})
{
    QDBusMessage message = QDBusMessage::createMethodCall(kService, path, interface, method);
    message.setArguments(arguments);
    return bus().call(message, QDBus::Block, 20000);
}

QVariant get(const QString& path, const QString& name)
{
    return call(path, kProperties, QStringLiteral("Get"), {kDocument, name})
        .arguments()
        .value(0)
        .value<QDBusVariant>()
        .variant();
}

QDBusMessage set(const QString& path, const QString& name, const QVariant& value)
{
    return call(path, kProperties, QStringLiteral("Set"),
                {kDocument, name, QVariant::fromValue(QDBusVariant(value))});
}

/// An editor with folders of its own for settings and data, so that its runs are first runs
/// and what it leaves behind stays out of the other tests' way.
struct Editor {
    QString config = TestSupport::makeTempDir();
    QString data = TestSupport::makeTempDir();
    QProcess process;

    void start(const QStringList& arguments)
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("XDG_CONFIG_HOME"), config);
        environment.insert(QStringLiteral("XDG_DATA_HOME"), data);
        process.setProcessEnvironment(environment);
        process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        process.start(QStringLiteral(TESSARAN_EXECUTABLE), arguments);
    }
    static bool listening()
    {
        return QTest::qWaitFor(
            [] { return bus().interface()->isServiceRegistered(kService).value(); }, 30000);
    }
    /// Kills it without a word; true once its name has left the bus.
    bool kill()
    {
        ::kill(pid_t(process.processId()), SIGKILL);
        process.waitForFinished();
        return QTest::qWaitFor(
            [] { return !bus().interface()->isServiceRegistered(kService).value(); }, 30000);
    }
};

} // namespace

TEST(ScriptingInterface, RefusesWhatADocumentCannotTake)
{
    ASSERT_TRUE(bus().isConnected()) << "no session bus";
    qDBusRegisterMetaType<QList<qlonglong>>();
    const QString dir = TestSupport::makeTempDir();
    const QString text = TestSupport::writeFile(dir + "/text.txt", "xabcx\n");
    // An odd number of bytes: this is not UTF-16.
    const QString nul = TestSupport::writeFile(dir + "/nul.txt", QByteArray("one\0two\n\n", 9));
    QByteArray bytes;
    for (int line = 0; bytes.size() < 16'000'000; ++line) {
        bytes += "line " + QByteArray::number(line) + " of a file that takes a while to load\n";
    }
    const QString large = TestSupport::writeFile(dir + "/large.txt", bytes);

    Editor editor;
    editor.start({text, nul, large});
    ASSERT_TRUE(Editor::listening());
    const auto documentAt = [](int index) {
        return call(kApplicationPath, kApplication, QStringLiteral("document"), {index})
            .arguments()
            .value(0)
            .value<QDBusObjectPath>()
            .path();
    };
    // First, while the large file is still going in.
    const QString loading = documentAt(2);
    const QDBusMessage early = set(loading, QStringLiteral("contents"), QStringLiteral("typed"));
    const QString textPath = documentAt(0);
    const QString nulPath = documentAt(1);
    ASSERT_FALSE(textPath.isEmpty());
    ASSERT_EQ(
        set(textPath, QStringLiteral("textRange"), QVariant::fromValue(QList<qlonglong>{1, 3}))
            .type(),
        QDBusMessage::ReplyMessage);

    const qlonglong most = std::numeric_limits<qlonglong>::max();
    const struct Row {
        const char* what;
        QDBusMessage reply;
        QString error;
        const char* says;
    } rows[] = {
        {"an edit while loading", early, "org.tessaran.Tessaran.Error.NotEditable",
         "still loading"},
        {"a range past the end",
         set(textPath, "textRange", QVariant::fromValue(QList<qlonglong>{5, most})),
         QDBusError::errorString(QDBusError::InvalidArgs), "does not lie inside the text"},
        {"a range before the start",
         set(textPath, "textRange", QVariant::fromValue(QList<qlonglong>{-1, 2})),
         QDBusError::errorString(QDBusError::InvalidArgs), "does not lie inside the text"},
        {"three numbers",
         set(textPath, "textRange", QVariant::fromValue(QList<qlonglong>{1, 2, 3})),
         QDBusError::errorString(QDBusError::InvalidArgs), "two numbers"},
        {"a range as text", set(textPath, "textRange", QStringLiteral("1 2")),
         QDBusError::errorString(QDBusError::InvalidArgs), "not s"},
        {"contents as a number", set(textPath, "contents", 5),
         QDBusError::errorString(QDBusError::InvalidArgs), "takes a string"},
        {"a read-only property", set(textPath, "selection", QStringLiteral("x")),
         QDBusError::errorString(QDBusError::PropertyReadOnly), "read-only"},
        {"no such property", set(textPath, "colour", QStringLiteral("red")),
         QDBusError::errorString(QDBusError::UnknownProperty), "colour"},
        {"Get with one argument", call(textPath, kProperties, "Get", {kDocument}),
         QDBusError::errorString(QDBusError::InvalidArgs), "ss"},
        {"a text with NUL", call(nulPath, kProperties, "Get", {kDocument, "contents"}),
         QDBusError::errorString(QDBusError::NotSupported), "NUL"},
        {"all values with NUL", call(nulPath, kProperties, "GetAll", {kDocument}),
         QDBusError::errorString(QDBusError::NotSupported), "NUL"},
        {"document -1", call(kApplicationPath, kApplication, "document", {-1}),
         QDBusError::errorString(QDBusError::InvalidArgs), "no document at index -1"},
        {"document 3", call(kApplicationPath, kApplication, "document", {3}),
         QDBusError::errorString(QDBusError::InvalidArgs), "from 0 to 2"},
        {"document by name", call(kApplicationPath, kApplication, "document", {"text.txt"}),
         QDBusError::errorString(QDBusError::UnknownMethod), "document"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(row.reply.type(), QDBusMessage::ErrorMessage);
        EXPECT_EQ(row.reply.errorName(), row.error);
        EXPECT_TRUE(row.reply.errorMessage().contains(QString::fromUtf8(row.says)))
            << row.reply.errorMessage().toStdString();
    }
    // None of it changed anything.
    EXPECT_EQ(get(textPath, "contents").toString(), "xabcx\n");
    EXPECT_EQ(get(textPath, "selection").toString(), "abc");
    EXPECT_EQ(get(nulPath, "selection").toString(), "");

    // The same calls with what the document can take go through.
    EXPECT_EQ(set(textPath, "contents", QStringLiteral("Y")).type(), QDBusMessage::ReplyMessage);
    EXPECT_EQ(get(textPath, "contents").toString(), "xYx\n");
    EXPECT_EQ(set(textPath, "textRange", QVariant::fromValue(QList<qlonglong>{4, 0})).type(),
              QDBusMessage::ReplyMessage);

    // Once the large file is in, it is the file as it is on disk, and it takes edits.
    ASSERT_TRUE(QTest::qWaitFor(
        [&] {
            return set(loading, "textRange", QVariant::fromValue(QList<qlonglong>{0, 0})).type() ==
                   QDBusMessage::ReplyMessage;
        },
        60000));
    EXPECT_EQ(get(loading, "contents").toString().toUtf8(), bytes);
    EXPECT_EQ(set(loading, "contents", QStringLiteral("typed ")).type(),
              QDBusMessage::ReplyMessage);
    EXPECT_TRUE(get(loading, "contents").toString().startsWith("typed line 0 of"));
    EXPECT_TRUE(editor.kill());
}

TEST(ScriptLibrary, AFirstRunKilledLeavesItsLibraryBehind)
{
    ASSERT_TRUE(bus().isConnected()) << "no session bus";
    Editor editor;
    editor.start({});
    ASSERT_TRUE(Editor::listening());
    ASSERT_TRUE(editor.kill());

    QSettings settings(editor.config + "/Tessaran/Tessaran.conf", QSettings::IniFormat);
    const std::optional<ScriptObjectList> library =
        ScriptManager::unarchivedScriptDataSource(settings.value("ScriptAllItems").toByteArray());
    ASSERT_TRUE(library) << "no library in the settings";
    QStringList folders;
    for (const ScriptObjectPtr& folder : *library) {
        folders << folder->title();
        EXPECT_GT(folder->numberOfChildren(), 0) << folder->title().toStdString();
        for (const ScriptObjectPtr& script : folder->children().value_or(ScriptObjectList())) {
            EXPECT_TRUE(QFileInfo::exists(editor.data + "/Tessaran/Script/" + script->path()))
                << script->path().toStdString();
        }
    }
    EXPECT_EQ(folders, QStringList({"Exsample for AppleScript", "Exsample for ShellScript"}));
}
