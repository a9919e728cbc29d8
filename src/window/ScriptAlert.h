#pragma once

#include <QString>

#include <functional>

class QWidget;

/// The alerts of the script commands: a title, a text and one "OK" button, shown as a
/// sheet (window-modal, not waited for) on the key window when there is one, and
/// application-modal otherwise.
class ScriptAlert
{
public:
    struct Alert {
        QString title;
        QString text;
        bool caution = false;
        bool applicationModal = false;
    };
    using Handler = std::function<void(const Alert&)>;

    /// Shows the alert. `window` overrides the key window as the sheet's parent;
    /// `applicationModal` forces the application-modal form.
    static void show(const QString& title, const QString& text, bool caution = false,
                     bool applicationModal = false, QWidget* window = nullptr);
    /// Hands every alert to `handler` instead of showing it (none restores showing); the
    /// tests watch the alerts through it.
    static void setHandler(Handler handler);
};
