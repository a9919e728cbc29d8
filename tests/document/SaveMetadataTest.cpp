// A save changes the file's bytes and nothing else about it: its other names, the link that
// leads to it, its owner, mode, attributes and ACLs stay, and a writable file is saved even
// in a folder that is not writable.
#include "PermissionsEnforced.h"
#include "SaveTestSupport.h"
#include "TestSupport.h"
#include "document/Document.h"
#include "platform/ExtendedAttributes.h"
#include "platform/FileManager.h"

#include <QFile>
#include <QFileInfo>

#include <gtest/gtest.h>

#include <cstring>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

using namespace SaveTestSupport;

namespace {

constexpr quint64 kUTF8 = 4;
constexpr quint64 kLatin1 = 5;

struct stat statusOf(const QString& path)
{
    struct stat status {
    };
    ::lstat(QFile::encodeName(path).constData(), &status);
    return status;
}

// An access ACL that also lets the user 4242 read and write, in the kernel's format.
QByteArray aclGrantingUser4242()
{
    struct Entry {
        quint16 tag;
        quint16 permissions;
        quint32 id;
    };
    const quint32 none = 0xFFFFFFFF;
    const Entry entries[] = {
        {0x01, 6, none}, // the owner
        {0x02, 6, 4242}, // user 4242
        {0x04, 4, none}, // the group
        {0x10, 6, none}, // the mask
        {0x20, 0, none}, // others
    };
    const quint32 version = 2;
    return QByteArray(reinterpret_cast<const char*>(&version), sizeof version) +
           QByteArray(reinterpret_cast<const char*>(entries), sizeof entries);
}

// Opens `path`, replaces its text and saves it; the checks that every successful save passes.
void saveNewText(const QString& path, const QString& text, quint64 encoding = kUTF8)
{
    TestDocument document;
    ASSERT_TRUE(document.readFromURL(path, QString()));
    document.setTextStorage(text);
    document.setSavePanelChoice(encoding, 0);
    QString error;
    ASSERT_TRUE(document.writeSafelyToURL(path, QString(), Document::SaveAs, &error))
        << error.toStdString();
    EXPECT_FALSE(document.isDocumentEdited());
    EXPECT_EQ(document.documentEncoding(), encoding);
}

} // namespace

TEST(SaveMetadata, LinksOwnerModeAttributesAndAclsStay)
{
    const QString dir = TestSupport::makeTempDir();
    const QByteArray old = "old bytes\n";
    const QString text = QStringLiteral("new text, caf\u00e9\n");
    const QString backups = FileManager::applicationSupportDirectoryPath() + "/Backups";

    // Two names of one file: both show the new bytes.
    const QString first = TestSupport::writeFile(dir + "/first.txt", old);
    ASSERT_EQ(::link(QFile::encodeName(first).constData(),
                     QFile::encodeName(dir + "/second.txt").constData()),
              0);
    const ino_t inode = statusOf(first).st_ino;
    saveNewText(first, text);
    EXPECT_EQ(TestSupport::readFile(dir + "/second.txt"), text.toUtf8());
    EXPECT_EQ(statusOf(first).st_ino, inode);
    EXPECT_EQ(statusOf(first).st_nlink, 2u);

    // A symbolic link stays a link; the file it leads to gets the bytes, and its encoding
    // attribute follows the encoding the text is saved in.
    const QString target = TestSupport::writeFile(dir + "/sub/target.txt", old);
    const bool attributes =
        ExtendedAttributes::write(target, "com.apple.TextEncoding", "UTF-8;134217984");
    ASSERT_TRUE(QFile::link("sub/target.txt", dir + "/link.txt"));
    saveNewText(dir + "/link.txt", text, kLatin1);
    EXPECT_TRUE(QFileInfo(dir + "/link.txt").isSymLink());
    EXPECT_EQ(QFile::symLinkTarget(dir + "/link.txt"), target);
    EXPECT_EQ(TestSupport::readFile(target), text.toLatin1());
    if (attributes) {
        EXPECT_EQ(Document::textEncodingAttributeOfURL(target), kLatin1);
    }
    EXPECT_EQ(filesIn(dir), (QStringList{"first.txt", "link.txt", "second.txt"}));
    EXPECT_EQ(filesIn(dir + "/sub"), QStringList{"target.txt"});

    // Mode, attributes and the ACL.
    const QString kept = TestSupport::writeFile(dir + "/kept.txt", old);
    const QByteArray file = QFile::encodeName(kept);
    ASSERT_EQ(::chmod(file.constData(), 0751), 0);
    const QByteArray acl = aclGrantingUser4242();
    const bool acls = ::setxattr(file.constData(), "system.posix_acl_access", acl.constData(),
                                 size_t(acl.size()), 0) == 0;
    if (attributes) {
        ASSERT_TRUE(ExtendedAttributes::write(kept, "user.origin", "kept"));
    }
    const mode_t mode = statusOf(kept).st_mode;
    saveNewText(kept, text);
    EXPECT_EQ(TestSupport::readFile(kept), text.toUtf8());
    EXPECT_EQ(statusOf(kept).st_mode, mode);
    if (attributes) {
        EXPECT_EQ(ExtendedAttributes::read(kept, "user.origin").value_or(""), "kept");
    }
    if (acls) {
        QByteArray value(256, '\0');
        const ssize_t size = ::getxattr(file.constData(), "system.posix_acl_access", value.data(),
                                        size_t(value.size()));
        EXPECT_EQ(value.left(size), acl);
    }

    // Another user's file, saved by root, stays theirs.
    if (::geteuid() == 0) {
        const QString theirs = TestSupport::writeFile(dir + "/theirs.txt", old);
        ASSERT_EQ(::chown(QFile::encodeName(theirs).constData(), 4242, 4243), 0);
        ASSERT_EQ(::chmod(QFile::encodeName(theirs).constData(), 0640), 0);
        saveNewText(theirs, text);
        EXPECT_EQ(TestSupport::readFile(theirs), text.toUtf8());
        EXPECT_EQ(statusOf(theirs).st_uid, 4242u);
        EXPECT_EQ(statusOf(theirs).st_gid, 4243u);
        EXPECT_EQ(statusOf(theirs).st_mode & 07777, 0640u);
    }

    // A writable file in a folder that is not: written in place, the folder left as it was.
    const QString shut = dir + "/shut";
    const QString inShut = TestSupport::writeFile(shut + "/notes.txt", old);
    const ino_t shutInode = statusOf(inShut).st_ino;
    ASSERT_TRUE(QFile::setPermissions(shut, QFile::ReadOwner | QFile::ExeOwner));
    {
        const PermissionsEnforced enforced;
        saveNewText(inShut, text);
    }
    EXPECT_EQ(TestSupport::readFile(inShut), text.toUtf8());
    EXPECT_EQ(statusOf(inShut).st_ino, shutInode);
    EXPECT_EQ(filesIn(shut), QStringList{"notes.txt"});
    EXPECT_EQ(filesIn(backups), QStringList());
    QFile::setPermissions(shut, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

TEST(SaveMetadata, WhatMayNotBeWrittenIsRefusedNamingTheMissingPermission)
{
    const QString dir = TestSupport::makeTempDir();
    const QByteArray old = "old bytes\n";
    const QString shut = dir + "/shut";
    const QString locked = TestSupport::writeFile(dir + "/locked.txt", old);
    ASSERT_TRUE(QFile::setPermissions(locked, QFile::ReadOwner));
    TestSupport::writeFile(shut + "/other.txt", old);
    ASSERT_TRUE(QFile::setPermissions(shut, QFile::ReadOwner | QFile::ExeOwner));

    struct Case {
        QString path;
        QString message;
    };
    const Case cases[] = {
        {locked, "The document “locked.txt” could not be saved because you don’t have permission "
                 "to write to the file “locked.txt”."},
        {shut + "/new.txt", "The document “new.txt” could not be saved because you don’t have "
                            "permission to write in the folder “shut”."},
    };
    for (const Case& c : cases) {
        TestDocument document;
        ASSERT_TRUE(document.readFromURL(locked, QString()));
        document.setTextStorage("mine\n");
        document.setSavePanelChoice(kUTF8, 0);
        QString error;
        {
            const PermissionsEnforced enforced;
            EXPECT_FALSE(document.writeSafelyToURL(c.path, QString(), Document::SaveAs, &error));
        }
        EXPECT_EQ(error.toStdString(), c.message.toStdString());
        expectNothingLost(document, locked, old, "mine\n");
        EXPECT_FALSE(QFileInfo::exists(shut + "/new.txt"));
        EXPECT_EQ(document.fileURL(), locked);
    }
    QFile::setPermissions(shut, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}
