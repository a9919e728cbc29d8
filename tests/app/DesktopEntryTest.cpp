#include <QFile>
#include <QMimeDatabase>

#include <gtest/gtest.h>

namespace {

const QString kData = QStringLiteral(TESSARAN_SOURCE_DIR "/data/");

} // namespace

TEST(DesktopEntry, ClaimsTheTextTypesOfTheShippedLanguages)
{
    QFile file(kData + "tessaran.desktop");
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    QString mimeTypes;
    for (const QByteArray& line : file.readAll().split('\n')) {
        if (line.startsWith("MimeType=")) {
            mimeTypes = QString::fromUtf8(line.mid(9));
        }
        EXPECT_FALSE(line.startsWith("Exec=") && !line.startsWith("Exec=tessaran")) << line.data();
    }
    const QStringList claimed = mimeTypes.split(u';', Qt::SkipEmptyParts);
    ASSERT_TRUE(claimed.contains("text/plain"));

    // Every language's usual file, as this desktop's MIME database names it.
    QMimeDatabase database;
    for (const char* name :
         {"a.c", "a.h", "a.cpp", "a.hpp", "a.mm", "a.css", "a.hs", "a.html", "a.java", "a.js",
          "a.pl", "a.php", "a.py", "a.rb", "a.sh", "a.sql", "a.xml", "a.txt"}) {
        const QMimeType type =
            database.mimeTypeForFile(QString::fromLatin1(name), QMimeDatabase::MatchExtension);
        if (type.isDefault()) {
            continue; // this machine's database does not know the extension
        }
        bool covered = claimed.contains(type.name());
        for (const QString& alias : type.aliases()) {
            covered = covered || claimed.contains(alias);
        }
        EXPECT_TRUE(covered) << name << " is " << type.name().toStdString();
    }

    for (const char* icon : {"icons/tessaran.svg", "icons/hicolor/48x48/apps/tessaran.png",
                             "icons/hicolor/scalable/apps/tessaran.svg", "tessaran.1"}) {
        EXPECT_TRUE(QFile::exists(kData + QLatin1String(icon))) << icon;
    }
}
