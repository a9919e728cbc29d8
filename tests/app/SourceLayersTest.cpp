// scripts/check-layers on small source trees: what it lets through and what it refuses, with
// the model library's files as CMakeLists.txt lists them.
#include "TestSupport.h"

#include <QDir>
#include <QProcess>

#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace {

struct CheckRun {
    int status = -1;
    QString output;
};

/// Runs scripts/check-layers (with `options`) on a tree of `files`: path below src/, text.
CheckRun checkLayers(const std::vector<std::pair<QString, QByteArray>>& files,
                const QStringList& options = {})
{
    const QString src = TestSupport::makeTempDir() + QStringLiteral("/src");
    for (const auto& [path, text] : files) {
        QDir().mkpath(QFileInfo(src + u'/' + path).path());
        TestSupport::writeFile(src + u'/' + path, text);
    }
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(QStringLiteral(TESSARAN_SOURCE_DIR "/scripts/check-layers"),
                  options + QStringList{src});
    process.waitForFinished(30000);
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            QString::fromUtf8(process.readAll())};
}

} // namespace

TEST(SourceLayers, ModelFilesReachNeitherWidgetsNorTheFilesAboveTheModel)
{
    struct Case {
        const char* path;
        const char* text;
        const char* refusal; // empty: let through
    };
    const Case cases[] = {
        // A widget header by its module folder: the model's include path finds it.
        {"platform/Beep.cpp", "#include <QtWidgets/QApplication>\n", "QtWidgets"},
        {"syntax/Print.cpp", "#  include <QtPrintSupport/QPrinter>\n", "QtPrintSupport"},
        {"scripts/Runner.h", "#include <QtWidgets/qwidget.h>\n", "QtWidgets"},
        {"search/SearchEngine.cpp", "#include <QtWidgets/QWidget>\n", "QtWidgets"},
        // Above the model, widgets are at home.
        {"search/SearchManager.cpp", "#include <QtWidgets/QScrollBar>\n", ""},
        {"window/Pane.cpp", "#include <QtPrintSupport/QPrinter>\n", ""},
        {"platform/Text.cpp", "#include <QtGui/QTextDocument>\n", ""},
        // A model file that includes a file outside the model, though not of a later layer.
        {"scripts/Runner.cpp", "#include \"editor/TextView.h\"\n", "editor/TextView.h"},
        {"scripts/Finder.cpp", "#include \"search/SearchManager.h\"\n", "search/SearchManager.h"},
        {"scripts/Finder.cpp", "#include \"search/SearchEngine.h\"\n", ""},
        {"search/SearchEngine.cpp", "#include \"platform/Regex.h\"\n", ""},
        // A later layer stays refused, model or not.
        {"document/Doc.cpp", "#include \"syntax/Colors.h\"\n", "a later layer"},
        {"editor/View.cpp", "#include \"window/Window.h\"\n", "a later layer"},
    };
    for (const Case& c : cases) {
        const CheckRun run = checkLayers({{QString::fromUtf8(c.path), c.text}});
        const QString refusal = QString::fromUtf8(c.refusal);
        SCOPED_TRACE(std::string(c.path) + ": " + c.text);
        EXPECT_EQ(run.status, refusal.isEmpty() ? 0 : 1) << run.output.toStdString();
        if (!refusal.isEmpty()) {
            EXPECT_TRUE(run.output.startsWith(QStringLiteral("src/") + QString::fromUtf8(c.path) + ":1: "))
                << run.output.toStdString();
            EXPECT_TRUE(run.output.contains(refusal)) << run.output.toStdString();
        }
    }
}

TEST(SourceLayers, EdgesCountIncludesBetweenFoldersAndMarkTheUpwardOnes)
{
    const CheckRun run = checkLayers(
        {{"platform/A.cpp", "#include \"platform/B.h\"\n#include \"app/App.h\"\n"},
         {"platform/B.h", "#include \"document/Doc.h\"\n"},
         {"document/Doc.cpp", "#include \"platform/A.h\"\n#include \"platform/B.h\"\n"},
         {"app/App.cpp", "#include \"document/Doc.h\"\n#include <QtWidgets/QWidget>\n"}},
        {QStringLiteral("--edges")});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.output, "platform → document: 1 include   ↑ upward\n"
                          "platform → app: 1 include   ↑ upward\n"
                          "document → platform: 2 includes\n"
                          "app → document: 1 include\n"
                          "5 includes between folders, 2 of them upward\n");
}
