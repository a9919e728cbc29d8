#include "window/SyntaxChoice.h"

#include "document/Document.h"
#include "editor/TextView.h"
#include "platform/TextSource.h"
#include "platform/WindowSettings.h"
#include "syntax/SyntaxDefinitionFolder.h"
#include "window/DocumentWindow.h"
#include "window/FunctionPopUp.h"
#include "window/WindowController.h"

#include <QAction>
#include <QFileInfo>

namespace {

const QString kNone = QStringLiteral("None");

} // namespace

void SyntaxChoice::read(const WindowSettings& settings)
{
    _syntaxColouring = settings.syntaxColouring;
    _defaultForFileType = settings.defaultForFileType;
    _selectedSyntaxName = settings.defaultsSyntaxName;
}

void SyntaxChoice::restore(const QString& syntaxName)
{
    _selectedSyntaxName = syntaxName;
    _syntaxColouring = true;
}

void SyntaxChoice::writeWindowIdentifier(const QString& syntaxName)
{
    const QString pane =
        _controller.isSidebarView() ? QString::number(_controller.lastSelectedType()) : kNone;
    _controller.setWindowIdentifier(pane + u':' + (syntaxName.isEmpty() ? kNone : syntaxName));
}

void SyntaxChoice::setFunctionPopUpShown(bool shown)
{
    if (DocumentWindow* window = _controller.window()) {
        window->functionPopUp()->setVisible(shown);
        // The definitions are read now, on a worker, so that the pop-up opens at once; those
        // of a large text when the pop-up is first opened.
        auto* popUp = qobject_cast<FunctionPopUp*>(window->functionPopUp());
        if (shown && popUp && _controller.document()->length() <= TextSource::eagerWorkLimit) {
            popUp->prepareFunctionDefinitions(_controller.textView());
        }
    }
}

void SyntaxChoice::fileChanged()
{
    const QString file = _controller.document()->fileURL();
    if (file != _syntaxFileURL) {
        const bool newExtension = _syntaxFileURL.isEmpty() ||
                                  QFileInfo(file).suffix() != QFileInfo(_syntaxFileURL).suffix();
        _syntaxFileURL = file;
        if (_defaultForFileType && newExtension) {
            syntaxSettingToTextView();
        }
    }
}

void SyntaxChoice::syntaxSettingToTextView()
{
    TextView* view = _controller.textView();
    if (!view) {
        return;
    }
    const QString file = _controller.document()->fileURL();
    _syntaxFileURL = file;
    if (_defaultForFileType && !file.isEmpty()) {
        const QString path =
            SyntaxDefinitionFolder::definitionPathForExtension(QFileInfo(file).suffix());
        if (!path.isEmpty()) {
            view->setSyntaxDictionay(path);
            setFunctionPopUpShown(true);
            _syntaxColouring = true;
            _selectedSyntaxName = SyntaxDefinitionFolder::syntaxNameOfPath(path);
            writeWindowIdentifier(_selectedSyntaxName);
            return;
        }
    }
    if (_syntaxColouring) {
        for (const QString& path :
             SyntaxDefinitionFolder::definitionPathsNamed(_selectedSyntaxName)) {
            view->setSyntaxDictionay(path);
            setFunctionPopUpShown(true);
            writeWindowIdentifier(_selectedSyntaxName);
        }
        return;
    }
    view->removeSyntaxDictionary();
    setFunctionPopUpShown(false);
    _selectedSyntaxName.clear();
    writeWindowIdentifier(QString());
}

void SyntaxChoice::selectedSyntaxColoring(QAction* item)
{
    const QString title = item->text();
    QString recorded;
    for (TextView* view : _controller.textViews()) {
        if (title == kNone) {
            view->removeSyntaxDictionary();
            setFunctionPopUpShown(false);
            _syntaxColouring = false;
            _defaultForFileType = false;
            _selectedSyntaxName.clear();
            recorded.clear();
        } else if (title == u"Default For File Type") {
            _syntaxColouring = false;
            _selectedSyntaxName.clear();
            _defaultForFileType = true;
            syntaxSettingToTextView();
            recorded.clear();
        } else {
            const QString path = item->data().toString();
            view->setSyntaxDictionay(path);
            setFunctionPopUpShown(true);
            _syntaxColouring = true;
            _defaultForFileType = false;
            _selectedSyntaxName = SyntaxDefinitionFolder::syntaxNameOfPath(path);
            recorded = _selectedSyntaxName;
        }
    }
    writeWindowIdentifier(recorded);
    _controller.updateToolbarInformation();
}

void SyntaxChoice::validate(QAction* item) const
{
    const QString title = item->text();
    const bool isDefault = title == u"Default For File Type";
    if (_defaultForFileType && !_syntaxColouring) {
        item->setChecked(isDefault);
    } else if (!_defaultForFileType && _syntaxColouring) {
        item->setChecked(title == _selectedSyntaxName);
    } else if (_defaultForFileType && _syntaxColouring) {
        item->setChecked(!isDefault && title == _selectedSyntaxName);
    } else {
        item->setChecked(title == u"None");
    }
    if (isDefault) {
        // Qt menus have no mixed state: the item shows the style's own mark of a partly
        // checked box where its check mark would be.
        DocumentWindow* window = _controller.window();
        item->setIcon(_defaultForFileType && _syntaxColouring && window ? window->mixedStateIcon()
                                                                        : QIcon());
    }
}
