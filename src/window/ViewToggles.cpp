#include "window/ViewToggles.h"

#include "editor/TextView.h"
#include "platform/PreferencesValues.h"
#include "window/WindowController.h"

#include <QAction>
#include <QCoreApplication>

namespace {

struct Entry {
    int tag;
    bool (*setting)(const PreferencesValues&);
    void (TextView::*apply)(bool);
    // The item's titles while the flag is on and off; none for an item with a check mark.
    const char* onTitle;
    const char* offTitle;
};

// In the order of ViewToggles::Toggle.
const Entry kEntries[ViewToggles::ToggleCount] = {
    {WindowController::InvisibleCharactersTag,
     [](const PreferencesValues& v) { return v.window.showInvisibleCharacters; },
     &TextView::setInvisibleCharacters,
     QT_TRANSLATE_NOOP("WindowController", "Hide Invisible Characters"),
     QT_TRANSLATE_NOOP("WindowController", "Show Invisible Characters")},
    {WindowController::LineNumbersTag,
     [](const PreferencesValues& v) { return v.window.showGutterView; },
     &TextView::setRulersVisible, QT_TRANSLATE_NOOP("WindowController", "Hide Line Numbers"),
     QT_TRANSLATE_NOOP("WindowController", "Show Line Numbers")},
    {WindowController::WrapLinesTag, [](const PreferencesValues& v) { return v.editor.wrapLines; },
     &TextView::setWrapLines, nullptr, nullptr},
    {WindowController::AutoIndentTag,
     [](const PreferencesValues& v) { return v.editor.autoIndent; }, &TextView::setAutoIndent,
     nullptr, nullptr},
    {WindowController::BraceMatchingTag,
     [](const PreferencesValues& v) { return v.editor.autoBraceMatching; },
     &TextView::setAutoBraceMatching, nullptr, nullptr},
    {WindowController::CompletionTag,
     [](const PreferencesValues& v) { return v.editor.autoComplete; }, &TextView::setAutoComplete,
     nullptr, nullptr},
    {WindowController::SpellCheckingTag,
     [](const PreferencesValues& v) { return v.window.allowSpellChecking; }, nullptr, nullptr,
     nullptr},
};

} // namespace

void ViewToggles::read(const PreferencesValues& settings)
{
    for (int toggle = 0; toggle < ToggleCount; ++toggle) {
        _on[toggle] = kEntries[toggle].setting(settings);
    }
}

void ViewToggles::applyTo(Toggle toggle, TextView* view) const
{
    if (const auto apply = kEntries[toggle].apply) {
        (view->*apply)(_on[toggle]);
    }
}

bool ViewToggles::validate(QAction* item) const
{
    const int tag = item->property("tag").toInt();
    for (int toggle = 0; toggle < ToggleCount; ++toggle) {
        const Entry& entry = kEntries[toggle];
        if (entry.tag != tag) {
            continue;
        }
        if (entry.onTitle) {
            item->setText(QCoreApplication::translate(
                "WindowController", _on[toggle] ? entry.onTitle : entry.offTitle));
        } else {
            item->setChecked(_on[toggle]);
        }
        return true;
    }
    return false;
}
