#include "window/DiskComparisonDialog.h"

#include "document/Document.h"
#include "document/EncodingManager.h"
#include "platform/TextCodec.h"

#include <QDialogButtonBox>
#include <QFile>
#include <QFileInfo>
#include <QFontDatabase>
#include <QLabel>
#include <QPlainTextEdit>
#include <QProcess>
#include <QPushButton>
#include <QTextBlock>
#include <QTextCursor>
#include <QVBoxLayout>

namespace {

bool writeText(const QString& path, const QString& text)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) &&
           file.write(text.toUtf8()) >= 0 && file.flush();
}

// The file's text with LF line breaks, in the document's encoding when its bytes decode in
// it (the other program may have written another one).
QString textOnDisk(const Document* document, bool* readable)
{
    QFile file(document->fileURL());
    *readable = file.open(QIODevice::ReadOnly);
    const QByteArray bytes = *readable ? file.readAll() : QByteArray();
    QString text =
        TextCodec::decode(document->documentEncoding(), bytes).value_or(QString::fromUtf8(bytes));
    if (text.startsWith(QChar::ByteOrderMark)) {
        text.remove(0, 1);
    }
    return EncodingManager::sharedEncodingManager().replaceLineBreaks(0, text);
}

} // namespace

DiskComparisonDialog::DiskComparisonDialog(Document* document, QWidget* parent)
    : QDialog(parent)
    , _diff(new QProcess(this))
{
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(tr("“%1”: on Disk and in This Window").arg(document->displayName()));
    auto* layout = new QVBoxLayout(this);
    _legend = new QLabel(tr("Comparing…"), this);
    _legend->setWordWrap(true);
    layout->addWidget(_legend);
    _text = new QPlainTextEdit(this);
    _text->setObjectName(QStringLiteral("differences"));
    _text->setReadOnly(true);
    _text->setLineWrapMode(QPlainTextEdit::NoWrap);
    _text->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    layout->addWidget(_text, 1);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout->addWidget(buttons);
    resize(720, 480);
    start(document);
}

QString DiskComparisonDialog::differences() const
{
    return _done ? _text->toPlainText() : QString();
}

void DiskComparisonDialog::start(Document* document)
{
    const QString name = document->displayName();
    bool readable = false;
    const QString disk = _folder.filePath(QStringLiteral("disk"));
    const QString buffer = _folder.filePath(QStringLiteral("window"));
    const QString onDisk = textOnDisk(document, &readable);
    if (!readable) {
        showResult(
            tr("“%1” cannot be read from the disk, so there is nothing to compare.").arg(name),
            false);
        return;
    }
    if (!_folder.isValid() || !writeText(disk, onDisk) || !writeText(buffer, document->string())) {
        showResult(
            tr("The texts could not be compared: no temporary copy of them could be written."),
            false);
        return;
    }
    connect(_diff, &QProcess::finished, this, [this](int code, QProcess::ExitStatus status) {
        const QString output = QString::fromUtf8(_diff->readAllStandardOutput());
        if (status == QProcess::NormalExit && code == 0) {
            showResult(tr("The file on disk holds the same text as this window."), false);
        } else if (status == QProcess::NormalExit && code == 1) {
            showResult(output, true);
        } else {
            showResult(tr("The texts could not be compared: %1")
                           .arg(QString::fromLocal8Bit(_diff->readAllStandardError()).trimmed()),
                       false);
        }
    });
    connect(_diff, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart) {
            showResult(tr("The texts could not be compared: the program “diff” could not be run."),
                       false);
        }
    });
    _diff->start(QStringLiteral("diff"),
                 {QStringLiteral("-u"), QStringLiteral("--label"), tr("%1 (on disk)").arg(name),
                  QStringLiteral("--label"), tr("%1 (this window)").arg(name), disk, buffer});
}

void DiskComparisonDialog::showResult(const QString& text, bool isDiff)
{
    _done = true;
    _legend->setText(isDiff ? tr("Lines starting with - are only on disk; lines starting with + "
                                 "are only in this window.")
                            : QString());
    _legend->setVisible(isDiff);
    _text->setPlainText(text);
    if (isDiff) {
        // Colours go on this dialog's own copy of the text: removed lines red, added green.
        const QColor removed(0xE0, 0x40, 0x40, 0x40);
        const QColor added(0x40, 0xB0, 0x40, 0x40);
        for (QTextBlock block = _text->document()->begin(); block.isValid(); block = block.next()) {
            const QString line = block.text();
            const bool header =
                line.startsWith(QLatin1String("---")) || line.startsWith(QLatin1String("+++"));
            if (header || (!line.startsWith(u'-') && !line.startsWith(u'+'))) {
                continue;
            }
            QTextCursor cursor(block);
            QTextBlockFormat format;
            format.setBackground(line.startsWith(u'-') ? removed : added);
            cursor.setBlockFormat(format);
        }
    }
    Q_EMIT compared();
}
