// Not a benchmark: draws a document window offscreen with the search pane open and the
// matches of a search highlighted, and saves it as a PNG (first argument, or
// /work/screens/search-pane.png).
#include "PrivateHome.h"
#include "app/Application.h"
#include "app/MainMenu.h"
#include "document/Document.h"
#include "document/EncodingManager.h"
#include "editor/TextView.h"
#include "platform/Preferences.h"
#include "window/DocumentWindow.h"
#include "window/SearchController.h"
#include "window/SidebarView.h"
#include "window/WindowController.h"

#include <QCheckBox>
#include <QDir>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QWindow>

#include <cstdlib>

namespace {

const char* const kText = R"(#include <stdio.h>
#include <stdlib.h>

/* Sums the values of a list; an empty list sums to zero. */
static long sum_values(const long *values, size_t count)
{
    long total = 0;
    for (size_t i = 0; i < count; ++i) {
        total += values[i];
    }
    return total;
}

/* The largest of the values, or zero for none. */
static long max_value(const long *values, size_t count)
{
    long best = count > 0 ? values[0] : 0;
    for (size_t i = 1; i < count; ++i) {
        if (values[i] > best) {
            best = values[i];
        }
    }
    return best;
}

int main(int argc, char **argv)
{
    long values[16];
    size_t count = 0;
    for (int i = 1; i < argc && count < 16; ++i) {
        values[count++] = strtol(argv[i], NULL, 10);
    }
    printf("sum %ld, max %ld\n", sum_values(values, count), max_value(values, count));
    return 0;
}
)";

} // namespace

int main(int argc, char** argv)
{
    const PrivateHome home("screens");
    Application app(argc, argv);
    const QString output = argc > 1 ? QString::fromLocal8Bit(argv[1])
                                    : QStringLiteral("/work/screens/search-pane.png");

    auto* document = new Document(EncodingManager::sharedEncodingManager(),
                                  Preferences::sharedPreferences().values().document);
    document->setLoadedText(QString::fromUtf8(kText));
    auto* controller = new WindowController(document);
    controller->windowDidLoad();
    new MainMenu(controller);
    DocumentWindow* window = controller->window();
    window->resize(760, 620);
    window->show();
    window->activateWindow();
    const auto wait = [](int ms) {
        QElapsedTimer timer;
        timer.start();
        while (timer.elapsed() < ms) {
            QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        }
    };
    wait(200);

    controller->swicthSidebarType(SidebarView::SearchType);
    SearchController* pane = controller->sidebarView()->searchController();
    pane->caseSensitiveCheckButton()->setChecked(true);
    pane->searchField()->setText(QStringLiteral("values"));
    pane->replaceFeild()->setText(QStringLiteral("items"));
    pane->findString(pane->searchField());
    // Past the find indicator's half second, so the picture shows the highlights alone.
    wait(700);

    const bool saved = window->grab().save(output);
    delete document;
    return saved ? 0 : 1;
}
