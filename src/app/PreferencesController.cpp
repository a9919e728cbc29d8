#include "app/PreferencesController.h"

#include "app/AppDelegate.h"
#include "app/Application.h"
#include "app/ColorWell.h"
#include "app/DefaultsBinding.h"
#include "app/FontWell.h"
#include "app/SyntaxDefinitionEditor.h"
#include "document/EncodingManager.h"
#include "platform/ColorArchive.h"
#include "platform/Preferences.h"
#include "platform/SharedInstance.h"
#include "platform/SpellChecker.h"
#include "platform/UserDefaults.h"
#include "window/EncodingPopUp.h"

#include <QActionGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QEvent>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenu>
#include <QPainter>
#include <QPixmap>
#include <QPushButton>
#include <QSpinBox>
#include <QStyle>
#include <QTabBar>
#include <QTabWidget>
#include <QToolBar>
#include <QToolButton>
#include <QVBoxLayout>

namespace {

constexpr int kWindowWidth = 720;

UserDefaults& store()
{
    return UserDefaults::standardUserDefaults();
}

} // namespace

PreferencesController& PreferencesController::sharedPreferencesController()
{
    return SharedInstance<PreferencesController>::object();
}

PreferencesController::PreferencesController() = default;

PreferencesController::~PreferencesController()
{
    if (_window) {
        // The window's own teardown must not come back here.
        _window->removeEventFilter(this);
        delete _window;
    }
}

QMainWindow* PreferencesController::window()
{
    if (!_window) {
        loadWindow();
        windowDidLoad();
    }
    return _window;
}

void PreferencesController::showWindow()
{
    QMainWindow* shown = window();
    shown->show();
    shown->raise();
    shown->activateWindow();
}

int PreferencesController::heightOfTab(int tag)
{
    static constexpr int heights[] = {440, 300, 520, 440};
    return tag >= 0 && tag < 4 ? heights[tag] : -1;
}

void PreferencesController::loadWindow()
{
    _window = new QMainWindow;
    _window->setWindowTitle(tr("Preferences"));
    _window->setObjectName(QStringLiteral("Preferences"));
    _window->installEventFilter(this);
    _binding = new DefaultsBinding(_window);

    _toolbar = _window->addToolBar(tr("Preferences"));
    _toolbar->setMovable(false);
    _toolbar->setFloatable(false);
    _toolbar->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
    auto* group = new QActionGroup(_toolbar);
    const struct {
        const char* identifier;
        QString title;
        const char* icon;
        QStyle::StandardPixmap fallback;
    } items[] = {
        {"PrefDocuments", tr("Documents"), "document-properties", QStyle::SP_FileIcon},
        {"PrefWindow", tr("Window"), "preferences-desktop", QStyle::SP_ComputerIcon},
        {"PrefSyntax", tr("Syntax"), "preferences-desktop-color",
         QStyle::SP_FileDialogDetailedView},
        {"PrefEditor", tr("Editor"), "accessories-text-editor", QStyle::SP_FileDialogContentsView},
    };
    int tag = 0;
    for (const auto& item : items) {
        // Desktops without an icon theme get the style's own pictures.
        // Pictures of different sizes are centred on one canvas, so that the titles line up.
        const QIcon found = QIcon::fromTheme(QString::fromLatin1(item.icon),
                                             _window->style()->standardIcon(item.fallback));
        const QSize size = _toolbar->iconSize();
        const qreal ratio = _window->devicePixelRatioF();
        QPixmap canvas(size * ratio);
        canvas.setDevicePixelRatio(ratio);
        canvas.fill(Qt::transparent);
        {
            const QPixmap picture = found.pixmap(size, ratio);
            const QSizeF shown = picture.deviceIndependentSize();
            QPainter painter(&canvas);
            painter.drawPixmap(
                QPointF((size.width() - shown.width()) / 2, (size.height() - shown.height()) / 2),
                picture);
        }
        const QIcon icon(canvas);
        QAction* action = _toolbar->addAction(icon, item.title);
        action->setObjectName(QString::fromLatin1(item.identifier));
        action->setProperty("tag", tag);
        action->setCheckable(true);
        group->addAction(action);
        _toolbar->widgetForAction(action)->setFocusPolicy(Qt::NoFocus);
        connect(action, &QAction::triggered, this, [this, tag] { changedTabs(tag); });
        ++tag;
    }

    _tabView = new QTabWidget(_window);
    _tabView->tabBar()->hide();
    _tabView->setDocumentMode(true);
    _tabView->addTab(makeDocumentsTab(), tr("Documents"));
    _tabView->addTab(makeWindowTab(), tr("Window"));
    _tabView->addTab(makeSyntaxTab(), tr("Syntax"));
    _tabView->addTab(makeEditorTab(), tr("Editor"));
    _window->setCentralWidget(_tabView);
}

QWidget* PreferencesController::makeDocumentsTab()
{
    auto* page = new QWidget;
    auto* layout = new QVBoxLayout(page);
    auto* form = new QFormLayout;
    layout->addLayout(form);
    form->addRow(_binding->checkBox(tr("Open an untitled document at start"),
                                    SettingsKey::ShouldOpenUntitledFile));
    auto* autosave = new QHBoxLayout;
    QSpinBox* delay = _binding->spinBox(SettingsKey::AutosavingDelay, 1, 3600);
    delay->setSuffix(tr(" s"));
    autosave->addWidget(delay);
    autosave->addWidget(new QLabel(tr("(takes effect at the next start)")));
    autosave->addStretch();
    form->addRow(tr("Autosave every:"), autosave);

    _defaultTextEncodingPopUp = new QComboBox;
    _defaultTextEncodingPopUp->setObjectName(QStringLiteral("defaultTextEncodingPopUp"));
    connect(_defaultTextEncodingPopUp, &QComboBox::activated, this,
            &PreferencesController::changedDefaultTextEncoding);
    form->addRow(tr("Encoding of new documents:"), _defaultTextEncodingPopUp);
    _openPanelTextEncodingPopUp = new QComboBox;
    _openPanelTextEncodingPopUp->setObjectName(QStringLiteral("openPanelTextEncodingPopUp"));
    connect(_openPanelTextEncodingPopUp, &QComboBox::activated, this,
            &PreferencesController::changedTextEncoding);
    form->addRow(tr("Encoding when opening:"), _openPanelTextEncodingPopUp);
    form->addRow(_binding->checkBox(tr("Prefer Japanese encodings when detecting"),
                                    SettingsKey::PriorityToJapaneseEncoding));
    form->addRow(_binding->checkBox(tr("Add a byte-order mark to UTF-8 files"),
                                    SettingsKey::UTF8AppendByBOM));
    QStringList lineBreaks;
    for (qsizetype style = 0; style < 3; ++style) {
        lineBreaks.append(EncodingManager::lineBreaksLongTitle(style));
    }
    form->addRow(tr("Line breaks of new documents:"),
                 _binding->indexPopUp(lineBreaks, SettingsKey::DefaultsLineBreaks));
    form->addRow(_binding->checkBox(tr("Hide the extension in the Save dialog"),
                                    SettingsKey::SavePanelExtensionHidden));

    auto* search = new QGroupBox(tr("Search defaults"));
    auto* grid = new QGridLayout(search);
    grid->addWidget(
        _binding->checkBox(tr("Replace then find next"), SettingsKey::SearchReplaceAndFindNext), 0,
        0);
    grid->addWidget(_binding->checkBox(tr("Replace all"), SettingsKey::SearchReplaceAll), 0, 1);
    grid->addWidget(_binding->checkBox(tr("Case sensitive"), SettingsKey::SearchCaseSensitive), 1,
                    0);
    grid->addWidget(
        _binding->checkBox(tr("Regular expression"), SettingsKey::SearchRegularExpression), 1, 1);
    grid->addWidget(_binding->checkBox(tr("Search backwards"), SettingsKey::SearchPrevious), 2, 0);
    grid->addWidget(_binding->checkBox(tr("Multi-line regular expressions"),
                                       SettingsKey::AllowMultiLineSearching),
                    2, 1);
    grid->addWidget(_binding->checkBox(tr("Whole word"), SettingsKey::SearchWholeWord), 3, 0);
    layout->addWidget(search);
    layout->addStretch();
    return page;
}

QWidget* PreferencesController::makeWindowTab()
{
    auto* page = new QWidget;
    auto* layout = new QHBoxLayout(page);
    auto* view = new QVBoxLayout;
    layout->addLayout(view);
    view->addWidget(
        _binding->checkBox(tr("Open documents in tabs"), SettingsKey::OpenDocumentsInTabs));
    // Windows open now are not gathered or split up: the choice is where the next ones go.
    auto* tabsNote =
        new QLabel(tr("Applies to documents opened from now on; open windows stay as they are."));
    tabsNote->setWordWrap(true);
    tabsNote->setObjectName(QStringLiteral("tabsNote"));
    tabsNote->setContentsMargins(20, 0, 0, 4);
    tabsNote->setEnabled(false);
    view->addWidget(tabsNote);
    view->addWidget(_binding->checkBox(tr("Show line numbers"), SettingsKey::ShowGutterView));
    view->addWidget(
        _binding->checkBox(tr("Show invisible characters"), SettingsKey::ShowInvisibleCharacters));
    view->addWidget(_binding->checkBox(tr("Wrap lines"), SettingsKey::DefaultWrapLines));
    view->addWidget(
        _binding->checkBox(tr("Split panes side by side"), SettingsKey::UseVerticalforSplitView));
    view->addWidget(
        _binding->checkBox(tr("Check spelling while typing"), SettingsKey::AllowSpellChecking));
    auto* language = new QHBoxLayout;
    language->addWidget(new QLabel(tr("Spelling language:")));
    _spellCheckerPopUp = new QComboBox;
    _spellCheckerPopUp->setObjectName(QStringLiteral("spellCheckerPopUp"));
    connect(_spellCheckerPopUp, &QComboBox::activated, this,
            &PreferencesController::changedSpellCheckLanguage);
    language->addWidget(_spellCheckerPopUp, 1);
    view->addLayout(language);
    view->addStretch();

    auto* marks = new QGroupBox(tr("Invisible characters"));
    auto* form = new QFormLayout(marks);
    const struct {
        QString title;
        QLatin1StringView key;
    } rows[] = {
        {tr("Line break:"), SettingsKey::NewLineCharacter},
        {tr("Tab:"), SettingsKey::TabCharacter},
        {tr("Space:"), SettingsKey::SpaceCharacter},
        {tr("Full-width space:"), SettingsKey::FullwidthSpaceCharacter},
    };
    for (const auto& row : rows) {
        QLineEdit* edit = _binding->lineEdit(row.key);
        edit->setMaxLength(1);
        edit->setFixedWidth(40);
        form->addRow(row.title, edit);
    }
    layout->addWidget(marks, 0, Qt::AlignTop);
    return page;
}

QWidget* PreferencesController::makeSyntaxTab()
{
    auto* page = new QWidget;
    auto* layout = new QHBoxLayout(page);

    auto* colors = new QGroupBox(tr("Colours"));
    auto* grid = new QGridLayout(colors);
    grid->setVerticalSpacing(2);
    auto* presets = new QToolButton;
    presets->setObjectName(QStringLiteral("colouringType"));
    presets->setText(tr("Colour Scheme"));
    presets->setPopupMode(QToolButton::InstantPopup);
    presets->setToolButtonStyle(Qt::ToolButtonTextOnly);
    presets->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    auto* menu = new QMenu(presets);
    const QString titles[] = {tr("Black on White"), tr("White on Dark Grey"), tr("White on Black"),
                              tr("Grey on White"), tr("Classic")};
    for (int tag = 0; tag < 5; ++tag) {
        QAction* item = menu->addAction(titles[tag]);
        item->setProperty("tag", tag);
        connect(item, &QAction::triggered, this, [this, tag] { changedSyntaxColouringType(tag); });
    }
    presets->setMenu(menu);
    grid->addWidget(presets, 0, 0, 1, 2);
    const struct {
        QString title;
        QLatin1StringView key;
    } wells[] = {
        {tr("Keywords"), SettingsKey::KeywordsColor},
        {tr("Commands"), SettingsKey::CommandsColor},
        {tr("Values"), SettingsKey::ValuesColor},
        {tr("Numbers"), SettingsKey::NumbersColor},
        {tr("Strings"), SettingsKey::StringsColor},
        {tr("Characters"), SettingsKey::CharactersColor},
        {tr("Comments"), SettingsKey::CommentsColor},
        {tr("Blockwords"), SettingsKey::BlockwordsColor},
        {tr("Preprocessor"), SettingsKey::PreprocessorColor},
    };
    int row = 1;
    for (const auto& well : wells) {
        grid->addWidget(new QLabel(well.title), row, 0);
        grid->addWidget(_binding->colorWell(well.key), row, 1);
        ++row;
    }
    grid->setRowStretch(row, 1);
    layout->addWidget(colors);

    _syntaxEditor = new SyntaxDefinitionEditor;
    layout->addWidget(_syntaxEditor, 1);
    return page;
}

QWidget* PreferencesController::makeEditorTab()
{
    auto* page = new QWidget;
    auto* layout = new QHBoxLayout(page);
    auto* left = new QVBoxLayout;
    layout->addLayout(left, 1);

    auto* fontRow = new QHBoxLayout;
    fontRow->addWidget(new QLabel(tr("Font:")));
    _fontWell = new FontWell;
    _fontWell->setObjectName(QStringLiteral("fontWell"));
    fontRow->addWidget(_fontWell, 1);
    left->addLayout(fontRow);
    auto* tabRow = new QHBoxLayout;
    tabRow->addWidget(new QLabel(tr("Tab width:")));
    tabRow->addWidget(_binding->spinBox(SettingsKey::DefaultTabWidth, 1, 32));
    tabRow->addStretch();
    left->addLayout(tabRow);
    left->addWidget(_binding->checkBox(tr("Insert spaces for tabs"), SettingsKey::SpaceTab));
    left->addWidget(_binding->checkBox(tr("Indent automatically"), SettingsKey::AutoIndent));
    const auto indented = [left](QWidget* widget) {
        auto* row = new QHBoxLayout;
        row->addSpacing(20);
        row->addWidget(widget, 1);
        left->addLayout(row);
    };
    indented(
        _binding->checkBox(tr("Indent after an opening brace"), SettingsKey::AutoIndentBraces));
    indented(
        _binding->checkBox(tr("Outdent a closing brace"), SettingsKey::AutoIndentClosingBraces));
    _checkMatchingbraces =
        _binding->checkBox(tr("Highlight matching braces"), SettingsKey::AutoBraceMatching);
    connect(_checkMatchingbraces, &QCheckBox::toggled, this, &PreferencesController::checkButton);
    left->addWidget(_checkMatchingbraces);
    _usingChevronsMatching =
        _binding->checkBox(tr("Match < and > too"), SettingsKey::UsedChevronsMatching);
    indented(_usingChevronsMatching);
    left->addWidget(
        _binding->checkBox(tr("Complete words automatically"), SettingsKey::AutoComplete));
    left->addWidget(_binding->checkBox(tr("Convert to character entity references"),
                                       SettingsKey::CharacterEntity));
    left->addStretch();

    auto* colors = new QGroupBox(tr("Colours"));
    auto* form = new QFormLayout(colors);
    const struct {
        QString title;
        QLatin1StringView key;
    } wells[] = {
        {tr("Text:"), SettingsKey::DefaultTextColor},
        {tr("Insertion point:"), SettingsKey::DefaultInsertionPointColor},
        {tr("Background:"), SettingsKey::DefaultBackgroundColor},
        {tr("Invisible characters:"), SettingsKey::InvisibleCharacterColor},
        {tr("Line numbers:"), SettingsKey::GutterTextColor},
        {tr("Gutter border:"), SettingsKey::GutterBorderColor},
        {tr("Gutter background:"), SettingsKey::GutterBackgroundColor},
    };
    for (const auto& well : wells) {
        form->addRow(well.title, _binding->colorWell(well.key));
    }
    layout->addWidget(colors, 0, Qt::AlignTop);
    return page;
}

void PreferencesController::windowDidLoad()
{
    // The height of the first tab, keeping the origin.
    _window->setFixedSize(kWindowWidth, heightOfTab(0));
    // No control has the focus at first: the window itself takes it.
    _window->setFocusPolicy(Qt::ClickFocus);
    _window->setFocus();
    if (QAction* first = _toolbar->findChild<QAction*>(QStringLiteral("PrefDocuments"))) {
        first->setChecked(true);
    }
    _tabView->setCurrentIndex(0);
    makeSpellCheckPopUpMenu();
    const QList<quint64> encodings = EncodingManager::sharedEncodingManager().encodingList();
    const PreferencesValues settings = Preferences::sharedPreferences().current();
    EncodingPopUp::makeEncodingOfPopUpMenu(_defaultTextEncodingPopUp, encodings,
                                           settings.document.defaultsTextEncoding, false);
    EncodingPopUp::makeEncodingOfPopUpMenu(_openPanelTextEncodingPopUp, encodings,
                                           settings.application.openDefaultsTextEncoding, true);
    if (!_checkMatchingbraces->isChecked()) {
        _usingChevronsMatching->setEnabled(false);
    }
    _syntaxEditor->makeSyntaxPopUpMenu();
    _syntaxEditor->makeSyntaxDefinitions();
}

bool PreferencesController::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::Close && watched == _window) {
        windowWillClose();
    }
    return QObject::eventFilter(watched, event);
}

void PreferencesController::windowWillClose()
{
    _syntaxEditor->saveSyntaxDictionaryIfEdited();
    store().synchronize();
    if (Application* application = Application::instance()) {
        application->postUpdatePreferences(this);
    }
}

void PreferencesController::changedTabs(int tag)
{
    if (tag < 0 || tag >= _tabView->count()) {
        return;
    }
    // Only the shown page asks for room, so that a short tab can be short.
    for (int i = 0; i < _tabView->count(); ++i) {
        _tabView->widget(i)->setSizePolicy(i == tag ? QSizePolicy::Preferred : QSizePolicy::Ignored,
                                           i == tag ? QSizePolicy::Preferred
                                                    : QSizePolicy::Ignored);
    }
    _tabView->setCurrentIndex(tag);
    for (QAction* item : _toolbar->actions()) {
        if (item->property("tag").toInt() == tag) {
            item->setChecked(true);
        }
    }
    const int height = heightOfTab(tag);
    if (height < 0) {
        return;
    }
    const QRect frame = _window->geometry();
    // The top edge stays; the bottom moves by the difference.
    _window->setFixedSize(frame.width(), height);
    _window->setGeometry(frame.x(), frame.y(), frame.width(), height);
    _window->update();
}

void PreferencesController::makeSpellCheckPopUpMenu()
{
    _spellCheckerPopUp->clear();
    const QString chosen = Preferences::sharedPreferences().current().window.spellCheckLanguage;
    for (const QString& language : SpellChecker::sharedSpellChecker().availableLanguages()) {
        _spellCheckerPopUp->addItem(SpellChecker::displayNameOfLanguage(language), language);
        if (language == chosen) {
            _spellCheckerPopUp->setCurrentIndex(_spellCheckerPopUp->count() - 1);
        }
    }
}

void PreferencesController::changedSpellCheckLanguage(int index)
{
    const QString language = _spellCheckerPopUp->itemData(index).toString();
    if (!language.isEmpty()) {
        store().setObject(language, SettingsKey::SpellCheckLanguage);
    }
}

void PreferencesController::changedTextEncoding(int index)
{
    const QVariant encoding =
        _openPanelTextEncodingPopUp->itemData(index, EncodingManager::RepresentedObjectRole);
    if (encoding.isValid()) {
        store().setUnsignedInteger(encoding.toULongLong(), SettingsKey::OpenDefaultsTextEncoding);
    }
}

void PreferencesController::changedDefaultTextEncoding(int index)
{
    const QVariant encoding =
        _defaultTextEncodingPopUp->itemData(index, EncodingManager::RepresentedObjectRole);
    if (encoding.isValid()) {
        store().setUnsignedInteger(encoding.toULongLong(), SettingsKey::DefaultsTextEncoding);
    }
}

void PreferencesController::checkButton()
{
    // The chevron setting keeps its value either way.
    _usingChevronsMatching->setEnabled(_checkMatchingbraces->isChecked());
}

void PreferencesController::keyedArchiverOfObject(const QColor& object, const QString& key,
                                                  UserDefaults& withDefaults)
{
    withDefaults.setObject(ColorArchive::archivedData(object), key);
}

void PreferencesController::changedSyntaxColouringType(int tag)
{
    if (tag < 0 || tag > 4) {
        return;
    }
    const QList<QPair<QString, QColor>> colors = AppDelegate::defaultColors(tag);
    for (const auto& [name, color] : colors) {
        keyedArchiverOfObject(color, name, store());
    }
    if (_binding) {
        _binding->reload();
    }
}
