#include "window/SearchController.h"

#include "editor/TextView.h"
#include "platform/PreferencesValues.h"
#include "platform/UserDefaults.h"
#include "search/SearchManager.h"
#include "window/DocumentWindow.h"
#include "window/WindowController.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPointer>
#include <QPushButton>
#include <QSignalBlocker>
#include <QStyle>
#include <QVBoxLayout>

namespace {

constexpr int kRecentItemTag = 1000;
constexpr int kClearRecentsTag = 1002;

/// Every open search pane, so that a change of the shared recent strings reaches them all.
QList<QPointer<SearchController>>& openPanes()
{
    static QList<QPointer<SearchController>> panes;
    return panes;
}

void rebuildEveryRecentMenu()
{
    for (const QPointer<SearchController>& pane : openPanes()) {
        if (pane) {
            pane->makeRecentMenuItems();
        }
    }
}

/// A check box bound to a setting: it writes the setting when clicked. What it shows is the
/// engine's option (showOptions()), which started from the setting.
QCheckBox* boundCheckBox(const QString& title, QLatin1StringView key, QWidget* parent)
{
    auto* box = new QCheckBox(title, parent);
    QObject::connect(box, &QCheckBox::toggled, box, [key](bool checked) {
        UserDefaults::standardUserDefaults().setBool(checked, key);
    });
    return box;
}

} // namespace

SearchController::SearchController(WindowController* windowController, QWidget* parent)
    : QWidget(parent)
    , _windowController(windowController)
{
    setObjectName(QStringLiteral("SearchView"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(10, 12, 10, 10);

    _findLabel = new QLabel(this);
    _findLabel->setObjectName(QStringLiteral("findLabel"));
    layout->addWidget(_findLabel);

    _searchField = new QLineEdit(this);
    _searchField->setObjectName(QStringLiteral("searchField"));
    _searchField->setClearButtonEnabled(true);
    _recentSearchMenu = new QMenu(this);
    QAction* recents = _searchField->addAction(
        style()->standardIcon(QStyle::SP_FileDialogContentsView), QLineEdit::LeadingPosition);
    recents->setToolTip(tr("Recent Searches"));
    connect(recents, &QAction::triggered, this, [this] {
        _recentSearchMenu->popup(_searchField->mapToGlobal(_searchField->rect().bottomLeft()));
    });
    layout->addWidget(_searchField);

    layout->addWidget(new QLabel(tr("Replace with:"), this));
    _replaceFeild = new QLineEdit(this);
    _replaceFeild->setObjectName(QStringLiteral("replaceFeild"));
    _replaceFeild->setClearButtonEnabled(true);
    layout->addWidget(_replaceFeild);

    auto* buttons = new QHBoxLayout;
    auto* replaceButton = new QPushButton(tr("Replace"), this);
    auto* findButton = new QPushButton(tr("Find"), this);
    buttons->addStretch(1);
    buttons->addWidget(replaceButton);
    buttons->addWidget(findButton);
    layout->addLayout(buttons);

    _caseSensitiveCheckButton =
        boundCheckBox(tr("Case Sensitive"), SettingsKey::SearchCaseSensitive, this);
    _wholeWordCheckButton = boundCheckBox(tr("Whole Word"), SettingsKey::SearchWholeWord, this);
    _regularExpressionCheckButton =
        boundCheckBox(tr("Regular Expression"), SettingsKey::SearchRegularExpression, this);
    _previousCheckButton = boundCheckBox(tr("Search Backwards"), SettingsKey::SearchPrevious, this);
    _replaceAndFindNextCheckButton =
        boundCheckBox(tr("Replace and Find Next"), SettingsKey::SearchReplaceAndFindNext, this);
    _replaceAllCheckButton = boundCheckBox(tr("Replace All"), SettingsKey::SearchReplaceAll, this);
    for (QCheckBox* box :
         {_caseSensitiveCheckButton, _wholeWordCheckButton, _regularExpressionCheckButton,
          _previousCheckButton, _replaceAndFindNextCheckButton, _replaceAllCheckButton}) {
        layout->addWidget(box);
        connect(box, &QCheckBox::toggled, this, [this, box] { checkButton(box); });
    }
    layout->addStretch(1);
    connect(&SearchManager::sharedSearchManager(), &SearchManager::optionsChanged, this,
            &SearchController::showOptions);

    // Only the user's edits reach the engine: text put into a field by a command does not.
    connect(_searchField, &QLineEdit::textEdited, this, [this] { updateSearchingString(); });
    connect(_replaceFeild, &QLineEdit::textEdited, this, [this] { updateSearchingString(); });
    connect(_searchField, &QLineEdit::returnPressed, this, [this] { findString(_searchField); });
    connect(_replaceFeild, &QLineEdit::returnPressed, this,
            [this] { replaceString(_replaceFeild); });
    connect(findButton, &QPushButton::clicked, this,
            [this, findButton] { findString(findButton); });
    connect(replaceButton, &QPushButton::clicked, this,
            [this, replaceButton] { replaceString(replaceButton); });

    openPanes().append(this);
    awakeFromNib();
}

SearchController::~SearchController()
{
    openPanes().removeAll(this);
}

void SearchController::awakeFromNib()
{
    // The engine's flags are every window's: a new pane shows them as they are.
    showOptions();
    const SearchManager& engine = SearchManager::sharedSearchManager();
    // A new window's pane shows the strings last used in any window.
    const QString search = engine.searchString();
    const QString replace = engine.replaceString();
    if (!search.isEmpty()) {
        _searchField->setText(search);
    }
    if (!replace.isEmpty()) {
        _replaceFeild->setText(replace);
    }
    makeRecentMenuItems();
}

void SearchController::setFindLabel()
{
    if (_regularExpressionCheckButton->isChecked()) {
        _searchField->setPlaceholderText(QStringLiteral("Regular Expression"));
        _findLabel->setText(QStringLiteral("ICU-comaptible :"));
    } else {
        _searchField->setPlaceholderText(QStringLiteral("String Matching"));
        _findLabel->setText(QStringLiteral("Find String :"));
    }
}

void SearchController::checkButton(QObject* sender)
{
    Q_UNUSED(sender);
    setFindLabel();
    SearchManager& engine = SearchManager::sharedSearchManager();
    engine.setReplaceAndFindNext(_replaceAndFindNextCheckButton->isChecked());
    engine.setReplaceAll(_replaceAllCheckButton->isChecked());
    engine.setCaseSensitive(_caseSensitiveCheckButton->isChecked());
    engine.setRegularExpressions(_regularExpressionCheckButton->isChecked());
    engine.setPrevious(_previousCheckButton->isChecked());
    engine.setWholeWord(_wholeWordCheckButton->isChecked());
}

void SearchController::showOptions()
{
    const SearchManager& engine = SearchManager::sharedSearchManager();
    const std::pair<QCheckBox*, bool> boxes[] = {
        {_replaceAndFindNextCheckButton, engine.replaceAndFindNext()},
        {_replaceAllCheckButton, engine.replaceAll()},
        {_caseSensitiveCheckButton, engine.caseSensitive()},
        {_regularExpressionCheckButton, engine.regularExpressions()},
        {_previousCheckButton, engine.previous()},
        {_wholeWordCheckButton, engine.wholeWord()},
    };
    for (const auto& [box, checked] : boxes) {
        // Only the box the user clicked writes its setting.
        const QSignalBlocker blocker(box);
        box->setChecked(checked);
    }
    setFindLabel();
}

void SearchController::updateSearchingString()
{
    SearchManager::sharedSearchManager().searchTextFieldDidChange(_searchField->text(),
                                                                  _replaceFeild->text());
    makeRecentMenuItems();
}

void SearchController::findString(QObject* sender)
{
    Q_UNUSED(sender);
    TextView* textView = _windowController->textView();
    updateSearchingString();
    // The field keeps what was searched for, as a search field does when it sends its action.
    addRecentSearch(_searchField->text());
    if (!textView) {
        return;
    }
    _findLabel->setText(SearchManager::sharedSearchManager().findStringWithLayoutManager(
        textView->layoutManager()));
}

void SearchController::replaceString(QObject* sender)
{
    Q_UNUSED(sender);
    TextView* textView = _windowController->textView();
    updateSearchingString();
    if (!textView) {
        return;
    }
    _findLabel->setText(SearchManager::sharedSearchManager().replaceStringWithLayoutManager(
        textView->layoutManager()));
}

void SearchController::makeRecentMenuItems()
{
    _recentSearchMenu->clear();
    const QStringList recents = recentSearches();
    if (!recents.isEmpty()) {
        for (const QString& string : recents) {
            QAction* item = _recentSearchMenu->addAction(string);
            item->setProperty("tag", kRecentItemTag);
            // Choosing a string puts it into the field (the window's setSearchString:).
            connect(item, &QAction::triggered, this,
                    [this, string] { _windowController->setSearchString(string); });
        }
        _recentSearchMenu->addSeparator()->setProperty("tag", kRecentItemTag);
    }
    QAction* clear = _recentSearchMenu->addAction(QStringLiteral("Clear Recent Search Strings"));
    clear->setProperty("tag", kClearRecentsTag);
    clear->setEnabled(!recents.isEmpty());
    connect(clear, &QAction::triggered, this, [] { clearRecentSearches(); });
}

QStringList SearchController::recentSearches()
{
    return UserDefaults::standardUserDefaults()
        .objectForKey(SettingsKey::RecentSearchStrings)
        .toStringList();
}

void SearchController::addRecentSearch(const QString& string)
{
    if (string.isEmpty()) {
        return;
    }
    QStringList recents = recentSearches();
    recents.removeAll(string);
    recents.prepend(string);
    while (recents.size() > MaximumRecents) {
        recents.removeLast();
    }
    UserDefaults::standardUserDefaults().setObject(recents, SettingsKey::RecentSearchStrings);
    rebuildEveryRecentMenu();
}

void SearchController::clearRecentSearches()
{
    UserDefaults::standardUserDefaults().removeObjectForKey(SettingsKey::RecentSearchStrings);
    // Rebuilding from a menu's own item would delete it while it is being triggered.
    QMetaObject::invokeMethod(
        qApp, [] { rebuildEveryRecentMenu(); }, Qt::QueuedConnection);
}
