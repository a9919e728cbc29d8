// What the alerts of the document window ask, as the user reads them: the question in the
// body, where nothing cuts it off, and the explanation below it.
#include "TestSupport.h"
#include "app/DocumentController.h"
#include "document/Document.h"
#include "window/DocumentWindow.h"
#include "window/WindowController.h"

#include <QTest>
#include <QTextCursor>
#include <QTextDocument>

#include <gtest/gtest.h>

#include <functional>

namespace {

TEST(Alerts, AskTheirQuestionInTheirBody)
{
    DocumentController& controller = DocumentController::sharedDocumentController();
    const QString dir = TestSupport::makeTempDir();
    Document* document = controller.openDocumentWithContentsOfURL(
        TestSupport::writeFile(dir + "/notes.txt", "saved\n"));
    ASSERT_NE(document, nullptr);
    QTextCursor(document->textStorage()).insertText(QString(5000, u'x'));
    WindowController* window = controller.windowControllerOf(document);
    ASSERT_NE(window, nullptr);

    const struct {
        const char* name;
        std::function<void()> action;
        const char* answer;
        QString text;
        QString informativeText;
    } cases[] = {
        {"closing an edited document", [&] { EXPECT_FALSE(controller.closeDocument(document)); },
         "Cancel", QStringLiteral("Do you want to save the changes you made in “notes.txt”?"),
         QStringLiteral("Your changes will be lost if you don’t save them.")},
        {"reverting", [&] { controller.revertDocumentToSaved(document); }, "Cancel",
         QStringLiteral("Do you want to revert to the most recently saved version of "
                        "“notes.txt”?"),
         QStringLiteral("Your current changes will be lost.")},
        {"sharing a long text on the web", [&] { window->shareUsing(2); }, "OK",
         QStringLiteral("The text is too long to share this way."),
         QStringLiteral("The whole text is shared, and this service takes at most 4,096 "
                        "characters. Send the file as an attachment instead.")},
    };
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        QList<TestSupport::Alert> seen;
        TestSupport::answerAlerts({c.answer}, &seen);
        c.action();
        ASSERT_EQ(seen.size(), 1);
        EXPECT_EQ(seen[0].text, c.text);
        EXPECT_EQ(seen[0].informativeText, c.informativeText);
        EXPECT_FALSE(seen[0].title.contains(c.text));
    }
    // Every answer above left the document as it was.
    EXPECT_TRUE(document->string().startsWith(QString(5000, u'x')));
    controller.discardAllDocuments();
}

} // namespace
