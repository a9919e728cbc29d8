// Pictures of the text area on a file without a display: loads FILE into a text store as a
// window would (streaming, the first part shown at once), shows it with the marks of
// invisible characters, the editor's line-number gutter and a small format provider
// (preprocessor lines coloured, every "struct" highlighted), scrolls to a line and saves the
// viewport with its gutter as a PNG.
//
// With --syntax NAME the text is coloured instead by the editor's syntax colouring with the
// shipped definition NAME (C, say), as a pane colours it: the lines on screen at once, the
// whole text in slices behind them. It then also tells how long the first coloured screen
// took from the start of the load.
//
//   tessaran-textarea_screenshot OUTPUT.png FILE [--wrap] [--line N] [--column N]
//                                [--size WIDTHxHEIGHT] [--syntax NAME [--until-colored]]
//
// --until-colored waits, after the picture, for the whole-text colouring to end and tells
// how long it took from the start of the load.

#include "PrivateHome.h"
#include "app/Application.h"
#include "document/EncodingManager.h"
#include "document/TextLoader.h"
#include "document/TextStore.h"
#include "editor/LineNumberPainter.h"
#include "editor/SyntaxColoringController.h"
#include "editor/TextArea.h"
#include "editor/TextColorLayers.h"
#include "editor/TextFormatProvider.h"
#include "platform/Preferences.h"
#include "syntax/SyntaxDefinitionFolder.h"
#include "syntax/SyntaxManager.h"

#include <QElapsedTimer>
#include <QFontDatabase>
#include <QPainter>
#include <QTest>

#include <cstdio>

namespace {

/// Preprocessor lines in blue, "struct" on a yellow background: enough to see both layers.
class SampleFormats : public TextFormatProvider
{
public:
    explicit SampleFormats(const TextStore& store)
        : _store(store)
    {}

    LineFormats formatsForLine(qsizetype line, qsizetype, qsizetype) override
    {
        LineFormats formats;
        const QString text = _store.text().line(line);
        if (text.startsWith(u'#')) {
            QTextCharFormat blue;
            blue.setForeground(QColor(30, 60, 200));
            formats.foreground.append({0, int(text.size()), blue});
        }
        QTextCharFormat found;
        found.setBackground(QColor(255, 230, 80));
        for (qsizetype at = text.indexOf(u"struct"); at >= 0;
             at = text.indexOf(u"struct", at + 6)) {
            formats.background.append({int(at), 6, found});
        }
        return formats;
    }

private:
    const TextStore& _store;
};

int usage()
{
    std::fputs("usage: tessaran-textarea_screenshot OUTPUT.png FILE [--wrap] [--line N] "
               "[--column N] [--size WxH] [--syntax NAME [--until-colored]]\n",
               stderr);
    return 2;
}

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

    TextStore store;
    TextArea area;
    SampleFormats formats(store);
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setPixelSize(13);
    area.setTextFont(font);
    area.setWrapLines(wrap);
    area.setShowInvisibleCharacters(true);
    TextColorLayers layers;
    std::unique_ptr<SyntaxColoringController> coloring;
    // The editor's gutter, in the shipped colours.
    LineNumberPainter gutter;
    gutter.updatePreferences(Preferences::sharedPreferences().current().editor);
    gutter.numberLinesOf(area, 60);
    area.setTextStore(&store);
    if (syntax.isEmpty()) {
        area.setFormatProvider(&formats);
    } else {
        const std::optional<QVariantMap> definition = SyntaxDefinitionFolder::definition(
            QStringLiteral(":/SyntaxDefinition/%1.plist").arg(syntax));
        if (!definition) {
            std::fprintf(stderr, "no syntax definition named %s\n", qPrintable(syntax));
            return 1;
        }
        area.setFormatProvider(&layers);
        coloring = std::make_unique<SyntaxColoringController>(&area, &layers,
                                                              SyntaxManager::sharedSyntaxManager());
        coloring->setSyntaxDictionary(*definition);
        coloring->syntaxAllColoring();
    }
    area.resize(size);
    area.show();
    if (!QTest::qWaitForWindowExposed(&area)) {
        std::fputs("the window was not shown\n", stderr);
        return 1;
    }

    QElapsedTimer timer;
    timer.start();
    // The first paint after the first part is in: the lines on it were coloured before it,
    // as the text came in.
    qint64 firstScreen = -1;
    struct FirstPaint : QObject {
        std::function<void()> painted;
        bool eventFilter(QObject*, QEvent* event) override
        {
            if (event->type() == QEvent::Paint && painted) {
                painted();
            }
            return false;
        }
    } firstPaint;
    firstPaint.painted = [&] {
        if (firstScreen < 0 && store.text().length() > 0) {
            firstScreen = timer.elapsed();
        }
    };
    area.viewport()->installEventFilter(&firstPaint);
    TextLoader loader(EncodingManager::sharedEncodingManager());
    bool done = false;
    bool ok = true;
    area.setLoading(true);
    QObject::connect(&loader, &TextLoader::partLoaded,
                     [&](const TextSnapshot& part) { store.setLoadedText(part); });
    QObject::connect(&loader, &TextLoader::finished, [&](const TextLoader::Result& result) {
        ok = result.status == TextLoader::Status::Loaded;
        store.setLoadedText(result.text);
        area.setLoading(false);
        done = true;
    });
    loader.start(path, StringEncoding::NoEncoding, false);
    while (!done) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    if (!ok) {
        std::fprintf(stderr, "%s could not be read\n", qPrintable(path));
        return 1;
    }
    const TextSnapshot& text = store.text();
    const qsizetype position =
        std::min(text.lineStart(line) + column, text.lineStart(line) + text.lineLength(line));
    area.setFocus();
    area.setCursorPosition(position);
    area.ensureCursorVisible();
    QCoreApplication::processEvents();
    const QPixmap picture = area.grab();
    if (!picture.save(output)) {
        std::fprintf(stderr, "%s could not be written\n", qPrintable(output));
        return 1;
    }
    std::printf("%s: %lld lines, %lld units, first screen painted after %lld ms, loaded and "
                "shown in %lld ms, %lld layouts made",
                qPrintable(output), qint64(text.lineCount()), qint64(text.length()), firstScreen,
                qint64(timer.elapsed()), qint64(area.textLayout().cache().layoutsMade()));
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
