#include "app/CommandLineOpener.h"

#include "app/DocumentController.h"
#include "document/Document.h"
#include "editor/TextView.h"
#include "platform/TextCodec.h"
#include "window/DocumentWindow.h"
#include "window/WindowController.h"

#include <QFileInfo>
#include <QMessageBox>
#include <QSocketNotifier>
#include <QStringDecoder>

#include <unistd.h>
#include <utility>

namespace {

constexpr quint64 kNoEncoding = ~quint64(0);

// Appends what arrives on standard input to a document as it comes, so that the output of
// a running command shows while it runs. Without a named encoding the bytes are read as
// UTF-8; with one, they are decoded together once the input ends.
class StandardInputReader : public QObject
{
public:
    StandardInputReader(Document* document, quint64 encoding, int input)
        : QObject(document)
        , _document(document)
        , _encoding(encoding)
        , _input(input)
        , _notifier(new QSocketNotifier(input, QSocketNotifier::Read, this))
    {
        connect(_notifier, &QSocketNotifier::activated, this, &StandardInputReader::read);
    }

    ~StandardInputReader() override
    {
        // Another process's input, handed over with the command line, ends with the reading.
        if (_input != STDIN_FILENO) {
            ::close(_input);
        }
    }

private:
    void read()
    {
        char buffer[1 << 16];
        const ssize_t length = ::read(_input, buffer, sizeof buffer);
        if (length > 0) {
            if (_encoding == kNoEncoding) {
                if (!append(_decoder.decode(QByteArrayView(buffer, length)), false)) {
                    stop();
                }
            } else {
                _bytes.append(buffer, length);
            }
            return;
        }
        if (_encoding != kNoEncoding) {
            QString text;
            if (!TextCodec::decode(_encoding, _bytes, text)) {
                text = QString::fromUtf8(_bytes);
            }
            _bytes.clear();
            append(text, true);
        } else {
            append(QString(), true);
        }
        stop();
    }

    void stop()
    {
        _notifier->setEnabled(false);
        // The text exists nowhere else: closing the window asks whether to save it.
        _document->setDocumentEdited(true);
        deleteLater();
    }

    // Adds a piece of the input at the end of the text; false, with a message, when it
    // holds a line too long to edit, of which nothing more is taken.
    bool append(QString text, bool last)
    {
        // A CR that ends a piece may begin a CR LF that the next piece completes.
        if (_pendingReturn) {
            text.prepend(u'\r');
            _pendingReturn = false;
        }
        if (!last && text.endsWith(u'\r')) {
            text.chop(1);
            _pendingReturn = true;
        }
        text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
        qsizetype lineStart = 0;
        for (qsizetype i = 0; i <= text.size(); ++i) {
            const bool end = i == text.size();
            if (!end && text[i] != u'\n' && text[i] != u'\r') {
                continue;
            }
            const qsizetype length = _lineLength + (i - lineStart);
            if (length > Document::maximumLineLength) {
                insert(text.left(lineStart + Document::maximumLineLength - _lineLength));
                refuseLongLine();
                return false;
            }
            if (end) {
                _lineLength = length;
            } else {
                _lineLength = 0;
                ++_line;
                lineStart = i + 1;
            }
        }
        insert(text);
        return true;
    }

    void insert(const QString& text)
    {
        if (text.isEmpty()) {
            return;
        }
        // Edited only once the whole input is in (see stop).
        _document->appendLoadedText(text);
    }

    void refuseLongLine()
    {
        WindowController* controller =
            DocumentController::sharedDocumentController().windowControllerOf(_document);
        auto* alert = new QMessageBox(QMessageBox::Warning, QString(),
                                      tr("The standard input could not be read to its end."),
                                      QMessageBox::Ok, controller ? controller->window() : nullptr);
        alert->setInformativeText(
            tr("Line %L1 is longer than %L2 characters, and lines that long cannot be edited. "
               "The text up to there is in the window.")
                .arg(_line)
                .arg(Document::maximumLineLength));
        alert->setAttribute(Qt::WA_DeleteOnClose);
        alert->show();
    }

    Document* _document;
    quint64 _encoding;
    int _input;
    QSocketNotifier* _notifier;
    QStringDecoder _decoder{QStringDecoder::Utf8};
    QByteArray _bytes;
    bool _pendingReturn = false;
    // The line being read: its number from 1 and how many characters it has so far.
    qsizetype _line = 1;
    qsizetype _lineLength = 0;
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
        } else if (info.exists() && !info.isFile()) {
            // Reading a pipe or a device could wait for ever or never end.
            problems
                << QStringLiteral("%1: is not a regular file (a pipe or a device)").arg(file.path);
        } else if (info.exists() && !info.isReadable()) {
            problems << QStringLiteral("%1: permission denied").arg(file.path);
        } else if (!info.exists() && !QFileInfo(info.absolutePath()).isDir()) {
            problems << QStringLiteral("%1: no such folder").arg(info.absolutePath());
        }
    }
    return problems;
}

QList<Document*> CommandLineOpener::open(const CommandLine& commandLine, int standardInput)
{
    DocumentController& controller = DocumentController::sharedDocumentController();
    QList<Document*> opened;
    bool readingInput = false;
    for (const CommandLine::File& file : commandLine.files()) {
        Document* document = nullptr;
        if (file.standardInput) {
            // One input, read once: a second "-" would only race the first for its bytes.
            if (std::exchange(readingInput, true)) {
                continue;
            }
            document = controller.newDocument();
            new StandardInputReader(document, commandLine.encoding(), standardInput);
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
    if (line > document->lineCount()) {
        document->finishLoading();
    }
    const Range range = document->rangeOfLine(std::min<qint64>(line, document->lineCount()) - 1);
    const qint64 offset = std::clamp<qint64>(column - 1, 0, range.length);
    view->setSelectedRange({range.location + offset, 0});
    view->centerCursor();
}
