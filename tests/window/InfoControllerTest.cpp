#include "window/InfoController.h"

#include "TestSupport.h"
#include "document/Document.h"

#include <QDateTime>
#include <QFile>
#include <QLabel>

#include <gtest/gtest.h>

TEST(InfoController, FieldsOfASavedDocumentAndOfOneWhoseFileHasGone)
{
    // A file modified at 09:05 on 3 March 2013, without an extension.
    const QString path = TestSupport::makeTempDir() + QStringLiteral("/Makefile");
    TestSupport::writeFile(path, "all:\r\n\techo\r\n");
    {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::ReadWrite));
        ASSERT_TRUE(file.setFileTime(QDateTime(QDate(2013, 3, 3), QTime(9, 5)),
                                     QFileDevice::FileModificationTime));
    }
    TestDocument saved;
    ASSERT_TRUE(saved.readFromURL(path, QString()));
    saved.setFileURL(path);
    InfoController pane;
    pane.updateInformationOfDocument(&saved, QStringLiteral("Perl"));
    EXPECT_EQ(pane.modificationField()->text(), "2013-03-03 09:05");
    EXPECT_EQ(pane.fileSizeField()->text(), "13");
    EXPECT_EQ(pane.lineBreakField()->text(), "Windows(CRLF)");
    EXPECT_EQ(pane.syntaxField()->text(), "Perl");

    QFile::remove(path);
    pane.updateInformationOfDocument(&saved, QString());
    EXPECT_EQ(pane.fileSizeField()->text(), "---");
}
