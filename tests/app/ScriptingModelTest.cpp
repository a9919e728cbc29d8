// The object model of in-process scripts, and the shipped example scripts run as a user
// runs them from the library.
#include "TestSupport.h"
#include "app/JavaScriptRunner.h"
#include "app/ScriptingDocument.h"
#include "scripts/ScriptManager.h"
#include "scripts/ScriptTestSupport.h"

#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

#include <limits>

using namespace ScriptTestSupport;

namespace {

class ScriptingModel : public ::testing::Test
{
protected:
    void TearDown() override { closeAllDocuments(); }
};

/// Runs a shipped example as the library runs it.
void runExample(const QString& fileName)
{
    const QString path = TestSupport::makeTempDir() + u'/' + fileName;
    QFile::copy(QStringLiteral(":/Script/") + fileName, path);
    QSignalSpy stopped(&ScriptManager::sharedScriptManager(), &ScriptManager::processStopped);
    ScriptManager::sharedScriptManager().runRegisterScriptWithPath(path);
    if (fileName.endsWith(".sh")) {
        ASSERT_TRUE(stopped.count() > 0 || stopped.wait(5000));
    }
}

} // namespace

TEST_F(ScriptingModel, DocumentProperties)
{
    Document* document = openDocument(QStringLiteral("xabcx"), 1, 3);
    ScriptingDocument* scripting = ScriptingDocument::of(document);
    EXPECT_EQ(scripting->selection(), "abc");
    EXPECT_EQ(scripting->textRange(), QList<qint64>({1, 3}));
    EXPECT_EQ(scripting->textEncoding(), "UTF-8");

    EXPECT_FALSE(scripting->setTextRange({0, 0}));
    EXPECT_FALSE(scripting->setContents(QStringLiteral("new ")));
    EXPECT_EQ(scripting->contents(), "new xabcx");

    // What the text cannot take is refused and changes nothing.
    using Refusal = ScriptingDocument::Refusal;
    constexpr qint64 most = std::numeric_limits<qint64>::max();
    const struct {
        QList<qint64> range;
        Refusal::Kind kind;
    } ranges[] = {
        {{1, 2, 3}, Refusal::InvalidValue}, {{1}, Refusal::InvalidValue},
        {{5, most}, Refusal::OutOfRange},   {{most, most}, Refusal::OutOfRange},
        {{-1, 0}, Refusal::OutOfRange},     {{0, -1}, Refusal::OutOfRange},
        {{0, 10}, Refusal::OutOfRange},     {{10, 0}, Refusal::OutOfRange},
    };
    for (const auto& item : ranges) {
        const std::optional<Refusal> refusal = scripting->setTextRange(item.range);
        ASSERT_TRUE(refusal) << item.range.value(0) << ", " << item.range.value(1);
        EXPECT_EQ(refusal->kind, item.kind);
        EXPECT_FALSE(refusal->message.isEmpty());
        EXPECT_EQ(scripting->textRange(), QList<qint64>({4, 0}));
    }
    const std::optional<Refusal> nul = scripting->setContents(QStringLiteral("a") + QChar(0));
    ASSERT_TRUE(nul);
    EXPECT_EQ(nul->kind, Refusal::InvalidValue);
    EXPECT_EQ(scripting->contents(), "new xabcx");

    // The end of the text is inside it; everything selected is replaced.
    EXPECT_FALSE(scripting->setTextRange({9, 0}));
    EXPECT_FALSE(scripting->setTextRange({0, 9}));
    EXPECT_FALSE(scripting->setContents(QStringLiteral("all")));
    EXPECT_EQ(scripting->contents(), "all");

    // A document without a window.
    TestDocument alone;
    ScriptingDocument* bare = ScriptingDocument::of(&alone);
    EXPECT_EQ(bare->selection(), "");
    EXPECT_FALSE(bare->textRange());
    EXPECT_EQ(bare->setContents(QStringLiteral("x"))->kind, Refusal::NotEditable);
    EXPECT_EQ(bare->contents(), "");
}

TEST_F(ScriptingModel, JavaScriptSeesTheApplication)
{
    Document* first = openDocument(QStringLiteral("one"));
    Document* second = openDocument(QStringLiteral("xabcx"), 1, 3);
    const QString script = QStringLiteral(
        "const doc = application.frontDocument;\n"
        "doc.contents = application.documents.length + ':' + doc.selection + ':' +\n"
        "    doc.textRange.join(',') + ':' + doc.textEncoding + ':' + doc.filePath;\n"
        "doc.textRange = [0, 1];\n");
    EXPECT_EQ(JavaScriptRunner::run(script).outcome, JavaScriptRunner::Outcome::Ran);
    EXPECT_EQ(second->string(), "x2:abc:1,3:UTF-8:nullx");
    EXPECT_EQ(ScriptingDocument::of(second)->selection(), "x");
    EXPECT_EQ(first->string(), "one");
}

TEST_F(ScriptingModel, ShippedExamplesWork)
{
    AlertRecorder recorder;
    Document* document = openDocument(QStringLiteral("xabcx"), 1, 3);
    runExample(QStringLiteral("Put a phrase in bracket.js"));
    EXPECT_EQ(document->string(), "x[abc]x");
    EXPECT_EQ(ScriptingDocument::of(document)->selection(), "[abc]");

    runExample(QStringLiteral("Put a phrase in brace.sh"));
    EXPECT_EQ(document->string(), "x{[abc]}x");

    // Untitled: no path to insert.
    ScriptingDocument::of(document)->setTextRange({0, 0});
    runExample(QStringLiteral("Insert to filePath.js"));
    EXPECT_EQ(document->string(), "x{[abc]}x");

    const QString path = TestSupport::makeTempDir() + QStringLiteral("/my file.txt");
    TestSupport::writeFile(path, "saved");
    Document* saved =
        DocumentController::sharedDocumentController().openDocumentWithContentsOfURL(path);
    ASSERT_NE(saved, nullptr);
    [[maybe_unused]] const bool active = QTest::qWaitForWindowActive(
        DocumentController::sharedDocumentController().windowControllerOf(saved)->window(), 2000);
    ScriptingDocument::of(saved)->setTextRange({5, 0});
    runExample(QStringLiteral("Insert to filePath.js"));
    EXPECT_EQ(saved->string(), QStringLiteral("saved") + path);
    EXPECT_TRUE(recorder.alerts.empty());
}
