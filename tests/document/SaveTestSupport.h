#pragma once

#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

class Document;

/// What the tests of saving share.
namespace SaveTestSupport {

/// A text of about `size` characters whose every line names `tag`, so that two of them differ
/// everywhere.
QString largeText(char tag, qsizetype size);

/// Every file of a folder, hidden ones included.
QStringList filesIn(const QString& dir);

/// The checks every failed save must pass: the file holds `onDisk`, the window still shows
/// `text`, and the document is still modified.
void expectNothingLost(const Document& document, const QString& path, const QByteArray& onDisk,
                       const QString& text);

/// Mounts a file system of 2 MB on a fresh folder and returns the folder; an empty string,
/// with the system's reason in `why`, where mounting is not permitted.
QString mountSmallDisk(QString* why);

/// Fills the file system holding `dir` to the last byte.
void fillUp(const QString& dir);

struct ChildRun {
    int status = -1;
    QString output;
    bool skipped = false;
};

/// Runs one test of this program (usually a disabled one) in a child process, with
/// `environment` added to this one's. With `ownMounts`, the child has a mount namespace of
/// its own (in a user namespace of its own where an unprivileged user needs one), so that what
/// it mounts disappears with it.
ChildRun runChild(const QString& test, const QProcessEnvironment& environment, bool ownMounts);

} // namespace SaveTestSupport
