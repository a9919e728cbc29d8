#include "app/Application.h"
#include "app/CommandLine.h"
#include "app/CommandLineOpener.h"
#include "app/SingleInstance.h"

#include <QStringList>

#include <cstdio>

int main(int argc, char** argv)
{
    // Answer --help, --version and bad options before any window system is needed.
    QStringList arguments;
    for (int i = 1; i < argc; ++i) {
        arguments << QString::fromLocal8Bit(argv[i]);
    }
    const CommandLine commandLine = CommandLine::parse(arguments);
    if (!commandLine.ok()) {
        std::fprintf(stderr, "tessaran: %s\nTry 'tessaran --help' for more information.\n",
                     qPrintable(commandLine.errorString()));
        return 2;
    }
    if (commandLine.showHelp()) {
        std::fputs(qPrintable(CommandLine::helpText()), stdout);
        return 0;
    }
    if (commandLine.showVersion()) {
        std::printf("tessaran %s\n", TESSARAN_VERSION);
        return 0;
    }
    Application app(argc, argv);
    if (!commandLine.newInstance()) {
        QString error;
        if (SingleInstance::handOff(commandLine, &error)) {
            if (!error.isEmpty()) {
                std::fprintf(stderr, "tessaran: %s\n", qPrintable(error));
            }
            return error.isEmpty() ? 0 : 1;
        }
    }
    const QStringList unreadable = CommandLineOpener::unreadableFiles(commandLine);
    for (const QString& problem : unreadable) {
        std::fprintf(stderr, "tessaran: %s\n", qPrintable(problem));
    }
    if (!unreadable.isEmpty()) {
        return 1;
    }
    return app.run(commandLine);
}
