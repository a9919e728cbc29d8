// What a script brings with it: its "#!" line, read for the command and options to start; the
// output of its process, which arrives in pieces that may cut a character in two; and the
// library's stored archive. The first byte chooses which, and where the output is cut.
#include "FuzzTarget.h"
#include "scripts/ScriptManager.h"

#include <QStringDecoder>

#include <cstdlib>

namespace {

void readHeader(const QString& source)
{
    const std::optional<ScriptManager::Interpreter> interpreter =
        ScriptManager::interpreterOfSource(source);
    if (!interpreter) {
        return;
    }
    // A command always names a path, and the source is always the last argument.
    const QStringList arguments = interpreter->arguments(source);
    if (!interpreter->program().startsWith(u'/') || arguments.isEmpty() ||
        arguments.last() != source) {
        std::abort();
    }
    ScriptManager::isRunnable(*interpreter);
}

void readOutput(const QByteArray& bytes, qsizetype cut)
{
    QByteArray pending;
    const QString text = ScriptManager::decodeOutputPiece(pending, bytes.left(cut)) +
                         ScriptManager::decodeOutputPiece(pending, bytes.mid(cut));
    // Output that is UTF-8 as a whole comes out whole, wherever it was cut.
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString whole = decoder.decode(bytes);
    if (!decoder.hasError() && pending.isEmpty() && text != whole) {
        std::abort();
    }
}

} // namespace

TESSARAN_FUZZ_TARGET(script_header)
{
    if (size == 0) {
        return;
    }
    const QByteArray bytes(reinterpret_cast<const char*>(data + 1), qsizetype(size - 1));
    switch (data[0] % 3) {
    case 0:
        readHeader(QString::fromUtf8(bytes));
        break;
    case 1:
        readOutput(bytes, (data[0] / 3) % (bytes.size() + 1));
        break;
    default:
        if (const auto nodes = ScriptManager::unarchivedScriptDataSource(bytes)) {
            // What was read writes out and reads back as the same number of nodes.
            const auto again = ScriptManager::unarchivedScriptDataSource(
                ScriptManager::archivedScriptDataSource(*nodes));
            if (!again || again->size() != nodes->size()) {
                std::abort();
            }
        }
        break;
    }
}
