#pragma once

#include "app/CommandLine.h"

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

    /// The command line as another process must pass it: options first, then "--" and
    /// every file as an absolute path, with ":LINE[:COLUMN]" when a position was given.
    static QStringList canonicalArguments(const CommandLine& commandLine);

    /// Asks a running editor to carry out the command line. True when one did (the files
    /// are open there, or `error` says why not); false when none answers, so this process
    /// should start the editor itself. Standard input cannot be handed over: a command line
    /// with "-" is never handed off.
    static bool handOff(const CommandLine& commandLine, QString* error);

public Q_SLOTS:
    /// Carries out `arguments` (canonical form) here; returns an empty string, or why the
    /// files cannot be opened (also shown to the user in an alert).
    Q_SCRIPTABLE QString Open(const QStringList& arguments);

private:
    using QObject::QObject;
};
