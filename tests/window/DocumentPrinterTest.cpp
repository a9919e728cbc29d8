// What a printed document looks like on paper, through its PDF export.
#include "window/DocumentPrinter.h"

#include "TestSupport.h"
#include "document/Document.h"

#include <QDir>
#include <QRegularExpression>

#include <gtest/gtest.h>

TEST(DocumentPrinter, PdfExportReplacesAnOlderFileOnlyWhenCompleteAndKeepsTheTextSize)
{
    const QString dir = TestSupport::makeTempDir();
    const QString file = TestSupport::writeFile(dir + "/notes.txt", "first\r\nsecond\r\n");
    TestDocument document;
    ASSERT_TRUE(document.readFromURL(file, QString()));

    const QString pdf = TestSupport::writeFile(dir + "/notes.pdf", "old");
    QString error;
    ASSERT_TRUE(DocumentPrinter::exportAsPDFTo(document, pdf, &error)) << error.toStdString();
    EXPECT_TRUE(TestSupport::readFile(pdf).startsWith("%PDF"));
    EXPECT_FALSE(DocumentPrinter::exportAsPDFTo(document, dir + "/missing/notes.pdf", &error));
    EXPECT_TRUE(error.contains("notes.pdf"));
    EXPECT_EQ(QDir(dir).entryList(QDir::Files | QDir::Hidden).size(), 2);

    // A font sized in pixels, as the window's, prints as many points: 200 lines make five pages.
    TestDocument lines;
    lines.setLoadedText(QStringLiteral("line\n").repeated(200));
    QFont font;
    font.setPixelSize(12);
    ASSERT_TRUE(DocumentPrinter::exportAsPDFTo(lines, pdf, &error, font));
    const QString written = QString::fromLatin1(TestSupport::readFile(pdf));
    EXPECT_NEAR(written.count(QRegularExpression(QStringLiteral("/Type\\s*/Page\\b"))), 5, 1);
}
