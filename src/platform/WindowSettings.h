#pragma once

#include <QString>

/// What a document window takes from the settings: the toggles it starts with (and goes
/// back to when the settings change) and how it chooses a syntax.
struct WindowSettings {
    bool showGutterView = false;
    bool showInvisibleCharacters = false;
    bool allowSpellChecking = false;
    QString spellCheckLanguage;
    /// Split panes stand side by side.
    bool useVerticalforSplitView = false;
    /// A window colours with the definition named by defaultsSyntaxName...
    bool syntaxColouring = false;
    /// ...or with the one of its file's extension.
    bool defaultForFileType = false;
    QString defaultsSyntaxName;

    bool operator==(const WindowSettings&) const = default;
};
