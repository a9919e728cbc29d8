// Pictures of a file in an editor pane without a display: reads FILE into a document as the
// editor opens one, shows it in a pane built as a window builds one (its text view, its
// line-number gutter), with the marks of invisible characters, scrolls to a line and saves
// the view with its gutter as a PNG. It tells how long reading the file and the first paint
// took, and how many lines the view laid out for it.
//
// With --syntax NAME the text is coloured by the shipped definition NAME (C, say), as a pane
// colours it: the lines on screen first, the whole text in slices behind them. With --wrap
// the lines are wrapped at the view's width.
//
//   tessaran-textarea_screenshot OUTPUT.png FILE [--wrap] [--line N] [--column N]
//                                [--size WIDTHxHEIGHT] [--syntax NAME [--until-colored]]
//
// --until-colored waits, after the picture, for the whole-text colouring to end and tells
// how long it took from the start of the read.

#include "PrivateHome.h"
#include "app/Application.h"
#include "document/Document.h"
#include "document/EncodingManager.h"
#include "document/TextStore.h"
#include "editor/CompletionManager.h"
#include "editor/EditorController.h"
#include "editor/SyntaxColoringController.h"
#include "editor/TextLayoutCache.h"
#include "editor/TextView.h"
#include "platform/Preferences.h"
#include "platform/SpellChecker.h"
#include "syntax/SyntaxDefinitionFolder.h"
#include "syntax/SyntaxManager.h"

#include <QElapsedTimer>
#include <QTest>

#include <cstdio>
#include <functional>

namespace {

int usage()
{
    std::fputs("usage: tessaran-textarea_screenshot OUTPUT.png FILE [--wrap] [--line N] "
               "[--column N] [--size WxH] [--syntax NAME [--until-colored]]\n",
               stderr);
    return 2;
}

/// Calls `painted` before each paint of the object it watches.
struct PaintWatch : QObject {
    std::function<void()> painted;
    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() == QEvent::Paint && painted) {
            painted();
        }
        return false;
    }
};

} // namespace

int main(int argc, char** argv)
{
    if (argc < 3) {
        return usage();
    }
    const PrivateHome home("textarea-screenshot");
    Application app(argc, argv);
    const QString output = QString::fromLocal8Bit(argv[1]);
    const QString path = QString::fromLocal8Bit(argv[2]);
    bool wrap = false;
    qsizetype line = 0;
    qsizetype column = 0;
    QSize size(1000, 640);
    QString syntax;
    bool untilColored = false;
    for (int i = 3; i < argc; ++i) {
        const QString argument = QString::fromLocal8Bit(argv[i]);
        if (argument == QLatin1String("--wrap")) {
            wrap = true;
        } else if (argument == QLatin1String("--line") && i + 1 < argc) {
            line = QString::fromLocal8Bit(argv[++i]).toLongLong();
        } else if (argument == QLatin1String("--column") && i + 1 < argc) {
            column = QString::fromLocal8Bit(argv[++i]).toLongLong();
        } else if (argument == QLatin1String("--size") && i + 1 < argc) {
            const QStringList parts = QString::fromLocal8Bit(argv[++i]).split(u'x');
            if (parts.size() != 2) {
                return usage();
            }
            size = QSize(parts[0].toInt(), parts[1].toInt());
        } else if (argument == QLatin1String("--syntax") && i + 1 < argc) {
            syntax = QString::fromLocal8Bit(argv[++i]);
        } else if (argument == QLatin1String("--until-colored")) {
            untilColored = true;
        } else {
            return usage();
        }
    }
    const QString definitionPath = QStringLiteral(":/SyntaxDefinition/%1.plist").arg(syntax);
    if (!syntax.isEmpty() && !SyntaxDefinitionFolder::definition(definitionPath)) {
        std::fprintf(stderr, "no syntax definition named %s\n", qPrintable(syntax));
        return 1;
    }

    const PreferencesValues settings = Preferences::sharedPreferences().current();
    QElapsedTimer timer;
    timer.start();
    Document document(EncodingManager::sharedEncodingManager(), settings.document);
    QString error;
    if (!document.readFromURL(path, QString(), &error)) {
        std::fprintf(stderr, "%s could not be read: %s\n", qPrintable(path), qPrintable(error));
        return 1;
    }
    const qint64 read = timer.elapsed();

    EditorController pane({CompletionManager::sharedCompletionManager(),
                           SyntaxManager::sharedSyntaxManager(),
                           SpellChecker::sharedSpellChecker()},
                          settings.editor);
    pane.setupInitialTextViewSharedStateWithDocument(&document);
    TextView* view = pane.textView();
    // The window's View menu toggles, as a window with them on shows its panes.
    view->setWrapLines(wrap);
    view->setInvisibleCharacters(true);
    view->setRulersVisible(true);
    if (!syntax.isEmpty()) {
        view->setSyntaxDictionay(definitionPath);
    }
    qint64 firstScreen = -1;
    PaintWatch firstPaint;
    firstPaint.painted = [&] {
        if (firstScreen < 0) {
            firstScreen = timer.elapsed();
        }
    };
    view->viewport()->installEventFilter(&firstPaint);
    view->resize(size);
    view->show();
    if (!QTest::qWaitForWindowExposed(view)) {
        std::fputs("the window was not shown\n", stderr);
        return 1;
    }

    const TextSnapshot& text = document.textStore()->text();
    line = std::clamp<qsizetype>(line, 0, text.lineCount() - 1);
    const qsizetype position =
        std::min(text.lineStart(line) + column, text.lineStart(line) + text.lineLength(line));
    view->setFocus();
    view->setCursorPosition(position);
    view->ensureCursorVisible();
    // The colouring of the lines shown is one turn behind the definition.
    QCoreApplication::processEvents();
    QCoreApplication::processEvents();
    const QPixmap picture = view->grab();
    if (!picture.save(output)) {
        std::fprintf(stderr, "%s could not be written\n", qPrintable(output));
        return 1;
    }
    SyntaxColoringController* coloring =
        syntax.isEmpty() ? nullptr : view->syntaxColoringController();
    std::printf("%s: %lld lines, %lld units, read in %lld ms, first screen painted after %lld ms, "
                "shown in %lld ms, %lld layouts made",
                qPrintable(output), qint64(text.lineCount()), qint64(text.length()), read,
                firstScreen, qint64(timer.elapsed()),
                qint64(view->textLayout().cache().layoutsMade()));
    if (coloring && untilColored) {
        while (coloring->isColoringAll()) {
            QCoreApplication::processEvents(QEventLoop::AllEvents, 50);
        }
        std::printf(", whole text coloured after %lld ms", qint64(timer.elapsed()));
    } else if (coloring) {
        std::printf(", whole-text colouring %s", coloring->isColoringAll() ? "under way" : "done");
    }
    std::printf("\n");
    return 0;
}
