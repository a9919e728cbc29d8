#include "window/ScriptSheet.h"

#include "scripts/ScriptLibrary.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFileIconProvider>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

ScriptSheet::ScriptSheet(const ScriptLibrary& library, QWidget* window, bool withFolderPopUp)
    : QDialog(window)
    , _library(library)
{
    setWindowModality(window ? Qt::WindowModal : Qt::ApplicationModal);
    auto* layout = new QVBoxLayout(this);
    _scriptLabel = new QLabel(this);
    _scriptTitleField = new QLineEdit(this);
    layout->addWidget(_scriptLabel);
    if (withFolderPopUp) {
        _scriptFolderPopUp = new QComboBox(this);
        layout->addWidget(_scriptFolderPopUp);
    }
    layout->addWidget(_scriptTitleField);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout->addWidget(buttons);
}

void ScriptSheet::makeFolderPopup()
{
    if (!_scriptFolderPopUp) {
        return;
    }
    _scriptFolderPopUp->clear();
    _folders.clear();
    const QFileIconProvider icons;
    _scriptFolderPopUp->addItem(icons.icon(QFileIconProvider::Desktop), tr("Scripts Menu"));
    _folders.append(nullptr);
    if (!_library.entries(nullptr).isEmpty()) {
        _scriptFolderPopUp->insertSeparator(_scriptFolderPopUp->count());
        _folders.append(nullptr);
    }
    for (const auto& [folder, level] : _library.folders()) {
        _scriptFolderPopUp->addItem(icons.icon(QFileIconProvider::Folder),
                                    QString(level * 4, u' ') + folder->title());
        _scriptFolderPopUp->setItemData(_scriptFolderPopUp->count() - 1, level, Qt::UserRole + 1);
        _folders.append(folder);
    }
    _scriptFolderPopUp->setCurrentIndex(0);
}

ScriptObjectPtr ScriptSheet::selectedFolder() const
{
    if (!_scriptFolderPopUp) {
        return nullptr;
    }
    const int index = _scriptFolderPopUp->currentIndex();
    return index >= 0 && index < _folders.size() ? _folders[index] : nullptr;
}

QString ScriptSheet::runSheet()
{
    _scriptTitleField->setFocus();
    _scriptTitleField->selectAll();
    const bool confirmed = exec() == QDialog::Accepted;
    hide();
    return confirmed ? _scriptTitleField->text() : QString();
}
