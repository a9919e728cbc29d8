#pragma once

#include "editor/TextView.h"
#include "editor/TextViewCompletion.h"
#include "editor/TextViewKeys.h"
#include "editor/TypingRules.h"

#include <QMetaObject>
#include <QPointer>
#include <QProgressBar>
#include <QVariantList>
#include <QVariantMap>

#include <memory>

class GutterView;
class LayoutManager;
class SyntaxColoringController;

/// What a TextView holds, kept out of its header: its settings, the objects that draw and
/// colour it, and its completion.
class TextViewPrivate
{
public:
    TextViewPrivate(const EditorServices& services, const EditorSettings& settings)
        : services(services)
        , settings(settings)
    {}

    const EditorServices services;
    EditorSettings settings;
    TextView::Appearance appearance;
    TypingRules::Settings typing;
    /// While set, a typed "}" is not matched: automatic indentation shows its own.
    bool usedIndentClosingBraces = false;
    QVariantList entityReference;
    bool characterEntity = false;
    QVariantMap syntaxDictionary;
    QPointer<QProgressBar> indicator;

    TextView::TextAttributes typingAttributes;
    LayoutManager* layoutManager = nullptr;
    GutterView* verticalRulerView = nullptr;
    bool rulersVisible = true;
    SyntaxColoringController* syntaxColoring = nullptr;
    bool hasMarkedText = false;
    std::unique_ptr<TextViewCompletion> completion;
    std::unique_ptr<TextViewKeys> keys;
};
