// Pictures of the text area on a file without a display: loads FILE into a text store as a
// window would (streaming, the first part shown at once), shows it with the marks of
// invisible characters, a line-number gutter painted through the gutter hook and a small
// format provider (preprocessor lines coloured, every "struct" highlighted), scrolls to a
// line and saves the viewport with its gutter as a PNG.
//
//   tessaran-textarea_screenshot OUTPUT.png FILE [--wrap] [--line N] [--column N]
//                                [--size WIDTHxHEIGHT]

#include "PrivateHome.h"
#include "app/Application.h"
#include "document/EncodingManager.h"
#include "document/TextLoader.h"
#include "document/TextStore.h"
#include "editor/TextArea.h"
#include "editor/TextFormatProvider.h"

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
               "[--column N] [--size WxH]\n",
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
    area.setFormatProvider(&formats);
    QFont labels = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
    labels.setPixelSize(9);
    // The editor's gutter: numbers right-aligned 5 pixels from the border, on a line's
    // first row only.
    area.setGutter(50, [&](QPainter& painter, const QRect& rect,
                           const QList<TextArea::ShownLine>& lines) {
        const int width = area.gutterWidth();
        painter.fillRect(rect, QColor(240, 240, 240));
        painter.setPen(QColor(190, 190, 190));
        painter.drawLine(width - 1, rect.top(), width - 1, rect.bottom());
        painter.setPen(QColor(120, 120, 120));
        painter.setFont(labels);
        const QFontMetricsF metrics(labels);
        const qreal rowHeight = area.textLayout().rowHeight();
        for (const TextArea::ShownLine& shown : lines) {
            if (shown.startsAbove) {
                continue;
            }
            const QString label = QString::number(shown.line + 1);
            const qreal w = metrics.horizontalAdvance(label);
            painter.drawText(QPointF(width - w - 5, shown.top + (rowHeight - metrics.height()) / 5 +
                                                        metrics.ascent()),
                             label);
        }
    });
    area.setTextStore(&store);
    area.resize(size);
    area.show();
    if (!QTest::qWaitForWindowExposed(&area)) {
        std::fputs("the window was not shown\n", stderr);
        return 1;
    }

    QElapsedTimer timer;
    timer.start();
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
    std::printf("%s: %lld lines, %lld units, loaded and shown in %lld ms, %lld layouts made\n",
                qPrintable(output), qint64(text.lineCount()), qint64(text.length()),
                qint64(timer.elapsed()), qint64(area.textLayout().cache().layoutsMade()));
    return 0;
}
