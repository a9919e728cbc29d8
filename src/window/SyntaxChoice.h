#pragma once

#include <QString>

class QAction;
class WindowController;
struct WindowSettings;

/// The syntax a window colours its text in: the definition of the file's extension ("Default
/// For File Type"), one chosen by name, or none. The choice goes to the panes, to the function
/// pop-up (shown only with a definition), to the window identifier and to the Syntax menu's
/// check marks.
class SyntaxChoice
{
public:
    explicit SyntaxChoice(WindowController& controller)
        : _controller(controller)
    {}

    /// The choice the settings give a new window.
    void read(const WindowSettings& settings);
    bool syntaxColouring() const { return _syntaxColouring; }
    bool defaultForFileType() const { return _defaultForFileType; }
    QString selectedSyntaxName() const { return _selectedSyntaxName; }
    /// The window identifier names a syntax: the window colours its text in it.
    void restore(const QString& syntaxName);

    /// Applies the choice (by file extension or by name) to the main text view.
    void syntaxSettingToTextView();
    /// The user's choice from the Syntax menu, applied to every pane.
    void selectedSyntaxColoring(QAction* item);
    /// The document's file changed: a file of another extension (a new document named on the
    /// command line, or one saved under a new name) takes the syntax of its extension at once
    /// when the window chooses by file type.
    void fileChanged();
    /// Sets the check mark of a Syntax menu item.
    void validate(QAction* item) const;

private:
    void writeWindowIdentifier(const QString& syntaxName);
    void setFunctionPopUpShown(bool shown);

    WindowController& _controller;
    bool _syntaxColouring = false;
    bool _defaultForFileType = false;
    QString _selectedSyntaxName;
    // The file whose name the syntax was last chosen for (empty: none).
    QString _syntaxFileURL;
};
