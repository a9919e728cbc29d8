// The scripting side of the real editor: what other programs may not do to its documents over
// D-Bus, and the script library of a first run that is killed.
#include "DBusTestSupport.h"
#include "scripts/ScriptManager.h"

#include <QDBusError>
#include <QDBusMetaType>
#include <QFileInfo>
#include <QSettings>

#include <gtest/gtest.h>

#include <limits>

using namespace DBusTestSupport;

namespace {

QVariant get(const QString& path, const QString& name)
{
    return documentProperty(path, name);
}

QDBusMessage set(const QString& path, const QString& name, const QVariant& value)
{
    return setDocumentProperty(path, name, value);
}

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
    ASSERT_TRUE(editor.start({text, nul, large}));
    const QString largePath = documentAt(2);
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
        {"a range past the end",
         set(textPath, "textRange", QVariant::fromValue(QList<qlonglong>{5, most})),
         QDBusError::errorString(QDBusError::InvalidArgs), "does not lie inside the text"},
        {"three numbers",
         set(textPath, "textRange", QVariant::fromValue(QList<qlonglong>{1, 2, 3})),
         QDBusError::errorString(QDBusError::InvalidArgs), "two numbers"},
        {"contents as a number", set(textPath, "contents", 5),
         QDBusError::errorString(QDBusError::InvalidArgs), "takes a string"},
        {"a read-only property", set(textPath, "selection", QStringLiteral("x")),
         QDBusError::errorString(QDBusError::PropertyReadOnly), "read-only"},
        {"a text with NUL", call(nulPath, kProperties, "Get", {kDocument, "contents"}),
         QDBusError::errorString(QDBusError::NotSupported), "NUL"},
        {"all values with NUL", call(nulPath, kProperties, "GetAll", {kDocument}),
         QDBusError::errorString(QDBusError::NotSupported), "NUL"},
        {"document -1", call(kApplicationPath, kApplication, "document", {-1}),
         QDBusError::errorString(QDBusError::InvalidArgs), "no document at index -1"},
        {"document 3", call(kApplicationPath, kApplication, "document", {3}),
         QDBusError::errorString(QDBusError::InvalidArgs), "from 0 to 2"},
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
    EXPECT_EQ(qdbus_cast<QList<qlonglong>>(get(textPath, "textRange")), QList<qlonglong>({1, 3}));
    EXPECT_EQ(get(textPath, "textEncoding").toString(), "UTF-8");
    // The description other programs read.
    EXPECT_TRUE(call(textPath, QStringLiteral("org.freedesktop.DBus.Introspectable"),
                     QStringLiteral("Introspect"))
                    .arguments()
                    .value(0)
                    .toString()
                    .contains("<property name=\"selection\" type=\"s\" access=\"read\"/>"));
    EXPECT_EQ(get(nulPath, "selection").toString(), "");

    // The same calls with what the document can take go through.
    EXPECT_EQ(set(textPath, "contents", QStringLiteral("Y")).type(), QDBusMessage::ReplyMessage);
    EXPECT_EQ(get(textPath, "contents").toString(), "xYx\n");
    EXPECT_EQ(set(textPath, "textRange", QVariant::fromValue(QList<qlonglong>{4, 0})).type(),
              QDBusMessage::ReplyMessage);

    // The large file is the file as it is on disk, and it takes edits.
    ASSERT_EQ(set(largePath, "textRange", QVariant::fromValue(QList<qlonglong>{0, 0})).type(),
              QDBusMessage::ReplyMessage);
    EXPECT_EQ(get(largePath, "contents").toString().toUtf8(), bytes);
    EXPECT_EQ(set(largePath, "contents", QStringLiteral("typed ")).type(),
              QDBusMessage::ReplyMessage);
    EXPECT_TRUE(get(largePath, "contents").toString().startsWith("typed line 0 of"));
    EXPECT_TRUE(editor.kill());
}

TEST(ScriptLibrary, AFirstRunKilledLeavesItsLibraryBehind)
{
    ASSERT_TRUE(bus().isConnected()) << "no session bus";
    Editor editor;
    ASSERT_TRUE(editor.start({}));
    ASSERT_TRUE(editor.kill());

    QSettings settings(editor.settingsFile(), QSettings::IniFormat);
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
