// Opens a C, a Python and an HTML file in real document windows (offscreen, with a
// private home), waits until they are coloured and saves a picture of each window.
// Usage: syntax_screenshots [output folder]   (default: the current folder)
#include "PrivateHome.h"
#include "app/Application.h"
#include "app/DocumentController.h"
#include "document/Document.h"
#include "editor/SyntaxColoringController.h"
#include "editor/TextView.h"
#include "window/DocumentWindow.h"
#include "window/WindowController.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QWindow>

#include <cstdio>
#include <cstdlib>

namespace {

const char* const kC = R"(/*
 * ring.c: a fixed-size ring buffer of bytes.
 */
#include <stdbool.h>
#include <stddef.h>
#include <string.h>

#define RING_SIZE 256

typedef struct ring {
    unsigned char data[RING_SIZE];
    size_t head;
    size_t tail;
} ring;

static bool ring_full(const ring *r)
{
    return (r->head + 1) % RING_SIZE == r->tail; // one slot stays empty
}

bool ring_put(ring *r, unsigned char byte)
{
    if (ring_full(r)) {
        return false;
    }
    r->data[r->head] = byte;
    r->head = (r->head + 1) % RING_SIZE;
    return true;
}

int ring_get(ring *r)
{
    if (r->head == r->tail) {
        return -1; /* empty */
    }
    const unsigned char byte = r->data[r->tail];
    r->tail = (r->tail + 1) % RING_SIZE;
    return byte == '\n' ? 0 : byte;
}
)";

const char* const kPython = R"(#!/usr/bin/env python3
"""Counts the words of the files named on the command line."""

import sys
from collections import Counter


class WordCounter:
    """Keeps the counts of every word seen so far."""

    def __init__(self, minimum=1):
        self.minimum = minimum
        self.counts = Counter()

    def add_text(self, text):
        for word in text.split():
            self.counts[word.lower()] += 1

    def common(self, limit=10):
        return [(w, n) for w, n in self.counts.most_common(limit) if n >= self.minimum]


def main(paths):
    counter = WordCounter(minimum=2)
    for path in paths:
        with open(path, encoding="utf-8") as file:  # text files only
            counter.add_text(file.read())
    for word, count in counter.common():
        print(f"{count:6d} {word}")
    return 0 if paths else 1


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
)";

const char* const kHtml = R"(<!DOCTYPE html>
<html lang="en">
<head>
  <meta charset="utf-8">
  <title>Release notes</title>
  <link rel="stylesheet" href="style.css">
  <!-- The notes are generated from the change log. -->
</head>
<body>
  <h1>Release notes</h1>
  <h2>Version 2.1</h2>
  <p class="summary">Faster opening of <em>large</em> files.</p>
  <ul id="changes">
    <li><a href="#colours">Syntax colours</a> follow every edit.</li>
    <li>The function list opens at the current definition.</li>
  </ul>
  <h2 id="colours">Syntax colours</h2>
  <table border="1">
    <tr><th>Category</th><th>Example</th></tr>
    <tr><td>Keywords</td><td><code>return</code></td></tr>
  </table>
  <script src="notes.js"></script>
</body>
</html>
)";

bool shoot(const QString& folder, const QString& name, const char* contents, const QString& out)
{
    const QString path = folder + u'/' + name;
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(contents) < 0) {
        return false;
    }
    file.close();
    DocumentController& documents = DocumentController::sharedDocumentController();
    Document* document = documents.openDocumentWithContentsOfURL(path);
    if (!document) {
        return false;
    }
    WindowController* controller = documents.windowControllerOf(document);
    DocumentWindow* window = controller->window();
    window->resize(760, 640);
    if (!QTest::qWaitForWindowExposed(window, 10000)) {
        std::fputs("the window was not shown in time\n", stderr);
    }
    if (!QTest::qWaitFor(
            [controller] {
                return !controller->textView()->syntaxColoringController()->isColoringAll();
            },
            10000)) {
        std::fputs("the colouring did not end in time\n", stderr);
    }
    QCoreApplication::processEvents();
    bool saved = window->grab().save(out);
    // The function pop-up, opened: its list is built as it opens.
    QComboBox* popUp = window->functionPopUp();
    popUp->showPopup();
    QCoreApplication::processEvents();
    QString listOut = out;
    listOut.replace(QStringLiteral(".png"), QStringLiteral("-functions.png"));
    saved = popUp->view()->window()->grab().save(listOut) && saved;
    popUp->hidePopup();
    std::printf("%s: %s (%s)\n", qPrintable(out), saved ? "saved" : "failed",
                qPrintable(controller->toolbarInformation()));
    return saved;
}

} // namespace

int main(int argc, char** argv)
{
    const PrivateHome home("screens");
    Application app(argc, argv);
    const QString out = argc > 1 ? QString::fromLocal8Bit(argv[1]) : QDir::currentPath();
    QDir().mkpath(out);
    DocumentController::sharedDocumentController().awakeFromNib();
    QTemporaryDir folder;
    bool ok =
        shoot(folder.path(), QStringLiteral("ring.c"), kC, out + QStringLiteral("/syntax-c.png"));
    ok = shoot(folder.path(), QStringLiteral("words.py"), kPython,
               out + QStringLiteral("/syntax-python.png")) &&
         ok;
    ok = shoot(folder.path(), QStringLiteral("notes.html"), kHtml,
               out + QStringLiteral("/syntax-html.png")) &&
         ok;
    // The windows go before the application does.
    DocumentController& documents = DocumentController::sharedDocumentController();
    for (Document* document : documents.documents()) {
        if (WindowController* controller = documents.windowControllerOf(document)) {
            controller->window()->close();
        }
    }
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCoreApplication::processEvents();
    return ok ? 0 : 1;
}
