// Opens a C file in a real document window (offscreen, with a private home), starts word
// completion after a partial word and saves a picture of the window with the completion
// list where it stands on the screen. Usage: completion_screenshot <output.png>

#include "PrivateHome.h"
#include "app/Application.h"
#include "app/DocumentController.h"
#include "document/Document.h"
#include "editor/CompletionManager.h"
#include "editor/CompletionPanel.h"
#include "editor/TextView.h"
#include "platform/PropertyList.h"
#include "window/DocumentWindow.h"
#include "window/WindowController.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QKeyEvent>
#include <QPainter>
#include <QTemporaryDir>
#include <QThread>

#include <cstdio>
#include <cstdlib>

namespace {

const char* const kC = R"(#include <stdio.h>
#include <string.h>

static int print_count = 0;

static void print_line(const char *line)
{
    printf("%s\n", line);
    print_count++;
}

int main(void)
{
    const char *text = "hello";
    size_t length = strlen(text);
    if (length > 0) {
        pr)";

void wait(int milliseconds)
{
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < milliseconds) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        QThread::msleep(5);
    }
}

void press(QWidget* widget, int key)
{
    QKeyEvent down(QEvent::KeyPress, key, Qt::NoModifier);
    QCoreApplication::sendEvent(widget, &down);
    QKeyEvent up(QEvent::KeyRelease, key, Qt::NoModifier);
    QCoreApplication::sendEvent(widget, &up);
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s output.png\n", argv[0]);
        return 2;
    }
    const PrivateHome home("screens");
    Application app(argc, argv);
    DocumentController& documents = DocumentController::sharedDocumentController();
    documents.awakeFromNib();

    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("hello.c"));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(kC) < 0) {
        return 1;
    }
    file.close();
    Document* document = documents.openDocumentWithContentsOfURL(path);
    WindowController* controller = document ? documents.windowControllerOf(document) : nullptr;
    if (!controller) {
        return 1;
    }
    DocumentWindow* window = controller->window();
    window->move(40, 40);
    TextView* view = controller->textView();
    view->setSyntaxDictionary(
        PropertyList::readFile(QStringLiteral(":/SyntaxDefinition/C.plist")).toMap());
    view->makeCompleteWordsFromSyntaxDictionary();
    QElapsedTimer timer;
    timer.start();
    while (view->completeWords().isEmpty() && timer.elapsed() < 5000) {
        wait(10);
    }
    view->setSelectedRange({document->length(), 0});
    press(view, Qt::Key_Escape);
    press(view, Qt::Key_Down);
    CompletionManager& completion = CompletionManager::sharedCompletionManager();
    CompletionPanel* panel = completion.panel();
    if (!panel->isVisible()) {
        std::fprintf(stderr, "the completion list did not open\n");
        return 1;
    }
    wait(200);

    // The window and the list are separate windows: draw both onto one picture.
    const QRect frame(window->mapToGlobal(QPoint(0, 0)), window->size());
    const QRect list = panel->geometry();
    const QRect both = frame.united(list);
    QImage canvas(both.size(), QImage::Format_ARGB32);
    canvas.fill(QColor(236, 236, 236));
    QPainter painter(&canvas);
    painter.drawImage(frame.topLeft() - both.topLeft(), window->grab().toImage());
    painter.drawImage(list.topLeft() - both.topLeft(), panel->grab().toImage());
    painter.end();
    const bool saved = canvas.save(QString::fromLocal8Bit(argv[1]));
    std::printf("%d candidates, list at (%d, %d) %dx%d\n", completion.numberOfRowsInTableView(),
                list.x(), list.y(), list.width(), list.height());
    completion.terminateCompletion();
    // Close without asking to save the changed text.
    window->setCloseHandler(nullptr);
    window->close();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    return saved ? 0 : 1;
}
