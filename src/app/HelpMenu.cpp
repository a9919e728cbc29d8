#include "app/HelpMenu.h"

#include "app/DocumentController.h"
#include "document/RecoveryStore.h"
#include "platform/FileManager.h"
#include "platform/FileTitles.h"
#include "platform/UserDefaults.h"
#include "window/DocumentWindow.h"
#include "window/WindowController.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>

// TESSARAN_DOCDIR_FROM_BINDIR and TESSARAN_FULL_DOCDIR come from the build: where the
// installation puts the README, relative to the executable's folder and as installed under the
// configured prefix.

namespace {

const QString kReadMe = QStringLiteral("README.md");

QString htmlPath(const QString& path)
{
    return QStringLiteral("<tt>%1</tt>").arg(FileTitles::abbreviatedPath(path).toHtmlEscaped());
}

} // namespace

HelpMenu::HelpMenu(WindowController* controller)
    : QObject(controller)
{
    QWidget* window = controller->window();
    _helpMenu = controller->window()->menuBar()->addMenu(tr("&Help"));
    _helpMenu->setObjectName(QStringLiteral("helpMenu"));
    _helpMenu->addAction(tr("&ReadMe"), this, [window] { openReadMe(window); })
        ->setObjectName(QStringLiteral("readMe"));
    _helpMenu->addSeparator();
    QAction* about = _helpMenu->addAction(tr("&About %1").arg(FileManager::applicationName()), this,
                                          [window] { showAbout(window); });
    about->setObjectName(QStringLiteral("about"));
    about->setMenuRole(QAction::AboutRole);
}

QString HelpMenu::aboutText()
{
    const QString name = FileManager::applicationName();
    const QList<std::pair<QString, QString>> places = {
        {tr("Settings"), UserDefaults::standardUserDefaults().path()},
        {tr("Syntax definitions"), FileManager::syntaxDefinitionDirectoryPathInPath()},
        {tr("Scripts"), FileManager::scriptDirectoryPathInPath()},
        {tr("Recovery copies"), RecoveryStore::sharedRecoveryStore().root()},
        {tr("Backups during a save"), FileManager::backupDirectoryPath()},
        {tr("ReadMe"), readMePath(QCoreApplication::applicationDirPath())},
    };
    QString rows;
    for (const auto& [what, where] : places) {
        rows += QStringLiteral("<tr><td style=\"white-space:nowrap\">%1:&nbsp;</td>"
                               "<td style=\"white-space:nowrap\">%2</td></tr>")
                    .arg(what.toHtmlEscaped(), where.isEmpty() ? tr("not found") : htmlPath(where));
    }
    // No licence has been granted for the program yet, and the box must not claim one.
    return QStringLiteral("<h3>%1 %2</h3><p>%3</p><p>%4</p><p>%5</p><table>%6</table>")
        .arg(name, QStringLiteral(TESSARAN_VERSION), tr("A text editor for programmers."),
             tr("Licence: none has been granted yet. Until one is, the authors keep all "
                "rights to the program and its source."),
             tr("Where it keeps things:"), rows);
}

QStringList HelpMenu::readMeCandidates(const QString& applicationDir)
{
    const QDir dir(applicationDir);
    return {
        dir.absoluteFilePath(kReadMe),
        QDir::cleanPath(dir.absoluteFilePath(QStringLiteral(TESSARAN_DOCDIR_FROM_BINDIR)) + u'/' +
                        kReadMe),
        QStringLiteral(TESSARAN_FULL_DOCDIR "/") + kReadMe,
    };
}

QString HelpMenu::readMePath(const QString& applicationDir)
{
    for (const QString& candidate : readMeCandidates(applicationDir)) {
        if (QFileInfo(candidate).isFile()) {
            return candidate;
        }
    }
    return QString();
}

void HelpMenu::showAbout(QWidget* parent)
{
    auto* box = new QMessageBox(parent);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setObjectName(QStringLiteral("aboutBox"));
    box->setWindowTitle(tr("About %1").arg(FileManager::applicationName()));
    box->setTextFormat(Qt::RichText);
    box->setText(aboutText());
    box->setTextInteractionFlags(Qt::TextSelectableByMouse);
    box->setStandardButtons(QMessageBox::Ok);
    box->setWindowModality(parent ? Qt::WindowModal : Qt::ApplicationModal);
    box->open();
}

void HelpMenu::openReadMe(QWidget* parent)
{
    const QString applicationDir = QCoreApplication::applicationDirPath();
    const QString path = readMePath(applicationDir);
    if (!path.isEmpty()) {
        DocumentController::sharedDocumentController().openDocumentWithContentsOfURL(path);
        return;
    }
    auto* box = new QMessageBox(QMessageBox::Warning, tr("ReadMe"),
                                tr("The ReadMe could not be found."), QMessageBox::Ok, parent);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setObjectName(QStringLiteral("readMeMissing"));
    box->setInformativeText(
        tr("It was looked for in these places:\n%1\n\nInstalling the program again puts it in "
           "place.")
            .arg(readMeCandidates(applicationDir).join(u'\n')));
    box->setWindowModality(parent ? Qt::WindowModal : Qt::ApplicationModal);
    box->open();
}
