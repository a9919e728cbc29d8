#include "document/SaveFailureMessage.h"

#include "document/Document.h"
#include "platform/SafeFileWriter.h"

#include <QFileInfo>
#include <QHash>

#include <cerrno>

QString SaveFailureMessage::of(const QString& name, const SafeFileWriter& writer)
{
    using Step = SafeFileWriter::Step;
    const int code = writer.errorNumber();
    const QString reason = qt_error_string(code);
    const QString where = QFileInfo(writer.failedPath()).fileName();
    const Step step = writer.failedStep();
    if (step == Step::Inspect && code == ENOENT) {
        return Document::tr("The document “%1” could not be saved because the folder “%2” does "
                            "not exist.")
            .arg(name, writer.failedPath());
    }
    if (step == Step::NotRegularFile) {
        return code == EISDIR ? Document::tr("The document “%1” could not be saved because “%2” "
                                             "is a folder.")
                                    .arg(name, writer.failedPath())
                              : Document::tr("The document “%1” could not be saved because “%2” "
                                             "is not a regular file.")
                                    .arg(name, writer.failedPath());
    }
    QString message;
    if (step == Step::Backup) {
        message = Document::tr("The document “%1” could not be saved: a copy of the file’s "
                               "contents could not be kept in “%2” first (%3).")
                      .arg(name, writer.failedPath(), reason);
    } else if (code == ENOSPC) {
        message = Document::tr("The document “%1” could not be saved because the disk is full "
                               "(%2).")
                      .arg(name, reason);
    } else if (code == EDQUOT) {
        message = Document::tr("The document “%1” could not be saved because your disk quota is "
                               "used up (%2).")
                      .arg(name, reason);
    } else if (code == EROFS) {
        message = Document::tr("The document “%1” could not be saved because the disk holding it "
                               "is read-only (%2).")
                      .arg(name, reason);
    } else if ((code == EACCES || code == EPERM) && step == Step::Create) {
        return Document::tr("The document “%1” could not be saved because you don’t have "
                            "permission to write in the folder “%2”.")
            .arg(name, where);
    } else if ((code == EACCES || code == EPERM) && step == Step::Open) {
        return Document::tr("The document “%1” could not be saved because you don’t have "
                            "permission to write to the file “%2”.")
            .arg(name, where);
    } else {
        static const QHash<Step, const char*> doing = {
            {Step::Inspect, QT_TRANSLATE_NOOP("Document", "Examining the file failed")},
            {Step::Create, QT_TRANSLATE_NOOP("Document", "Creating the new file failed")},
            {Step::Open, QT_TRANSLATE_NOOP("Document", "Opening the file failed")},
            {Step::Reserve, QT_TRANSLATE_NOOP("Document", "Reserving space on the disk failed")},
            {Step::Write, QT_TRANSLATE_NOOP("Document", "Writing to the disk failed")},
            {Step::Sync, QT_TRANSLATE_NOOP("Document", "Flushing the file to the disk failed")},
            {Step::Close, QT_TRANSLATE_NOOP("Document", "Closing the file failed")},
            {Step::Rename, QT_TRANSLATE_NOOP("Document", "Replacing the old file failed")},
        };
        message = Document::tr("The document “%1” could not be saved. %2: %3.")
                      .arg(name, Document::tr(doing.value(step, "")), reason);
    }
    if (writer.oldBytesKept()) {
        return message + u' ' + Document::tr("The file on the disk was left as it was.");
    }
    return message + u' ' +
           Document::tr("The file on the disk may be incomplete: its previous contents are kept "
                        "in “%1”.")
               .arg(writer.backupPath());
}
