#pragma once

#include <QColor>
#include <QObject>
#include <QPointer>
#include <QString>

class DefaultsBinding;
class FontWell;
class QAction;
class QCheckBox;
class QComboBox;
class QMainWindow;
class QTabWidget;
class QToolBar;
class SyntaxDefinitionEditor;
class UserDefaults;

/// The preferences window: four tabs chosen from its toolbar, every setting behind a
/// control bound to it, and the syntax-definition editor. Open windows take up the changes
/// when this window closes.
class PreferencesController : public QObject
{
    Q_OBJECT

public:
    /// The application's one preferences window (created on first request, kept until exit).
    static PreferencesController& sharedPreferencesController();

    PreferencesController();
    ~PreferencesController() override;

    /// The window, loaded the first time it is asked for.
    QMainWindow* window();
    /// Shows the window (loading it first when needed) and brings it to the front.
    void showWindow();

    void windowDidLoad();
    /// Saves an edited syntax definition and tells every open window to re-read the settings.
    void windowWillClose();

    /// Selects the tab `tag` (0 to 3) and gives the window that tab's height, keeping its top
    /// edge where it is. Other tags select nothing new and resize nothing.
    void changedTabs(int tag);
    static int heightOfTab(int tag);

    void makeSpellCheckPopUpMenu();
    void changedSpellCheckLanguage(int index);
    /// Stores the open-panel pop-up's encoding ("Automatic" is all ones).
    void changedTextEncoding(int index);
    /// Stores the new-document pop-up's encoding.
    void changedDefaultTextEncoding(int index);
    /// Enables the chevron check box while brace matching is on.
    void checkButton();
    /// Applies the colour preset `tag` (0 to 4) to all sixteen colour settings.
    void changedSyntaxColouringType(int tag);
    static void keyedArchiverOfObject(const QColor& object, const QString& key,
                                      UserDefaults& withDefaults);

    QToolBar* toolbar() const { return _toolbar; }
    QTabWidget* tabView() const { return _tabView; }
    QComboBox* spellCheckerPopUp() const { return _spellCheckerPopUp; }
    QComboBox* defaultTextEncodingPopUp() const { return _defaultTextEncodingPopUp; }
    QComboBox* openPanelTextEncodingPopUp() const { return _openPanelTextEncodingPopUp; }
    QCheckBox* checkMatchingbraces() const { return _checkMatchingbraces; }
    QCheckBox* usingChevronsMatching() const { return _usingChevronsMatching; }
    FontWell* fontWell() const { return _fontWell; }
    SyntaxDefinitionEditor* syntaxEditor() const { return _syntaxEditor; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void loadWindow();
    QWidget* makeDocumentsTab();
    QWidget* makeWindowTab();
    QWidget* makeSyntaxTab();
    QWidget* makeEditorTab();

    QPointer<QMainWindow> _window;
    DefaultsBinding* _binding = nullptr;
    QToolBar* _toolbar = nullptr;
    QTabWidget* _tabView = nullptr;
    QComboBox* _spellCheckerPopUp = nullptr;
    QComboBox* _defaultTextEncodingPopUp = nullptr;
    QComboBox* _openPanelTextEncodingPopUp = nullptr;
    QCheckBox* _checkMatchingbraces = nullptr;
    QCheckBox* _usingChevronsMatching = nullptr;
    FontWell* _fontWell = nullptr;
    SyntaxDefinitionEditor* _syntaxEditor = nullptr;
};
