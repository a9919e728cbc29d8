#pragma once

#include "app/CommandLine.h"

#include <QDBusUnixFileDescriptor>
#include <QObject>
#include <QStringList>

/// One editor per user session: a second `tessaran FILE…` hands its files to the editor
/// that is running, over the session bus, and ends. The running editor answers at
/// "/org/tessaran/Tessaran/Launcher" (interface "org.tessaran.Tessaran.Launcher") of the
/// scripting service's name.
class SingleInstance : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.tessaran.Tessaran.Launcher")

public:
    static constexpr const char* LauncherPath = "/org/tessaran/Tessaran/Launcher";

    /// Starts answering other invocations (once the scripting service holds its name).
    static void listen();

    /// The command line as another process must pass it: options first, then every file as
    /// an absolute path, with ":LINE[:COLUMN]" when a position was given, and "-" where
    /// standard input goes.
    static QStringList canonicalArguments(const CommandLine& commandLine);

    /// Asks a running editor to carry out the command line. True when one did (the files
    /// are open there, or `error` says why not); false when none answers, so this process
    /// should start the editor itself. For "-", this process's standard input goes along and
    /// the running editor reads it as it arrives; input typed at a terminal is not handed
    /// over (the running editor is not the terminal's foreground process).
    static bool handOff(const CommandLine& commandLine, QString* error);

public Q_SLOTS:
    /// Carries out `arguments` (canonical form) here; returns an empty string, or why the
    /// files cannot be opened (also shown to the user in an alert).
    Q_SCRIPTABLE QString Open(const QStringList& arguments);
    /// The same for a command line with "-", which reads `standardInput`.
    Q_SCRIPTABLE QString OpenWithStandardInput(const QStringList& arguments,
                                               const QDBusUnixFileDescriptor& standardInput);

private:
    using QObject::QObject;
    QString open(const QStringList& arguments, const QDBusUnixFileDescriptor& standardInput);
};
