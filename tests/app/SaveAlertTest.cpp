// The alert of a save that cannot encode a character offers to save in UTF-8; whichever button
// the user presses, nothing is lost.
#include "TestSupport.h"
#include "app/DocumentController.h"
#include "document/Document.h"

#include <QAbstractButton>
#include <QApplication>
#include <QMessageBox>
#include <QTimer>

#include <gtest/gtest.h>

namespace {

constexpr quint64 kASCII = 1;
constexpr quint64 kUTF8 = 4;

// Presses the button titled `button` of the next alert, once it shows, and notes what the
// alert said: its text, its informative text and its buttons' titles.
void answerNextAlert(const QString& button, QStringList* said)
{
    said->clear();
    auto* timer = new QTimer;
    timer->setInterval(10);
    QObject::connect(timer, &QTimer::timeout, [timer, button, said] {
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            auto* alert = qobject_cast<QMessageBox*>(widget);
            if (!alert || !alert->isVisible()) {
                continue;
            }
            timer->deleteLater();
            timer->stop();
            *said = {alert->text(), alert->informativeText()};
            QAbstractButton* chosen = nullptr;
            for (QAbstractButton* candidate : alert->buttons()) {
                said->append(candidate->text());
                if (candidate->text() == button) {
                    chosen = candidate;
                }
            }
            if (chosen) {
                chosen->click();
            } else {
                alert->reject();
            }
            return;
        }
    });
    timer->start();
}

} // namespace

TEST(SaveAlert, AnUnencodableCharacterOffersUTF8AndLosesNothingEitherWay)
{
    DocumentController& controller = DocumentController::sharedDocumentController();
    controller.discardAllDocuments();
    const QString dir = TestSupport::makeTempDir();
    const QString path = TestSupport::writeFile(dir + "/ascii.txt", "plain ascii\n");
    Document* document = controller.openDocumentWithContentsOfURL(path);
    ASSERT_NE(document, nullptr);
    document->setDocumentEncoding(kASCII);
    document->setTextStorage(QStringLiteral("caf\u00e9\n"));
    const QString message = "The document “ascii.txt” could not be saved in the encoding “Western "
                            "(ASCII)”. Some characters cannot be written in this encoding.";

    QStringList said;
    answerNextAlert("Cancel", &said);
    EXPECT_FALSE(controller.saveDocument(document));
    ASSERT_GE(said.size(), 4);
    EXPECT_EQ(said[0].toStdString(), message.toStdString());
    EXPECT_EQ(said[1], "Use Save As… to choose another encoding or place.");
    EXPECT_TRUE(said.contains("Save as UTF-8")) << said.join(" | ").toStdString();
    EXPECT_EQ(TestSupport::readFile(path), "plain ascii\n");
    EXPECT_EQ(document->string(), QStringLiteral("caf\u00e9\n"));
    EXPECT_EQ(document->documentEncoding(), kASCII);
    EXPECT_TRUE(document->isDocumentEdited());

    answerNextAlert("Save as UTF-8", &said);
    EXPECT_TRUE(controller.saveDocument(document));
    EXPECT_EQ(said.value(0).toStdString(), message.toStdString());
    EXPECT_EQ(TestSupport::readFile(path), "caf\xc3\xa9\n");
    EXPECT_EQ(document->string(), QStringLiteral("caf\u00e9\n"));
    EXPECT_EQ(document->documentEncoding(), kUTF8);
    EXPECT_FALSE(document->isDocumentEdited());
    controller.discardAllDocuments();
}
