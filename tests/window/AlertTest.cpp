// What the alerts of the document window ask, as the user reads them: the question in the
// body, where nothing cuts it off, and the explanation below it.
#include "TestSupport.h"
#include "app/DocumentController.h"
#include "document/Document.h"
#include "window/DocumentWindow.h"
#include "window/WindowController.h"

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QTextCursor>
#include <QTextDocument>
#include <QTimer>

#include <gtest/gtest.h>

#include <functional>

namespace {

struct Seen {
    QString title;
    QString text;
    QString informativeText;
};

/// Runs `action`, answering the first alert it shows with the button of `role`.
Seen answerAlert(const std::function<void()>& action, QMessageBox::ButtonRole role)
{
    Seen seen;
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, [&] {
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            auto* alert = qobject_cast<QMessageBox*>(widget);
            if (!alert || !alert->isVisible()) {
                continue;
            }
            seen = {alert->windowTitle(), alert->text(), alert->informativeText()};
            for (QAbstractButton* button : alert->buttons()) {
                if (alert->buttonRole(button) == role) {
                    button->click();
                    return;
                }
            }
        }
    });
    poll.start(20);
    action();
    return seen;
}

TEST(Alerts, AskTheirQuestionInTheirBody)
{
    DocumentController& controller = DocumentController::sharedDocumentController();
    const QString dir = TestSupport::makeTempDir();
    Document* document = controller.openDocumentWithContentsOfURL(
        TestSupport::writeFile(dir + "/notes.txt", "saved\n"));
    ASSERT_NE(document, nullptr);
    QTextCursor(document->textStorage()).insertText(QString(5000, u'x'));
    WindowController* window = controller.windowControllerOf(document);
    ASSERT_NE(window, nullptr);

    const struct {
        const char* name;
        std::function<void()> action;
        QMessageBox::ButtonRole answer;
        QString text;
        QString informativeText;
    } cases[] = {
        {"closing an edited document", [&] { EXPECT_FALSE(controller.closeDocument(document)); },
         QMessageBox::RejectRole,
         QStringLiteral("Do you want to save the changes you made in “notes.txt”?"),
         QStringLiteral("Your changes will be lost if you don’t save them.")},
        {"reverting", [&] { controller.revertDocumentToSaved(document); }, QMessageBox::RejectRole,
         QStringLiteral("Do you want to revert to the most recently saved version of "
                        "“notes.txt”?"),
         QStringLiteral("Your current changes will be lost.")},
        {"sharing a long text on the web", [&] { window->shareUsing(2); }, QMessageBox::AcceptRole,
         QStringLiteral("The text is too long to share this way."),
         QStringLiteral("The whole text is shared, and this service takes at most 4,096 "
                        "characters. Send the file as an attachment instead.")},
    };
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const Seen seen = answerAlert(c.action, c.answer);
        EXPECT_EQ(seen.text, c.text);
        EXPECT_EQ(seen.informativeText, c.informativeText);
        EXPECT_FALSE(seen.title.contains(c.text));
    }
    // Every answer above left the document as it was.
    EXPECT_TRUE(document->string().startsWith(QString(5000, u'x')));
    controller.discardAllDocuments();
}

} // namespace
