// What a printed document looks like on paper, through its PDF export.
#include "TestSupport.h"
#include "document/Document.h"
#include "window/DocumentPrinter.h"

#include <QFont>
#include <QRegularExpression>
#include <QTextDocument>

#include <gtest/gtest.h>

namespace {

TEST(Printing, TheTextHasTheSizeOfItsFontInPoints)
{
    TestDocument document;
    QString text;
    for (int line = 1; line <= 200; ++line) {
        text += QStringLiteral("line %1\n").arg(line);
    }
    document.setTextStorage(text);
    // As the text view sets it: sizes in points are pixels on screen.
    QFont font(QStringLiteral("Monospace"));
    font.setPixelSize(12);
    document.textStorage()->setDefaultFont(font);

    const QString pdf = TestSupport::makeTempDir() + "/lines.pdf";
    ASSERT_TRUE(DocumentPrinter::exportAsPDFTo(document, pdf));
    const QByteArray bytes = TestSupport::readFile(pdf);
    const qsizetype pages =
        QString::fromLatin1(bytes).count(QRegularExpression(QStringLiteral("/Type\\s*/Page\\b")));
    // 200 lines of 12 points (about 14 with their leading) on the 698 points an A4 page has
    // between its margins: five pages. Text a pixel of the printer high would fit on one.
    EXPECT_GE(pages, 4);
    EXPECT_LE(pages, 6);
}

} // namespace
