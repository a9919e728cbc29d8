// When and what a pane colours: both panes of a window, and what a pane shows against a
// colouring of the whole text after edits and scrolls.
#include "editor/SyntaxColoringController.h"

#include "EditorTestSupport.h"
#include "document/TextStore.h"
#include "platform/PropertyList.h"
#include "syntax/ReferenceColoring.h"
#include "syntax/SyntaxManager.h"

#include <QElapsedTimer>
#include <QRandomGenerator>
#include <QScrollBar>

namespace {

const QString kCDefinition = QStringLiteral(":/SyntaxDefinition/C.plist");

bool waitUntilColored(TextView* view)
{
    QElapsedTimer timer;
    timer.start();
    while (view->syntaxColoringController()->isColoringAll() && timer.elapsed() < 10000) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    }
    return !view->syntaxColoringController()->isColoringAll();
}

QRgb colorAt(TextView* view, qsizetype location)
{
    const auto runs = view->layoutManager()->temporaryAttributes({location, 1});
    return runs.empty() ? 0 : runs.front().color;
}

QRgb keywords()
{
    return SyntaxManager::sharedSyntaxManager().keywordsColor().rgba();
}

} // namespace

TEST(SyntaxColoringController, BothPanesOfADocumentAreColoured)
{
    const auto owned = EditorTest::makeDocument(QStringLiteral("int a;\n") +
                                                QStringLiteral("x = 1;\n").repeated(20));
    Document& document = *owned;
    auto first = EditorTest::makePane(&document);
    auto second = EditorTest::makePane(&document);
    std::vector<TextView*> views{first->textView(), second->textView()};
    for (TextView* view : views) {
        view->setSyntaxDictionay(kCDefinition);
    }
    for (TextView* view : views) {
        ASSERT_TRUE(waitUntilColored(view));
        EXPECT_EQ(colorAt(view, 0), keywords());
    }

    // Typing in one pane: the window hands the change to every pane.
    const qsizetype typed = document.rangeOfLine(3).location;
    views[0]->setSelection(typed, typed);
    views[0]->setFocus();
    QTest::keyClicks(views[0], "long ");
    for (TextView* view : views) {
        view->textDidChanged();
        EXPECT_EQ(colorAt(view, typed), keywords());
    }
    // Undone through the other pane, the word is gone from both panes' colours.
    views[1]->undo();
    for (TextView* view : views) {
        view->textDidChanged();
        EXPECT_EQ(colorAt(view, typed), 0u);
    }
}

namespace {

/// The colour of each character of `line` as the area laid it out for its last paint; 0
/// where it has none.
std::vector<QRgb> shownColors(TextArea& area, qsizetype line)
{
    TextLayoutCache& cache = area.textLayout().cache();
    std::vector<QRgb> colors(size_t(area.textStore()->text().lineLength(line)), 0);
    for (int piece = 0; piece < cache.pieceCount(line); ++piece) {
        const TextLayoutCache::Entry* entry = cache.find(line, piece);
        if (!entry) {
            continue;
        }
        for (const QTextLayout::FormatRange& range : entry->formats) {
            for (int i = 0; i < range.length; ++i) {
                colors[size_t(entry->start + range.start + i)] =
                    range.format.foreground().color().rgba();
            }
        }
    }
    return colors;
}

/// The colours the whole-text reference pass gives the characters of `line`.
std::vector<QRgb> referenceColors(const std::vector<int>& cells, const TextSnapshot& text,
                                  qsizetype line)
{
    const SyntaxManager& manager = SyntaxManager::sharedSyntaxManager();
    const qsizetype start = text.lineStart(line);
    std::vector<QRgb> colors(size_t(text.lineLength(line)), 0);
    for (size_t i = 0; i < colors.size(); ++i) {
        const int category = cells[size_t(start) + i];
        if (category >= 0) {
            const QColor color =
                manager.colorForCategory(static_cast<SyntaxColoring::Category>(category));
            colors[i] = color.isValid() ? color.rgba() : 0;
        }
    }
    return colors;
}

} // namespace

TEST(SyntaxColoringController, APaneShowsTheWholeTextColouringAfterEveryEditAndScroll)
{
    const QVariantMap definition = PropertyList::readDictionary(kCDefinition).value();
    const QStringList tokens{"int", "x",       "=",      "1;", "/*", "*/", "\"", "'",
                             "//",  "#define", "return", " ",  "\\", "{",  "}"};
    const QStringList edits{"/*", "*/", "\"", "'", "//", "\n", "\n", "int ", "#if ", "\\"};
    QRandomGenerator random(20261124);
    QString initial;
    for (int line = 0; line < 90; ++line) {
        for (int token = random.bounded(1, 7); token > 0; --token) {
            initial += tokens[random.bounded(int(tokens.size()))] + u' ';
        }
        initial += u'\n';
    }
    EditorTest::Pane pane(initial);
    Document& document = pane.document;
    TextView* view = pane.view();
    // As the window tells its panes of every change.
    QObject::connect(&document, &Document::contentsChanged, view, &TextView::textDidChanged);
    view->setSyntaxDictionary(definition);
    view->syntaxAllColoring();
    ASSERT_TRUE(waitUntilColored(view));

    // What the view painted last, line by line, against the reference pass over the whole
    // text as it is now.
    qsizetype coloredSeen = 0;
    const auto expectShownAsReference = [&](int step) {
        QCoreApplication::processEvents();
        const TextSnapshot& text = document.textStore()->text();
        const std::vector<int> cells =
            ReferenceColoring::color(definition, text.string(), {0, text.length()});
        for (const TextArea::ShownLine& line : view->visibleLines()) {
            const std::vector<QRgb> colors = shownColors(*view, line.line);
            ASSERT_EQ(colors, referenceColors(cells, text, line.line))
                << "step " << step << ", line " << line.line << ": "
                << text.line(line.line).toStdString();
            coloredSeen += std::count_if(colors.begin(), colors.end(), [](QRgb c) { return c; });
        }
    };
    // The screen painted before the definition came is painted again in its colours.
    expectShownAsReference(-1);
    ASSERT_FALSE(HasFatalFailure());

    for (int step = 0; step < 300; ++step) {
        const qsizetype length = document.length();
        // Mostly on screen, where a wrong colour shows at once; sometimes off screen, where
        // it shows once scrolled to.
        const Range shown = view->visibleCharacterRange();
        const qsizetype at = random.bounded(4) != 0
                                 ? shown.location + random.bounded(int(shown.length) + 1)
                                 : random.bounded(int(length) + 1);
        if (random.bounded(3) == 0 && at < length) {
            document.replaceRanges(
                {Range(at, std::min<qsizetype>(random.bounded(1, 4), length - at))}, QString(),
                QString());
        } else {
            document.replaceRanges({Range(at, 0)}, edits[random.bounded(int(edits.size()))],
                                   QString());
        }
        if (random.bounded(5) == 0) {
            QScrollBar* bar = view->verticalScrollBar();
            bar->setValue(random.bounded(bar->maximum() + 1));
        }
        if (random.bounded(10) == 0) {
            view->setWrapLines(!view->wrapLines());
        }
        expectShownAsReference(step);
        ASSERT_FALSE(HasFatalFailure());
    }
    // Not a text that nothing colours.
    EXPECT_GT(coloredSeen, 10000);
}
