#pragma once

#include <QStringList>
#include <QVariantMap>
#include <QWidget>

class QComboBox;
class QListWidget;
class QTableView;
class QToolButton;
class SyntaxEntryTableModel;

/// The preferences pane that edits the syntax definitions of the support folder: the
/// default syntax, the list of definitions, and the entries of the chosen definition
/// category by category. Edits are kept until another definition is chosen or the window
/// closes (saveSyntaxDictionary()).
class SyntaxDefinitionEditor : public QWidget
{
    Q_OBJECT

public:
    explicit SyntaxDefinitionEditor(QWidget* parent = nullptr);

    /// Lists the folder's definitions and loads the one of the current row.
    void makeSyntaxDefinitions();
    /// Fills the default-syntax pop-up and selects the settings' choice.
    void makeSyntaxPopUpMenu();
    /// The default-syntax pop-up's action.
    void changedSyntaxName(int index);
    /// The category pop-up's action: new columns, reloaded entries.
    void selectedKeyFunction();
    /// Another definition was chosen: saves the edited one, loads the chosen one.
    void tableViewSelectionDidChange();
    /// Segment 0 adds an entry to the category, any other removes the selected one.
    void segmentKeyWordObject(int segment);
    /// Segment 0 adds a definition (a copy of "Untitled"), any other removes the selected one.
    void segmentSyntaxDefinition(int segment);
    /// Puts the shipped file back for the selected definition, when it is a shipped one.
    void syntaxRestore();
    /// Puts every shipped definition back.
    void syntaxRestoreAll();
    /// Writes the edited definition to its file when it has changed; true when it wrote.
    bool saveSyntaxDictionaryIfEdited();

    const QStringList& definitions() const { return _definitions; }
    const QVariantMap& syntaxDictionary() const { return _syntaxDictionary; }
    bool saveSyntaxDictionary() const { return _saveSyntaxDictionary; }
    QComboBox* defaultSyntaxPopUp() const { return _defaultSyntaxPopUp; }
    QListWidget* syntaxTableView() const { return _syntaxTableView; }
    QComboBox* definitionPopUp() const { return _definitionPopUp; }
    QTableView* wordTableView() const { return _wordTableView; }
    SyntaxEntryTableModel* entryModel() const { return _entryModel; }

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void loadSyntaxDictionary(int row);
    void selectDefinitionRow(int row);
    void resizeEntryColumns();
    static QStringList definitionFileNames();

    QStringList _definitions;
    QVariantMap _syntaxDictionary;
    bool _saveSyntaxDictionary = false;
    QComboBox* _defaultSyntaxPopUp = nullptr;
    QListWidget* _syntaxTableView = nullptr;
    QComboBox* _definitionPopUp = nullptr;
    QTableView* _wordTableView = nullptr;
    SyntaxEntryTableModel* _entryModel = nullptr;
};
