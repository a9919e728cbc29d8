#pragma once

#include "scripts/ScriptObject.h"

#include <QDialog>

class QComboBox;
class QLabel;
class QLineEdit;
class ScriptLibrary;

/// The sheet that asks for a name: with the folder pop-up for adding a script or a folder
/// to the library, without it for giving an entry a new name.
class ScriptSheet : public QDialog
{
    Q_OBJECT

public:
    /// A sheet on `window` whose folder pop-up shows the folders of `library`.
    ScriptSheet(const ScriptLibrary& library, QWidget* window, bool withFolderPopUp);

    QLabel* scriptLabel() const { return _scriptLabel; }
    QLineEdit* scriptTitleField() const { return _scriptTitleField; }
    QComboBox* scriptFolderPopUp() const { return _scriptFolderPopUp; }

    /// Fills the pop-up: "Scripts Menu" (the top level), a separator when the library is
    /// not empty, then every folder depth first, indented by its depth.
    void makeFolderPopup();
    /// The folder chosen in the pop-up; null for "Scripts Menu".
    ScriptObjectPtr selectedFolder() const;

    /// Runs the sheet on its window; the typed name, or an empty string when cancelled.
    QString runSheet();

private:
    const ScriptLibrary& _library;
    QLabel* _scriptLabel = nullptr;
    QLineEdit* _scriptTitleField = nullptr;
    QComboBox* _scriptFolderPopUp = nullptr;
    QList<ScriptObjectPtr> _folders;
};
