// What a printed document looks like on paper, through its PDF export.
#include "window/DocumentPrinter.h"

#include "TestWindow.h"
#include "document/Document.h"

#include <QDir>
#include <QRegularExpression>

#include <gtest/gtest.h>

TEST(DocumentPrinter, PdfExportReplacesAnOlderFileOnlyWhenItSucceeds)
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
}

TEST(DocumentPrinter, TheTextHasTheSizeOfItsFontInPoints)
{
    QString text;
    for (int line = 1; line <= 200; ++line) {
        text += QStringLiteral("line %1\n").arg(line);
    }
    // In the font its window shows it in, 12 points by default: sizes in points are pixels on
    // screen.
    TestWindow window(text);

    const QString pdf = TestSupport::makeTempDir() + "/lines.pdf";
    ASSERT_TRUE(DocumentPrinter::exportAsPDFTo(*window.document, pdf));
    const QByteArray bytes = TestSupport::readFile(pdf);
    const qsizetype pages =
        QString::fromLatin1(bytes).count(QRegularExpression(QStringLiteral("/Type\\s*/Page\\b")));
    // 200 lines of 12 points (about 14 with their leading) on the 698 points an A4 page has
    // between its margins: five pages. Text a pixel of the printer high would fit on one.
    EXPECT_GE(pages, 4);
    EXPECT_LE(pages, 6);
}
