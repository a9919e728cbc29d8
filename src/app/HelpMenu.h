#pragma once

#include <QObject>
#include <QStringList>

class QMenu;
class QWidget;
class WindowController;

/// The Help menu of a document window: About, with the version, the licence and the
/// folders the editor keeps its files in, and ReadMe, which opens the README that comes
/// with the program.
class HelpMenu : public QObject
{
    Q_OBJECT

public:
    /// Adds the Help menu ("helpMenu") at the end of the controller's window's menu bar.
    explicit HelpMenu(WindowController* controller);

    QMenu* helpMenu() const { return _helpMenu; }

    /// The About box's text (rich text): version, licence and where things live.
    static QString aboutText();
    /// Where the README is looked for, first match wins, for a program in `applicationDir`:
    /// beside it (a build folder), then in the documentation folder of its installation.
    static QStringList readMeCandidates(const QString& applicationDir);
    /// The first candidate that exists; empty when there is none.
    static QString readMePath(const QString& applicationDir);

    /// Shows the About box on `parent` without waiting for it to be closed.
    static void showAbout(QWidget* parent);
    /// Opens the README as a document, or says where it was looked for in vain.
    static void openReadMe(QWidget* parent);

private:
    QMenu* _helpMenu = nullptr;
};
