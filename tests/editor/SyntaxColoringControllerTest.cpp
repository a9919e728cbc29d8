// When and what a pane colours: both panes of a window, lines scrolled into view after
// an edit, large insertions, and the progress indicator of the whole-text colouring.
#include "editor/SyntaxColoringController.h"

#include "EditorTestSupport.h"
#include "document/TextMirror.h"
#include "syntax/SyntaxManager.h"

#include <QClipboard>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QProgressBar>
#include <QScrollBar>
#include <QTextBlock>

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

QString lines(const QString& line, int count)
{
    QString text;
    for (int i = 0; i < count; ++i) {
        text += line;
    }
    return text;
}

} // namespace

TEST(SyntaxColoringController, BothPanesOfADocumentAreColoured)
{
    QTextDocument document;
    document.setPlainText(QStringLiteral("int a;\n") + lines("x = 1;\n", 20));
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
    QTextCursor cursor(document.findBlockByNumber(3));
    views[0]->setTextCursor(cursor);
    views[0]->setFocus();
    QTest::keyClicks(views[0], "long ");
    for (TextView* view : views) {
        view->textDidChanged();
    }
    const qsizetype typed = document.findBlockByNumber(3).position();
    for (TextView* view : views) {
        EXPECT_EQ(colorAt(view, typed), keywords());
    }
    // The panes share one copy of the text, which follows the edits and their undo.
    views[1]->undo();
    QString expected = document.toRawText();
    expected.replace(QChar::ParagraphSeparator, u'\n');
    EXPECT_EQ(TextMirror::mirrorOfDocument(&document)->snapshot().string(), expected);

    // A pane without a definition colours nothing; dropping it removes every colour.
    views[1]->removeSyntaxDictionary();
    EXPECT_TRUE(views[1]->layoutManager()->temporaryAttributes({0, 1000}).empty());
    EXPECT_EQ(colorAt(views[0], 0), keywords());
}

TEST(SyntaxColoringController, AnEditBelowTheShownLinesIsColouredWhenItComesIntoView)
{
    QTextDocument document;
    document.setPlainText(lines("x = 1;\n", 200));
    auto pane = EditorTest::makePane(&document);
    TextView* view = pane->textView();
    view->setSyntaxDictionay(kCDefinition);
    ASSERT_TRUE(waitUntilColored(view));
    const Range shown = view->visibleCharacterRange();
    ASSERT_LT(shown.max(), document.characterCount() / 2);

    // A small insertion far below the shown lines is coloured when it comes into view.
    QTextCursor end(&document);
    end.movePosition(QTextCursor::End);
    end.insertText(QStringLiteral("int small;\n"));
    view->textDidChanged();
    const qsizetype small = document.characterCount() - 1 - 11;
    EXPECT_EQ(colorAt(view, small), 0u);
    view->verticalScrollBar()->setValue(view->verticalScrollBar()->maximum());
    QCoreApplication::processEvents();
    EXPECT_EQ(colorAt(view, small), keywords());
}

TEST(SyntaxColoringController, PastingMoreThan900CharactersColoursTheWholeTextWherever)
{
    QTextDocument document;
    document.setPlainText(lines("x = 1;\n", 20));
    auto pane = EditorTest::makePane(&document);
    TextView* view = pane->textView();
    view->setSyntaxDictionay(kCDefinition);
    ASSERT_TRUE(waitUntilColored(view));
    // As the window tells its panes of every change.
    QObject::connect(&document, &QTextDocument::contentsChanged, view, &TextView::textDidChanged);
    const struct {
        qsizetype at;
        qsizetype length;
        bool wholeText;
    } pastes[] = {{0, 900, false}, {0, 901, true}, {7, 900, false}, {7, 901, true}};
    for (const auto& paste : pastes) {
        SCOPED_TRACE(testing::Message() << paste.length << " characters at " << paste.at);
        QGuiApplication::clipboard()->setText(QString(paste.length, u'y'));
        view->setSelectedRange({paste.at, 0});
        const qsizetype before = document.characterCount();
        QTest::keyClick(view, Qt::Key_V, Qt::ControlModifier);
        ASSERT_EQ(document.characterCount(), before + paste.length);
        EXPECT_EQ(view->syntaxColoringController()->isColoringAll(), paste.wholeText);
        ASSERT_TRUE(waitUntilColored(view));
    }
}

TEST(SyntaxColoringController, WholeTextColouringRunsInSlicesBehindTheIndicator)
{
    QTextDocument document;
    document.setPlainText(lines("int value = 42; /* note */ return value;\n", 100000));
    auto pane = EditorTest::makePane(&document);
    TextView* view = pane->textView();
    QProgressBar indicator;
    view->setIndicator(&indicator);
    view->setSyntaxDictionay(kCDefinition);
    // Deferred to the next turn of the event loop.
    EXPECT_TRUE(view->layoutManager()->temporaryAttributes({0, 10}).empty());
    EXPECT_TRUE(indicator.isHidden());

    bool seenIndicator = false;
    bool shownBeforeTheEnd = false;
    QElapsedTimer timer;
    timer.start();
    while (view->syntaxColoringController()->isColoringAll() && timer.elapsed() < 20000) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
        if (indicator.isVisible()) {
            seenIndicator = true;
            // The shown lines come first.
            shownBeforeTheEnd = shownBeforeTheEnd || colorAt(view, 0) == keywords();
        }
    }
    EXPECT_TRUE(seenIndicator);
    EXPECT_TRUE(shownBeforeTheEnd);
    EXPECT_TRUE(indicator.isHidden());
    EXPECT_EQ(colorAt(view, document.characterCount() - 12), keywords());
}
