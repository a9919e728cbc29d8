// Starts the editor on the given files as a user would, lets it settle, and saves a picture of
// each document window. Used to look at what the editor shows without a display.
//
//   tessaran-screenshot OUTPUT.png [--set KEY=VALUE]… [--size WIDTHxHEIGHT] [--wait MS]
//                       [--sidebar TYPE] [--find STRING] FILE…
//
// --sidebar opens the sidebar's pane of that type (0 search, 1 go to line, 2 information,
// 3 scripts) in each window; --find searches each window for STRING from its search pane.
//
// With several windows the pictures are OUTPUT-1.png, OUTPUT-2.png, …, in the order of the
// files (with --set OpenDocumentsInTabs=true the files open as tabs of one window).

#include "app/Application.h"
#include "app/CommandLine.h"
#include "app/DocumentController.h"
#include "document/Document.h"
#include "platform/UserDefaults.h"
#include "window/SearchController.h"
#include "window/DocumentWindow.h"
#include "window/SidebarView.h"
#include "window/WindowController.h"

#include <QLineEdit>
#include <QMainWindow>
#include <QTimer>

#include <cstdio>

namespace {

QVariant settingValue(const QString& text)
{
    if (text == QLatin1String("true") || text == QLatin1String("false")) {
        return text == QLatin1String("true");
    }
    bool isNumber = false;
    const qlonglong number = text.toLongLong(&isNumber);
    return isNumber ? QVariant(number) : QVariant(text);
}

int usage()
{
    std::fputs("usage: tessaran-screenshot OUTPUT.png [--set KEY=VALUE]... [--size WxH] "
               "[--wait MS] [--sidebar TYPE] [--find STRING] FILE...\n",
               stderr);
    return 2;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 3) {
        return usage();
    }
    const QString output = QString::fromLocal8Bit(argv[1]);
    QStringList files;
    QList<std::pair<QString, QVariant>> settings;
    QSize size(900, 640);
    int wait = 1500;
    int sidebar = -1;
    QString find;
    for (int i = 2; i < argc; ++i) {
        const QString argument = QString::fromLocal8Bit(argv[i]);
        if (argument == QLatin1String("--set") && i + 1 < argc) {
            const QString assignment = QString::fromLocal8Bit(argv[++i]);
            const qsizetype equals = assignment.indexOf(u'=');
            if (equals <= 0) {
                return usage();
            }
            settings.append({assignment.left(equals), settingValue(assignment.mid(equals + 1))});
        } else if (argument == QLatin1String("--size") && i + 1 < argc) {
            const QStringList parts = QString::fromLocal8Bit(argv[++i]).split(u'x');
            if (parts.size() != 2) {
                return usage();
            }
            size = QSize(parts[0].toInt(), parts[1].toInt());
        } else if (argument == QLatin1String("--wait") && i + 1 < argc) {
            wait = QString::fromLocal8Bit(argv[++i]).toInt();
        } else if (argument == QLatin1String("--sidebar") && i + 1 < argc) {
            sidebar = QString::fromLocal8Bit(argv[++i]).toInt();
        } else if (argument == QLatin1String("--find") && i + 1 < argc) {
            find = QString::fromLocal8Bit(argv[++i]);
            sidebar = SidebarView::SearchType;
        } else {
            files << argument;
        }
    }
    const CommandLine commandLine = CommandLine::parse(files);
    if (!commandLine.ok() || files.isEmpty()) {
        return usage();
    }

    Application app(argc, argv);
    for (const auto& [key, value] : settings) {
        UserDefaults::standardUserDefaults().setObject(value, key);
    }
    int status = 0;
    QTimer::singleShot(0, &app, [&] {
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            if (qobject_cast<QMainWindow*>(widget) && widget->isVisible()) {
                widget->resize(size);
            }
        }
        DocumentController& controller = DocumentController::sharedDocumentController();
        for (Document* document : controller.documents()) {
            WindowController* windowController = controller.windowControllerOf(document);
            if (!windowController || sidebar < 0) {
                continue;
            }
            windowController->showSidebarType(sidebar);
            if (!find.isEmpty()) {
                SearchController* pane = windowController->sidebarView()->searchController();
                pane->searchField()->setText(find);
                pane->findString(pane);
            }
        }
    });
    QTimer::singleShot(wait, &app, [&] {
        // One picture per window, in the order the files were opened; a window holding
        // documents as tabs once.
        QList<QWidget*> windows;
        DocumentController& controller = DocumentController::sharedDocumentController();
        for (Document* document : controller.documents()) {
            if (WindowController* windowController = controller.windowControllerOf(document);
                windowController && !windows.contains(windowController->window()->window())) {
                windows << windowController->window()->window();
            }
        }
        for (qsizetype i = 0; i < windows.size(); ++i) {
            QString path = output;
            if (windows.size() > 1) {
                const qsizetype dot = output.lastIndexOf(u'.');
                path = output.left(dot) + QStringLiteral("-%1").arg(i + 1) + output.mid(dot);
            }
            if (!windows[i]->grab().save(path)) {
                std::fprintf(stderr, "tessaran-screenshot: could not write %s\n", qPrintable(path));
                status = 1;
            } else {
                std::printf("%s\n", qPrintable(path));
            }
        }
        if (windows.isEmpty()) {
            std::fputs("tessaran-screenshot: no document window opened\n", stderr);
            status = 1;
        }
        QApplication::exit(status);
    });
    app.run(commandLine);
    return status;
}
