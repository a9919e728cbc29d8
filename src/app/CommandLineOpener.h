#pragma once

#include "app/CommandLine.h"

#include <QStringList>

class Document;

/// Carries out a command line in a running editor: opens its files in windows, in the
/// encoding it names, with the insertion point where it says; a file that does not exist
/// becomes a new document that saves under that name, and "-" a new document holding
/// standard input.
class CommandLineOpener
{
public:
    /// One line for each named file that cannot be opened (a folder, a pipe or a device, a
    /// file without read permission), saying why; empty when every file can be.
    static QStringList unreadableFiles(const CommandLine& commandLine);

    /// Opens every file of the command line; returns the documents in the order of the files
    /// (a file that could not be opened has shown why and is left out). "-" reads
    /// `standardInput` as it arrives; a descriptor other than this process's own standard
    /// input is the reader's to close.
    static QList<Document*> open(const CommandLine& commandLine, int standardInput = 0);

    /// Puts the insertion point of the document's window at `line` and `column` (from 1; 0
    /// for the start of the line) and scrolls it into view.
    static void placeInsertionPoint(Document* document, qint64 line, qint64 column);
};
