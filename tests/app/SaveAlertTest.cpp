// The alert of a save that cannot encode a character offers to save in UTF-8; whichever button
// the user presses, nothing is lost.
#include "TestSupport.h"
#include "app/DocumentController.h"
#include "document/Document.h"

#include <gtest/gtest.h>

namespace {

constexpr quint64 kASCII = 1;
constexpr quint64 kUTF8 = 4;

} // namespace

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
