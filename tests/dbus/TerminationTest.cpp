// The editor's whole run, ended as a session ends: another process sends SIGTERM while a
// script's process runs and a document has unsaved changes.
#include "TestSupport.h"
#include "app/Application.h"
#include "app/CommandLine.h"
#include "app/DocumentController.h"
#include "document/Document.h"
#include "document/RecoveryStore.h"
#include "platform/UserDefaults.h"
#include "scripts/ScriptManager.h"

#include <QFile>
#include <QProcess>
#include <QTimer>

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>

TEST(Termination, ASignalEndsTheScriptsProcessAndKeepsTheUnsavedText)
{
    const QString file =
        TestSupport::writeFile(TestSupport::makeTempDir() + "/notes.txt", "on disk\n");
    DocumentController& documents = DocumentController::sharedDocumentController();
    Document* document = nullptr;
    qint64 child = 0;
    QTimer::singleShot(0, [&] {
        ASSERT_EQ(documents.documents().size(), 1u);
        document = documents.documents().front();
        document->setTextStorage(QStringLiteral("edited\n"));
        ScriptManager& scripts = ScriptManager::sharedScriptManager();
        scripts.runScriptWithSource(QStringLiteral("#!/bin/sh\nexec sleep 60\n"),
                                    QStringLiteral("ShellScript"));
        ASSERT_TRUE(scripts.task() && scripts.task()->waitForStarted());
        child = scripts.task()->processId();
        QProcess::startDetached("kill",
                                {"-TERM", QString::number(QCoreApplication::applicationPid())});
    });
    // Should the signal never come, the run ends anyway and the test fails.
    QTimer::singleShot(60000, [] { QCoreApplication::exit(1); });
    const int status = Application::instance()->run(CommandLine::parse({file}));

    EXPECT_EQ(status, 0);
    ASSERT_GT(child, 0);
    // The script's process ended with the editor.
    EXPECT_EQ(::kill(pid_t(child), 0), -1);
    EXPECT_EQ(errno, ESRCH);
    // The window is noted for the next start, and the text kept for it, even as the windows
    // close now; the file is as it was.
    EXPECT_TRUE(UserDefaults::standardUserDefaults()
                    .objectForKey("RestorableDocuments")
                    .toStringList()
                    .contains(file));
    ASSERT_TRUE(document);
    const QString copy = RecoveryStore::sharedRecoveryStore().copyFile(document);
    documents.discardAllDocuments();
    EXPECT_TRUE(TestSupport::readFile(copy).endsWith("\nedited\n"));
    EXPECT_EQ(TestSupport::readFile(file), "on disk\n");
}
