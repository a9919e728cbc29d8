// What the alerts of the document window ask, as the user reads them: the question in the
// body, where nothing cuts it off, and the explanation below it.
#include "TestSupport.h"
#include "app/DocumentController.h"
#include "document/Document.h"

#include <QTest>

#include <gtest/gtest.h>

namespace {

constexpr quint64 kASCII = 1;
constexpr quint64 kUTF8 = 4;

TEST(Alerts, AskTheirQuestionInTheirBody)
{
    DocumentController& controller = DocumentController::sharedDocumentController();
    const QString dir = TestSupport::makeTempDir();
    Document* document = controller.openDocumentWithContentsOfURL(
        TestSupport::writeFile(dir + "/notes.txt", "saved\n"));
    ASSERT_NE(document, nullptr);
    document->replaceRanges({{0, 0}}, QStringLiteral("typed"), QStringLiteral("Typing"));

    // The question closing asks, in the body; Cancel keeps the document open and as it was.
    QList<TestSupport::Alert> seen;
    TestSupport::answerAlerts({"Cancel"}, &seen);
    EXPECT_FALSE(controller.closeDocument(document));
    ASSERT_EQ(seen.size(), 1);
    EXPECT_EQ(seen[0].text, "Do you want to save the changes you made in “notes.txt”?");
    EXPECT_EQ(seen[0].informativeText, "Your changes will be lost if you don’t save them.");
    EXPECT_FALSE(seen[0].title.contains(seen[0].text));
    // Reverting asks too, and Cancel keeps the changes.
    TestSupport::answerAlerts({"Cancel"}, &seen);
    controller.revertDocumentToSaved(document);
    EXPECT_EQ(seen.size(), 1);
    EXPECT_EQ(document->string(), "typedsaved\n");
    controller.discardAllDocuments();
}

// The alert of a save that cannot encode a character offers to save in UTF-8; whichever
// button the user presses, nothing is lost.
TEST(SaveAlert, AnUnencodableCharacterOffersUTF8AndLosesNothingEitherWay)
{
    DocumentController& controller = DocumentController::sharedDocumentController();
    controller.discardAllDocuments();
    const QString dir = TestSupport::makeTempDir();
    const QString path = TestSupport::writeFile(dir + "/ascii.txt", "plain ascii\n");
    Document* document = controller.openDocumentWithContentsOfURL(path);
    ASSERT_NE(document, nullptr);
    document->setDocumentEncoding(kASCII);
    document->setTextStorage(QStringLiteral("caf\u00e9\n"));
    const QString message = "The document “ascii.txt” could not be saved in the encoding “Western "
                            "(ASCII)”. Some characters cannot be written in this encoding.";

    QList<TestSupport::Alert> said;
    TestSupport::answerAlerts({"Cancel"}, &said);
    EXPECT_FALSE(controller.saveDocument(document));
    ASSERT_EQ(said.size(), 1);
    EXPECT_EQ(said[0].text.toStdString(), message.toStdString());
    EXPECT_EQ(said[0].informativeText, "Use Save As… to choose another encoding or place.");
    EXPECT_TRUE(said[0].buttons.contains("Save as UTF-8"))
        << said[0].buttons.join(" | ").toStdString();
    EXPECT_EQ(TestSupport::readFile(path), "plain ascii\n");
    EXPECT_EQ(document->string(), QStringLiteral("caf\u00e9\n"));
    EXPECT_EQ(document->documentEncoding(), kASCII);
    EXPECT_TRUE(document->isDocumentEdited());

    TestSupport::answerAlerts({"Save as UTF-8"}, &said);
    EXPECT_TRUE(controller.saveDocument(document));
    EXPECT_EQ(said.value(0).text.toStdString(), message.toStdString());
    EXPECT_EQ(TestSupport::readFile(path), "caf\xc3\xa9\n");
    EXPECT_EQ(document->string(), QStringLiteral("caf\u00e9\n"));
    EXPECT_EQ(document->documentEncoding(), kUTF8);
    EXPECT_FALSE(document->isDocumentEdited());
    controller.discardAllDocuments();
}

} // namespace
