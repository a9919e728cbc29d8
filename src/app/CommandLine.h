#pragma once

#include <QString>
#include <QStringList>

#include <vector>

/// What the editor was asked to do on its command line:
///   tessaran [OPTIONS] [FILE[:LINE[:COLUMN]]…]
class CommandLine
{
public:
    /// One file to open, with where to put the insertion point (lines and columns count
    /// from 1; 0 when not given).
    struct File {
        QString path;
        qint64 line = 0;
        qint64 column = 0;
        /// "-": the text comes from standard input.
        bool standardInput = false;
        bool operator==(const File&) const = default;
    };

    /// Reads the arguments (without the program name). On a bad option, ok() is false and
    /// errorString() says why.
    static CommandLine parse(const QStringList& arguments);

    bool ok() const { return _errorString.isEmpty(); }
    QString errorString() const { return _errorString; }
    bool showHelp() const { return _showHelp; }
    bool showVersion() const { return _showVersion; }
    bool newInstance() const { return _newInstance; }
    /// The IANA name given with --encoding; empty when none.
    QString encodingName() const { return _encodingName; }
    /// The encoding --encoding names; all ones when none was given.
    quint64 encoding() const { return _encoding; }
    const std::vector<File>& files() const { return _files; }

    static QString helpText();

private:
    QString _errorString;
    bool _showHelp = false;
    bool _showVersion = false;
    bool _newInstance = false;
    QString _encodingName;
    quint64 _encoding = ~quint64(0);
    std::vector<File> _files;
};
