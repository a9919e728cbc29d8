#include "platform/FileTitles.h"

#include <QDir>
#include <QFileInfo>
#include <QHash>
#include <QSet>

namespace {

/// The last `count` names of `folder` (its path with the home folder as "~") joined by '/'.
QString folderSuffix(const QString& folder, qsizetype count)
{
    const QStringList parts = folder.split(u'/', Qt::SkipEmptyParts);
    return parts.sliced(std::max<qsizetype>(0, parts.size() - count)).join(u'/');
}

} // namespace

QString FileTitles::abbreviatedPath(const QString& path)
{
    const QString home = QDir::homePath();
    if (home != u"/" && (path == home || path.startsWith(home + u'/'))) {
        return u'~' + path.mid(home.size());
    }
    return path;
}

QStringList FileTitles::distinctTitles(const QStringList& paths)
{
    QHash<QString, QList<qsizetype>> byName;
    QStringList titles;
    for (qsizetype i = 0; i < paths.size(); ++i) {
        const QString name = QFileInfo(paths[i]).fileName();
        titles.append(name);
        byName[name].append(i);
    }
    for (auto it = byName.cbegin(); it != byName.cend(); ++it) {
        const QList<qsizetype>& group = it.value();
        if (group.size() < 2) {
            continue;
        }
        QStringList folders;
        qsizetype deepest = 0;
        for (qsizetype i : group) {
            folders.append(abbreviatedPath(QFileInfo(paths[i]).absolutePath()));
            deepest = std::max(deepest, folders.last().split(u'/', Qt::SkipEmptyParts).size());
        }
        // The fewest trailing folder names that tell every file of the group apart; a folder
        // with no more names than that shows whole.
        qsizetype count = 1;
        for (; count < deepest; ++count) {
            QSet<QString> suffixes;
            for (const QString& folder : folders) {
                suffixes.insert(folderSuffix(folder, count));
            }
            if (suffixes.size() == folders.size()) {
                break;
            }
        }
        for (qsizetype j = 0; j < group.size(); ++j) {
            const QString& folder = folders[j];
            const bool whole = folder.split(u'/', Qt::SkipEmptyParts).size() <= count;
            titles[group[j]] =
                it.key() + QStringLiteral(" — ") + (whole ? folder : folderSuffix(folder, count));
        }
    }
    return titles;
}
