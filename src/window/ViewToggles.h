#pragma once

#include <array>

class QAction;
class TextView;
struct PreferencesValues;

/// The View menu's toggles of a window: each is a flag that starts from its setting, goes to
/// every pane of the window, and shows in its menu item as a check mark or a Show/Hide title.
/// One table holds what differs between them.
class ViewToggles
{
public:
    /// In the order they are applied to a new pane.
    enum Toggle {
        InvisibleCharacters,
        LineNumbers,
        WrapLines,
        AutoIndent,
        BraceMatching,
        AutoComplete,
        SpellChecking,
        ToggleCount
    };

    bool isOn(Toggle toggle) const { return _on[toggle]; }
    void invert(Toggle toggle) { _on[toggle] = !_on[toggle]; }
    /// Every flag as its setting says.
    void read(const PreferencesValues& settings);
    /// Gives `view` the flag; spell checking, which needs its language, is the window's.
    void applyTo(Toggle toggle, TextView* view) const;
    /// Sets the title or the check mark of a toggle's menu item (by its "tag"); false when
    /// the item is none of the toggles'.
    bool validate(QAction* item) const;

private:
    std::array<bool, ToggleCount> _on{};
};
