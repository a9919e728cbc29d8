#include "window/DocumentPrinter.h"

#include "document/Document.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QFont>
#include <QFontDatabase>
#include <QPrinter>
#include <QTemporaryFile>
#include <QTextDocument>

#include <cstdio>

void DocumentPrinter::printOperationWithSettings(Document& document, QPrinter* printer,
                                                 const QFont& textFont)
{
    printer->setPageLayout(document.printInfo());
    // Printing lays a copy out at the page's width, so long lines wrap to fit it. On screen a
    // point is a pixel, and the text's font is sized in pixels; on paper that would be a
    // pixel of the printer. The copy's font is the same number of real points.
    QTextDocument copy;
    copy.setPlainText(document.string());
    QFont font =
        textFont == QFont() ? QFontDatabase::systemFont(QFontDatabase::FixedFont) : textFont;
    if (font.pixelSize() > 0) {
        font.setPointSizeF(font.pixelSize());
    }
    copy.setDefaultFont(font);
    copy.print(printer);
}

bool DocumentPrinter::exportAsPDFTo(Document& document, const QString& path, QString* error,
                                    const QFont& font)
{
    // The PDF is written beside its destination and moved into place only when complete, so a
    // failed export never leaves a truncated file where an older one stood.
    const QFileInfo target(path);
    QTemporaryFile temporary(target.absolutePath() + QStringLiteral("/.") + target.fileName() +
                             QStringLiteral(".XXXXXX"));
    bool written = temporary.open();
    if (written) {
        temporary.close();
        QPrinter printer(QPrinter::HighResolution);
        printer.setOutputFormat(QPrinter::PdfFormat);
        printer.setOutputFileName(temporary.fileName());
        printer.setDocName(document.displayName());
        printOperationWithSettings(document, &printer, font);
        written = printer.printerState() != QPrinter::Error &&
                  QFileInfo(temporary.fileName()).size() > 0 &&
                  std::rename(QFile::encodeName(temporary.fileName()).constData(),
                              QFile::encodeName(target.absoluteFilePath()).constData()) == 0;
    }
    if (written) {
        temporary.setAutoRemove(false);
        QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup |
                                        QFile::ReadOther);
    } else if (error) {
        *error = QCoreApplication::translate("DocumentPrinter",
                                             "The PDF file “%1” could not be written.")
                     .arg(target.fileName());
    }
    return written;
}
