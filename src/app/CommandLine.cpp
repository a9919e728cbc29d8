#include "app/CommandLine.h"

#include "platform/StringEncoding.h"

#include <QFileInfo>

namespace {

bool readPositive(const QString& text, qint64* value)
{
    bool ok = false;
    const qint64 number = text.toLongLong(&ok);
    if (!ok || number < 1) {
        return false;
    }
    *value = number;
    return true;
}

// "FILE:LINE:COLUMN" — unless a file of the whole name exists, which wins, so that
// names holding colons still open.
CommandLine::File splitPosition(const QString& argument)
{
    CommandLine::File file{argument, 0, 0, false};
    if (QFileInfo::exists(argument)) {
        return file;
    }
    const QStringList parts = argument.split(u':');
    qint64 line = 0;
    qint64 column = 0;
    if (parts.size() >= 3 && readPositive(parts.last(), &column) &&
        readPositive(parts[parts.size() - 2], &line)) {
        file.path = parts.mid(0, parts.size() - 2).join(u':');
        file.line = line;
        file.column = column;
    } else if (parts.size() >= 2 && readPositive(parts.last(), &line)) {
        file.path = parts.mid(0, parts.size() - 1).join(u':');
        file.line = line;
    }
    if (file.path.isEmpty()) {
        return {argument, 0, 0, false};
    }
    return file;
}

} // namespace

QString CommandLine::helpText()
{
    return QStringLiteral(
        "Usage: tessaran [OPTIONS] [FILE[:LINE[:COLUMN]]...]\n"
        "A text editor for programmers.\n"
        "\n"
        "Options:\n"
        "  -h, --help           show this help and exit\n"
        "  -v, --version        show the version and exit\n"
        "  -e, --encoding NAME  open the files in this encoding (an IANA name such as\n"
        "                       utf-8, shift_jis or iso-8859-1) instead of detecting it\n"
        "  -l, --line N         put the insertion point at line N of the files\n"
        "      --new-instance   start a separate editor even when one is running\n"
        "  -                    read standard input into a new untitled document\n"
        "\n"
        "A file that does not exist opens as a new document saved under its name.\n");
}

CommandLine CommandLine::parse(const QStringList& arguments)
{
    CommandLine result;
    qint64 line = 0;
    bool onlyFiles = false;
    for (qsizetype i = 0; i < arguments.size(); ++i) {
        const QString& argument = arguments[i];
        if (onlyFiles || argument == u"-" || !argument.startsWith(u'-')) {
            if (argument == u"-" && !onlyFiles) {
                result._files.push_back({QString(), 0, 0, true});
            } else {
                result._files.push_back(splitPosition(argument));
            }
            continue;
        }
        QString name = argument;
        QString value;
        bool hasValue = false;
        if (argument.startsWith(u"--") && argument.contains(u'=')) {
            name = argument.section(u'=', 0, 0);
            value = argument.section(u'=', 1);
            hasValue = true;
        }
        const auto takeValue = [&]() -> bool {
            if (hasValue) {
                return true;
            }
            if (i + 1 >= arguments.size()) {
                result._errorString = QStringLiteral("option %1 needs a value").arg(name);
                return false;
            }
            value = arguments[++i];
            return true;
        };
        if (name == u"--") {
            onlyFiles = true;
        } else if (name == u"-h" || name == u"--help") {
            result._showHelp = true;
        } else if (name == u"-v" || name == u"--version") {
            result._showVersion = true;
        } else if (name == u"--new-instance") {
            result._newInstance = true;
        } else if (name == u"-e" || name == u"--encoding") {
            if (!takeValue()) {
                return result;
            }
            if (value.trimmed().isEmpty()) {
                result._errorString = QStringLiteral("option %1 needs an encoding name").arg(name);
                return result;
            }
            result._encodingName = value.trimmed();
            const quint32 encoding =
                StringEncoding::convertIANACharSetNameToEncoding(result._encodingName);
            if (encoding == StringEncoding::InvalidId) {
                result._errorString =
                    QStringLiteral("unknown encoding “%1” (give an IANA name such as utf-8, "
                                   "shift_jis or iso-8859-1)")
                        .arg(result._encodingName);
                return result;
            }
            result._encoding = StringEncoding::convertEncodingToNSStringEncoding(encoding);
        } else if (name == u"-l" || name == u"--line") {
            if (!takeValue()) {
                return result;
            }
            if (!readPositive(value, &line)) {
                result._errorString =
                    QStringLiteral("option %1 needs a line number of 1 or more, not “%2”")
                        .arg(name, value);
                return result;
            }
        } else {
            result._errorString = QStringLiteral("unknown option %1").arg(argument);
            return result;
        }
    }
    if (line > 0) {
        for (File& file : result._files) {
            if (file.line == 0) {
                file.line = line;
            }
        }
    }
    return result;
}
