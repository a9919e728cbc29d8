#include "app/DocumentWindow.h"

#include "platform/UserDefaults.h"

#include <QFile>
#include <QFileInfo>
#include <QFont>
#include <QMessageBox>
#include <QPlainTextEdit>

DocumentWindow::DocumentWindow(const QString& path, QWidget* parent)
    : QMainWindow(parent)
{
    setAttribute(Qt::WA_DeleteOnClose);
    _textView = new QPlainTextEdit(this);
    setCentralWidget(_textView);

    const UserDefaults& defaults = UserDefaults::standardUserDefaults();
    QFont font(defaults.stringForKey(QStringLiteral("DefaultFont")));
    font.setStyleHint(QFont::Monospace);
    const qint64 size = defaults.integerForKey(QStringLiteral("DefaultFontSize"));
    font.setPointSize(size > 0 ? int(size) : 12);
    _textView->setFont(font);
    resize(800, 600);

    if (path.isEmpty()) {
        setWindowTitle(tr("Untitled"));
        return;
    }
    setWindowTitle(QFileInfo(path).fileName());
    QFile file(path);
    if (file.open(QIODevice::ReadOnly)) {
        _textView->setPlainText(QString::fromUtf8(file.readAll()));
    } else if (file.exists()) {
        QMessageBox::warning(
            this, tr("Error"),
            tr("The file “%1” could not be opened: %2").arg(path, file.errorString()));
    }
}
