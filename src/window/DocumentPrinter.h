#pragma once

#include <QFont>
#include <QString>

class Document;
class QPrinter;

/// Prints a document's text, on paper or into a PDF file, with its print settings
/// (Document::printInfo()).
class DocumentPrinter
{
public:
    /// Prints the text on `printer` with the document's print settings, in `font` (the one
    /// its window shows it in; the application's fixed-pitch font when none is given).
    static void printOperationWithSettings(Document& document, QPrinter* printer,
                                           const QFont& font = QFont());
    /// Writes the printed pages as a PDF file; an older file at `path` is replaced only when
    /// the new one is complete.
    static bool exportAsPDFTo(Document& document, const QString& path, QString* error = nullptr,
                              const QFont& font = QFont());
};
