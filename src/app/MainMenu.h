#pragma once

#include <QObject>

class QAction;
class QMenu;
class QMenuBar;
class WindowController;

/// The menu bar of a document window: File, Edit, View, Format, Window and Help. Items carry
/// their tags, and every menu asks the window controller to validate its items just
/// before it opens.
class MainMenu : public QObject
{
    Q_OBJECT

public:
    /// Builds the menu bar into the controller's window.
    explicit MainMenu(WindowController* controller);

    /// The action with the given tag in the View or Format menus (null when none).
    QAction* actionWithTag(int tag) const;
    QMenu* menuNamed(const QString& objectName) const;

private:
    QMenu* addMenu(QMenuBar* bar, const QString& title, const QString& name);
    QAction* addToggle(QMenu* menu, const QString& title, int tag, bool checkable,
                       void (WindowController::*toggle)(QObject*));
    void buildFileMenu(QMenuBar* bar);
    void buildEditMenu(QMenuBar* bar);
    void buildViewMenu(QMenuBar* bar);
    void buildFormatMenu(QMenuBar* bar);
    void buildWindowMenu(QMenuBar* bar);
    void validate(QMenu* menu);

    WindowController* _controller;
};
