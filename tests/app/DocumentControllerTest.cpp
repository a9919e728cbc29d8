#include "app/DocumentController.h"

#include "TestSupport.h"
#include "document/Document.h"

#include <gtest/gtest.h>

namespace {

constexpr quint64 kMacRoman = 30;
constexpr quint64 kAutomatic = ~quint64(0);

} // namespace

TEST(DocumentController, AFileAlreadyOpenLeavesTheOpenPanelsEncodingToTheNextFile)
{
    const QString dir = TestSupport::makeTempDir();
    const QString open = TestSupport::writeFile(dir + "/open.txt", "caf\xe9\n");
    const QString next = TestSupport::writeFile(dir + "/next.txt", "caf\xe9\n");
    DocumentController& controller = DocumentController::sharedDocumentController();
    Document* first = controller.openDocumentWithContentsOfURL(open, false);
    ASSERT_NE(first, nullptr);

    // The open panel's choice of two files, the first of them open already.
    controller.setIsOpenPanel(true);
    controller.setOpenPanelEncoding(kMacRoman);
    EXPECT_EQ(controller.openDocumentWithContentsOfURL(open, false), first);
    Document* second = controller.openDocumentWithContentsOfURL(next, false);
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(second->documentEncoding(), kMacRoman);
    EXPECT_EQ(second->string(), QStringLiteral("caf\u00c8\n"));
    EXPECT_FALSE(controller.isOpenPanel());
    controller.setOpenPanelEncoding(kAutomatic);
    controller.discardAllDocuments();
}
