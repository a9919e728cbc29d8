#pragma once

#include <QStringList>
#include <QWidget>

class QCheckBox;
class QLabel;
class QLineEdit;
class QMenu;
class WindowController;

/// The sidebar's search pane: the search and replacement fields and the option check
/// boxes, wired to the shared search engine. Find and replace act on the window's main
/// text view and show the engine's label. The search field keeps a menu of recent search
/// strings, shared by every window and kept in the settings between runs.
class SearchController : public QWidget
{
    Q_OBJECT

public:
    /// How many recent search strings are kept.
    static constexpr int MaximumRecents = 10;

    explicit SearchController(WindowController* windowController, QWidget* parent = nullptr);
    ~SearchController() override;

    QLabel* findLabel() const { return _findLabel; }
    QLineEdit* searchField() const { return _searchField; }
    QLineEdit* replaceFeild() const { return _replaceFeild; }
    QCheckBox* replaceAndFindNextCheckButton() const { return _replaceAndFindNextCheckButton; }
    QCheckBox* replaceAllCheckButton() const { return _replaceAllCheckButton; }
    QCheckBox* caseSensitiveCheckButton() const { return _caseSensitiveCheckButton; }
    QCheckBox* wholeWordCheckButton() const { return _wholeWordCheckButton; }
    QCheckBox* previousCheckButton() const { return _previousCheckButton; }
    QCheckBox* regularExpressionCheckButton() const { return _regularExpressionCheckButton; }
    QMenu* recentSearchMenu() const { return _recentSearchMenu; }

    /// The recent search strings of every window, newest first.
    static QStringList recentSearches();
    /// Puts `string` first among the recent search strings (an empty one is not kept).
    static void addRecentSearch(const QString& string);
    static void clearRecentSearches();

    /// Placeholder and label for the current mode.
    void setFindLabel();
    /// Passes both fields to the engine and rebuilds the recent-searches menu.
    void updateSearchingString();
    /// Sets the engine's flags from the check boxes.
    void checkButton(QObject* sender);
    /// Shows the engine's five flags in the check boxes (another window's pane may have
    /// changed them).
    void showOptions();
    /// Finds in the window's main text view.
    void findString(QObject* sender);
    /// Replaces in the window's main text view.
    void replaceString(QObject* sender);
    void makeRecentMenuItems();

private:
    void awakeFromNib();

    WindowController* _windowController;
    QLabel* _findLabel;
    QLineEdit* _searchField;
    QLineEdit* _replaceFeild;
    QCheckBox* _replaceAndFindNextCheckButton;
    QCheckBox* _replaceAllCheckButton;
    QCheckBox* _caseSensitiveCheckButton;
    QCheckBox* _wholeWordCheckButton;
    QCheckBox* _previousCheckButton;
    QCheckBox* _regularExpressionCheckButton;
    QMenu* _recentSearchMenu;
};
