#include "app/CommandLineOpener.h"

#include "document/Document.h"
#include "document/DocumentController.h"
#include "editor/TextView.h"
#include "platform/TextCodec.h"
#include "window/DocumentWindow.h"
#include "window/WindowController.h"

#include <QFileInfo>
#include <QSocketNotifier>
#include <QStringDecoder>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>

#include <unistd.h>

namespace {

constexpr quint64 kNoEncoding = ~quint64(0);

// Appends what arrives on standard input to a document as it comes, so that the output of
// a running command shows while it runs. Without a named encoding the bytes are read as
// UTF-8; with one, they are decoded together once the input ends.
class StandardInputReader : public QObject
{
public:
    StandardInputReader(Document* document, quint64 encoding)
        : QObject(document)
        , _document(document)
        , _encoding(encoding)
        , _notifier(new QSocketNotifier(STDIN_FILENO, QSocketNotifier::Read, this))
    {
        connect(_notifier, &QSocketNotifier::activated, this, &StandardInputReader::read);
    }

private:
    void read()
    {
        char buffer[1 << 16];
        const ssize_t length = ::read(STDIN_FILENO, buffer, sizeof buffer);
        if (length > 0) {
            if (_encoding == kNoEncoding) {
                append(_decoder.decode(QByteArrayView(buffer, length)));
            } else {
                _bytes.append(buffer, length);
            }
            return;
        }
        _notifier->setEnabled(false);
        if (_encoding != kNoEncoding) {
            QString text;
            if (!TextCodec::decode(_encoding, _bytes, text)) {
                text = QString::fromUtf8(_bytes);
            }
            append(text);
        }
        // The text exists nowhere else: closing the window asks whether to save it.
        _document->textStorage()->setModified(true);
        deleteLater();
    }

    void append(const QString& text)
    {
        if (text.isEmpty()) {
            return;
        }
        QTextDocument* storage = _document->textStorage();
        const bool undo = storage->isUndoRedoEnabled();
        storage->setUndoRedoEnabled(false);
        QTextCursor cursor(storage);
        cursor.movePosition(QTextCursor::End);
        cursor.insertText(QString(text).replace(QStringLiteral("\r\n"), QStringLiteral("\n")));
        storage->setUndoRedoEnabled(undo);
        // Edited only once the whole input is in (see read).
        storage->setModified(false);
    }

    Document* _document;
    quint64 _encoding;
    QSocketNotifier* _notifier;
    QStringDecoder _decoder{QStringDecoder::Utf8};
    QByteArray _bytes;
};

} // namespace

QStringList CommandLineOpener::unreadableFiles(const CommandLine& commandLine)
{
    QStringList problems;
    for (const CommandLine::File& file : commandLine.files()) {
        if (file.standardInput) {
            continue;
        }
        const QFileInfo info(file.path);
        if (info.isDir()) {
            problems << QStringLiteral("%1: is a folder, not a text file").arg(file.path);
        } else if (info.exists() && !info.isReadable()) {
            problems << QStringLiteral("%1: permission denied").arg(file.path);
        } else if (!info.exists() && !QFileInfo(info.absolutePath()).isDir()) {
            problems << QStringLiteral("%1: no such folder").arg(info.absolutePath());
        }
    }
    return problems;
}

QList<Document*> CommandLineOpener::open(const CommandLine& commandLine)
{
    DocumentController& controller = DocumentController::sharedDocumentController();
    QList<Document*> opened;
    for (const CommandLine::File& file : commandLine.files()) {
        Document* document = nullptr;
        if (file.standardInput) {
            document = controller.newDocument();
            new StandardInputReader(document, commandLine.encoding());
        } else if (!QFileInfo::exists(file.path)) {
            document = controller.newDocument();
            document->setFileURL(file.path);
        } else {
            // A named encoding is taken as the open panel's choice would be.
            if (commandLine.encoding() != kNoEncoding) {
                controller.setIsOpenPanel(true);
                controller.setOpenPanelEncoding(commandLine.encoding());
            }
            document = controller.openDocumentWithContentsOfURL(file.path);
            controller.setIsOpenPanel(false);
            controller.setOpenPanelEncoding(kNoEncoding);
        }
        if (document) {
            placeInsertionPoint(document, file.line, file.column);
            opened << document;
        }
    }
    return opened;
}

void CommandLineOpener::placeInsertionPoint(Document* document, qint64 line, qint64 column)
{
    WindowController* window =
        DocumentController::sharedDocumentController().windowControllerOf(document);
    TextView* view = window ? window->textView() : nullptr;
    if (!view || line < 1) {
        return;
    }
    QTextDocument* storage = document->textStorage();
    if (line > storage->blockCount()) {
        document->finishLoading();
    }
    const QTextBlock block =
        storage->findBlockByNumber(int(std::min<qint64>(line, storage->blockCount()) - 1));
    const qint64 offset = std::clamp<qint64>(column - 1, 0, block.length() - 1);
    QTextCursor cursor(block);
    cursor.setPosition(block.position() + int(offset));
    view->setTextCursor(cursor);
    view->centerCursor();
}
