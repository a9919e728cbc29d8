#pragma once

#include "document/Document.h"
#include "document/EncodingManager.h"
#include "editor/CompletionManager.h"
#include "editor/EditorController.h"
#include "editor/GutterView.h"
#include "editor/LayoutManager.h"
#include "editor/TextView.h"
#include "platform/Preferences.h"
#include "platform/SpellChecker.h"
#include "syntax/SyntaxManager.h"

#include <QImage>
#include <QTest>

#include <gtest/gtest.h>

#include <memory>

namespace EditorTest {

/// The settings a pane has with the shipped defaults.
inline EditorSettings shippedSettings()
{
    return Preferences::sharedPreferences().current().editor;
}

/// A document as a window opens one, holding `text` as read (no undo step, unedited).
inline std::unique_ptr<Document> makeDocument(const QString& text = QString())
{
    auto document =
        std::make_unique<Document>(EncodingManager::sharedEncodingManager(), DocumentSettings());
    document->setLoadedText(text);
    document->setDocumentEdited(false);
    return document;
}

/// A pane on `document` built the way a window builds one, with the shared managers and
/// `settings`, shown offscreen at `size`.
inline std::unique_ptr<EditorController>
makePane(Document* document, const EditorSettings& settings = shippedSettings(),
         QSize size = QSize(420, 300))
{
    auto controller = std::make_unique<EditorController>(
        EditorServices{CompletionManager::sharedCompletionManager(),
                       SyntaxManager::sharedSyntaxManager(), SpellChecker::sharedSpellChecker()},
        settings);
    controller->setupInitialTextViewSharedStateWithDocument(document);
    TextView* view = controller->textView();
    view->resize(size);
    view->show();
    EXPECT_TRUE(QTest::qWaitForWindowExposed(view));
    QCoreApplication::processEvents();
    return controller;
}

/// A document with one pane on it, as a window holds them.
struct Pane {
    Document owner{EncodingManager::sharedEncodingManager(), DocumentSettings()};
    Document& document = owner;
    std::unique_ptr<EditorController> controller;

    explicit Pane(const QString& text, const EditorSettings& settings = shippedSettings(),
                  QSize size = QSize(420, 300))
    {
        owner.setLoadedText(text);
        owner.setDocumentEdited(false);
        controller = makePane(&document, settings, size);
    }
    TextView* view() const { return controller->textView(); }
    LayoutManager* layoutManager() const { return controller->layoutManager(); }
    QString text() const { return owner.storedText(); }
    Range selection() const { return view()->selectedRange(); }
    void select(Range range) { view()->setSelectedRange(range); }
};

/// How many pixels of `image` inside `rect` are within `tolerance` of `color` per channel.
inline int countPixels(const QImage& image, const QRect& rect, const QColor& color,
                       int tolerance = 40)
{
    int count = 0;
    const QRect area = rect.intersected(image.rect());
    for (int y = area.top(); y <= area.bottom(); ++y) {
        for (int x = area.left(); x <= area.right(); ++x) {
            const QColor pixel = image.pixelColor(x, y);
            if (std::abs(pixel.red() - color.red()) <= tolerance &&
                std::abs(pixel.green() - color.green()) <= tolerance &&
                std::abs(pixel.blue() - color.blue()) <= tolerance) {
                ++count;
            }
        }
    }
    return count;
}

/// What the viewport shows now.
inline QImage viewportImage(TextView* view)
{
    return view->viewport()->grab().toImage().convertToFormat(QImage::Format_RGB32);
}

} // namespace EditorTest
