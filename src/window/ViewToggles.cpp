#include "window/ViewToggles.h"

#include "editor/TextView.h"
#include "platform/UserDefaults.h"
#include "window/WindowController.h"

#include <QAction>
#include <QCoreApplication>

namespace {

struct Entry {
    int tag;
    const char* key;
    void (TextView::*apply)(bool);
    // The item's titles while the flag is on and off; none for an item with a check mark.
    const char* onTitle;
    const char* offTitle;
};

// In the order of ViewToggles::Toggle.
const Entry kEntries[ViewToggles::ToggleCount] = {
    {WindowController::InvisibleCharactersTag, "ShowInvisibleCharacters",
     &TextView::setInvisibleCharacters,
     QT_TRANSLATE_NOOP("WindowController", "Hide Invisible Characters"),
     QT_TRANSLATE_NOOP("WindowController", "Show Invisible Characters")},
    {WindowController::LineNumbersTag, "ShowGutterView", &TextView::setRulersVisible,
     QT_TRANSLATE_NOOP("WindowController", "Hide Line Numbers"),
     QT_TRANSLATE_NOOP("WindowController", "Show Line Numbers")},
    {WindowController::WrapLinesTag, "DefaultWrapLines", &TextView::setWrapLines, nullptr, nullptr},
    {WindowController::AutoIndentTag, "AutoIndent", &TextView::setAutoIndent, nullptr, nullptr},
    {WindowController::BraceMatchingTag, "AutoBraceMatching", &TextView::setAutoBraceMatching,
     nullptr, nullptr},
    {WindowController::CompletionTag, "AutoComplete", &TextView::setAutoComplete, nullptr, nullptr},
    {WindowController::SpellCheckingTag, "AllowSpellChecking", nullptr, nullptr, nullptr},
};

} // namespace

void ViewToggles::read(const UserDefaults& defaults)
{
    for (int toggle = 0; toggle < ToggleCount; ++toggle) {
        _on[toggle] = defaults.boolForKey(QString::fromLatin1(kEntries[toggle].key));
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
