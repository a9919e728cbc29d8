#include "app/SyntaxDefinitionEditor.h"

#include "app/DocumentController.h"
#include "app/KeyTypeDelegate.h"
#include "app/SyntaxEntryTableModel.h"
#include "platform/FileManager.h"
#include "platform/Preferences.h"
#include "platform/PropertyList.h"
#include "platform/UserDefaults.h"

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QSignalBlocker>
#include <QTableView>
#include <QToolButton>
#include <QVBoxLayout>

namespace {

QString pathOfDefinition(const QString& name)
{
    return FileManager::syntaxDefinitionDirectoryPathInPath(name + QStringLiteral(".plist"));
}

bool copyResource(const QString& resource, const QString& destination)
{
    if (!QFile::copy(resource, destination)) {
        return false;
    }
    // Resources are read-only; the user's copy is theirs to edit.
    QFile::setPermissions(destination,
                          QFile::permissions(destination) | QFile::WriteOwner | QFile::ReadOwner);
    return true;
}

// Puts the shipped definition `name` back in place of the user's copy; nothing for a
// definition the user made.
void restoreShipped(const QString& name)
{
    const QString resource =
        QStringLiteral(":/SyntaxDefinition/") + name + QStringLiteral(".plist");
    if (QFile::exists(resource)) {
        QFile::remove(pathOfDefinition(name));
        copyResource(resource, pathOfDefinition(name));
    }
}

// Two buttons standing for a segmented control: "+" is segment 0, "−" segment 1.
QWidget* makeSegments(QWidget* parent, const std::function<void(int)>& action)
{
    auto* box = new QWidget(parent);
    auto* layout = new QHBoxLayout(box);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    int segment = 0;
    for (const QString& title : {QStringLiteral("+"), QStringLiteral("\u2212")}) {
        auto* button = new QToolButton(box);
        button->setText(title);
        button->setFixedSize(26, 22);
        QObject::connect(button, &QToolButton::clicked, box,
                         [action, segment] { action(segment); });
        layout->addWidget(button);
        ++segment;
    }
    layout->addStretch();
    return box;
}

} // namespace

SyntaxDefinitionEditor::SyntaxDefinitionEditor(QWidget* parent)
    : QWidget(parent)
{
    _defaultSyntaxPopUp = new QComboBox(this);
    _defaultSyntaxPopUp->setObjectName(QStringLiteral("defaultSyntaxPopUp"));
    connect(_defaultSyntaxPopUp, &QComboBox::activated, this,
            &SyntaxDefinitionEditor::changedSyntaxName);

    _syntaxTableView = new QListWidget(this);
    _syntaxTableView->setObjectName(QStringLiteral("syntaxTableView"));
    connect(_syntaxTableView, &QListWidget::currentRowChanged, this,
            &SyntaxDefinitionEditor::tableViewSelectionDidChange);

    _definitionPopUp = new QComboBox(this);
    _definitionPopUp->setObjectName(QStringLiteral("definitionPopUp"));
    _definitionPopUp->addItems(SyntaxEntryTableModel::categoryKeys());
    connect(_definitionPopUp, &QComboBox::currentIndexChanged, this,
            &SyntaxDefinitionEditor::selectedKeyFunction);

    _entryModel = new SyntaxEntryTableModel(&_syntaxDictionary, this);
    connect(_entryModel, &SyntaxEntryTableModel::edited, this,
            [this] { _saveSyntaxDictionary = true; });
    _wordTableView = new QTableView(this);
    _wordTableView->setObjectName(QStringLiteral("wordTableView"));
    _wordTableView->setModel(_entryModel);
    _wordTableView->setItemDelegate(new KeyTypeDelegate(_wordTableView));
    _wordTableView->setSelectionBehavior(QAbstractItemView::SelectRows);
    _wordTableView->setSelectionMode(QAbstractItemView::SingleSelection);
    _wordTableView->verticalHeader()->hide();
    _wordTableView->verticalHeader()->setDefaultSectionSize(20);
    _wordTableView->horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    // Small type, as in the cells, so that the narrow " Regx" and " Bold" headers fit.
    QFont small = _wordTableView->horizontalHeader()->font();
    small.setPixelSize(11);
    _wordTableView->horizontalHeader()->setFont(small);
    _wordTableView->horizontalHeader()->setMinimumSectionSize(20);
    _wordTableView->setEditTriggers(QAbstractItemView::DoubleClicked |
                                    QAbstractItemView::EditKeyPressed |
                                    QAbstractItemView::SelectedClicked);

    auto* restore = new QPushButton(tr("Restore"), this);
    restore->setObjectName(QStringLiteral("syntaxRestore"));
    connect(restore, &QPushButton::clicked, this, &SyntaxDefinitionEditor::syntaxRestore);
    auto* restoreAll = new QPushButton(tr("Restore All"), this);
    restoreAll->setObjectName(QStringLiteral("syntaxRestoreAll"));
    connect(restoreAll, &QPushButton::clicked, this, &SyntaxDefinitionEditor::syntaxRestoreAll);

    auto* layout = new QGridLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    auto* top = new QHBoxLayout;
    top->addWidget(new QLabel(tr("Default syntax:"), this));
    top->addWidget(_defaultSyntaxPopUp, 1);
    layout->addLayout(top, 0, 0, 1, 2);
    layout->addWidget(new QLabel(tr("Definitions:"), this), 1, 0);
    auto* category = new QHBoxLayout;
    category->addWidget(new QLabel(tr("Category:"), this));
    category->addWidget(_definitionPopUp, 1);
    layout->addLayout(category, 1, 1);
    layout->addWidget(_syntaxTableView, 2, 0);
    layout->addWidget(_wordTableView, 2, 1);
    auto* definitionButtons = new QHBoxLayout;
    definitionButtons->addWidget(
        makeSegments(this, [this](int segment) { segmentSyntaxDefinition(segment); }));
    definitionButtons->addWidget(restore);
    definitionButtons->addWidget(restoreAll);
    layout->addLayout(definitionButtons, 3, 0);
    layout->addWidget(makeSegments(this, [this](int segment) { segmentKeyWordObject(segment); }), 3,
                      1);
    layout->setColumnStretch(0, 2);
    layout->setColumnStretch(1, 5);
}

QStringList SyntaxDefinitionEditor::definitionFileNames()
{
    QStringList names;
    const QString folder = FileManager::syntaxDefinitionDirectoryPathInPath();
    for (const QString& file : QDir(folder).entryList(QDir::Files, QDir::Unsorted)) {
        if (!file.startsWith(u'.')) {
            names.append(file);
        }
    }
    return names;
}

void SyntaxDefinitionEditor::makeSyntaxDefinitions()
{
    _definitions.clear();
    for (const QString& file : definitionFileNames()) {
        _definitions.append(QFileInfo(file).completeBaseName());
    }
    int row = std::max(0, _syntaxTableView->currentRow());
    {
        const QSignalBlocker blocker(_syntaxTableView);
        _syntaxTableView->clear();
        _syntaxTableView->addItems(_definitions);
        row = std::min(row, int(_definitions.size()) - 1);
        _syntaxTableView->setCurrentRow(row);
    }
    loadSyntaxDictionary(row);
    selectedKeyFunction();
}

void SyntaxDefinitionEditor::loadSyntaxDictionary(int row)
{
    _syntaxDictionary.clear();
    _saveSyntaxDictionary = false;
    if (row >= 0 && row < _definitions.size()) {
        _syntaxDictionary = PropertyList::readDictionary(pathOfDefinition(_definitions[row]))
                                .value_or(QVariantMap());
    }
    _entryModel->reload();
}

void SyntaxDefinitionEditor::selectDefinitionRow(int row)
{
    const QSignalBlocker blocker(_syntaxTableView);
    _syntaxTableView->setCurrentRow(row);
    if (QListWidgetItem* item = _syntaxTableView->item(row)) {
        _syntaxTableView->scrollToItem(item);
    }
}

void SyntaxDefinitionEditor::makeSyntaxPopUpMenu()
{
    const QSignalBlocker blocker(_defaultSyntaxPopUp);
    _defaultSyntaxPopUp->clear();
    _defaultSyntaxPopUp->addItem(QStringLiteral("Default For File Type"), 0);
    _defaultSyntaxPopUp->addItem(QStringLiteral("None"), 1);
    _defaultSyntaxPopUp->insertSeparator(2);
    for (const QString& file : definitionFileNames()) {
        if (file == u"Plain Text.plist") {
            continue;
        }
        _defaultSyntaxPopUp->addItem(QFileInfo(file).completeBaseName(), 2);
    }
    _defaultSyntaxPopUp->insertSeparator(_defaultSyntaxPopUp->count());
    _defaultSyntaxPopUp->addItem(QStringLiteral("Plain Text"), 2);

    const WindowSettings settings = Preferences::sharedPreferences().current().window;
    const bool colouring = settings.syntaxColouring;
    const bool byType = settings.defaultForFileType;
    if (!colouring && byType) {
        _defaultSyntaxPopUp->setCurrentIndex(0);
    } else if (!colouring && !byType) {
        _defaultSyntaxPopUp->setCurrentIndex(1);
    } else {
        _defaultSyntaxPopUp->setCurrentIndex(
            _defaultSyntaxPopUp->findText(settings.defaultsSyntaxName, Qt::MatchExactly));
    }
}

void SyntaxDefinitionEditor::changedSyntaxName(int index)
{
    UserDefaults& defaults = UserDefaults::standardUserDefaults();
    const int tag = _defaultSyntaxPopUp->itemData(index).toInt();
    if (tag == 0) {
        defaults.setBool(false, SettingsKey::SyntaxColouring);
        defaults.setBool(true, SettingsKey::DefaultForFileType);
    } else if (tag == 1) {
        defaults.setBool(false, SettingsKey::SyntaxColouring);
        defaults.setBool(false, SettingsKey::DefaultForFileType);
    } else {
        defaults.setBool(true, SettingsKey::SyntaxColouring);
        defaults.setBool(false, SettingsKey::DefaultForFileType);
        defaults.setObject(_defaultSyntaxPopUp->itemText(index), SettingsKey::DefaultsSyntaxName);
    }
}

void SyntaxDefinitionEditor::selectedKeyFunction()
{
    _entryModel->setCategory(_definitionPopUp->currentText());
    resizeEntryColumns();
}

void SyntaxDefinitionEditor::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    resizeEntryColumns();
}

void SyntaxDefinitionEditor::resizeEntryColumns()
{
    const int width = std::max(_wordTableView->viewport()->width(), 200);
    const QList<int> widths = _entryModel->columnWidths(width);
    for (int column = 0; column < widths.size(); ++column) {
        _wordTableView->setColumnWidth(column, std::max(widths[column], 20));
    }
    _wordTableView->horizontalHeader()->setStretchLastSection(widths.size() == 1);
}

void SyntaxDefinitionEditor::tableViewSelectionDidChange()
{
    saveSyntaxDictionaryIfEdited();
    loadSyntaxDictionary(_syntaxTableView->currentRow());
    _entryModel->reload();
}

bool SyntaxDefinitionEditor::saveSyntaxDictionaryIfEdited()
{
    if (!_saveSyntaxDictionary) {
        return false;
    }
    const QString name = _syntaxDictionary.value(QStringLiteral("Name")).toString();
    PropertyList::writeXml(_syntaxDictionary, pathOfDefinition(name));
    _saveSyntaxDictionary = false;
    return true;
}

void SyntaxDefinitionEditor::segmentKeyWordObject(int segment)
{
    if (!_entryModel->isList()) {
        return;
    }
    if (segment == 0) {
        const int row = _entryModel->addEntry();
        const QModelIndex index = _entryModel->index(row, 0);
        _wordTableView->setCurrentIndex(index);
        _wordTableView->scrollTo(index);
        if (!_entryModel->isCheckBoxColumn(0)) {
            _wordTableView->edit(index);
        }
        return;
    }
    // Not while a cell is being edited.
    const QWidget* focus = QApplication::focusWidget();
    if (focus && focus->parentWidget() == _wordTableView->viewport()) {
        return;
    }
    const int row = _wordTableView->currentIndex().row();
    if (!_entryModel->removeEntry(row)) {
        return;
    }
    const int rows = _entryModel->rowCount();
    if (rows > 0) {
        const QModelIndex index = _entryModel->index(std::min(row, rows - 1), 0);
        _wordTableView->setCurrentIndex(index);
        _wordTableView->scrollTo(index);
    }
}

void SyntaxDefinitionEditor::segmentSyntaxDefinition(int segment)
{
    // Edits of the definition being left are kept.
    saveSyntaxDictionaryIfEdited();
    if (segment == 0) {
        copyResource(QStringLiteral(":/Untitled.plist"),
                     pathOfDefinition(QStringLiteral("Untitled")));
        _definitions.append(QStringLiteral("Untitled"));
        {
            const QSignalBlocker blocker(_syntaxTableView);
            _syntaxTableView->addItem(QStringLiteral("Untitled"));
        }
        const int row = int(_definitions.size()) - 1;
        selectDefinitionRow(row);
        loadSyntaxDictionary(row);
        makeSyntaxPopUpMenu();
        return;
    }
    const int row = _syntaxTableView->currentRow();
    if (row < 0 || row >= _definitions.size()) {
        return;
    }
    QFile::remove(pathOfDefinition(_definitions[row]));
    _definitions.removeAt(row);
    {
        const QSignalBlocker blocker(_syntaxTableView);
        delete _syntaxTableView->takeItem(row);
    }
    const int next = std::min(row, int(_definitions.size()) - 1);
    selectDefinitionRow(next);
    loadSyntaxDictionary(next);
    makeSyntaxPopUpMenu();
}

void SyntaxDefinitionEditor::syntaxRestore()
{
    const int row = _syntaxTableView->currentRow();
    if (row >= 0 && row < _definitions.size()) {
        restoreShipped(_definitions[row]);
    }
    makeSyntaxPopUpMenu();
    makeSyntaxDefinitions();
}

void SyntaxDefinitionEditor::syntaxRestoreAll()
{
    for (const QString& name : DocumentController::shippedSyntaxNames()) {
        restoreShipped(name);
    }
    makeSyntaxPopUpMenu();
    makeSyntaxDefinitions();
}
