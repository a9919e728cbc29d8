// The syntax choice of a document window, its colours and its function pop-up, in real
// windows on real files.
#include "TestWindow.h"
#include "app/Application.h"
#include "app/DocumentController.h"
#include "document/Document.h"
#include "editor/CompletionManager.h"
#include "editor/CompletionPanel.h"
#include "editor/LayoutManager.h"
#include "editor/SyntaxColoringController.h"
#include "editor/TextView.h"
#include "platform/ColorArchive.h"
#include "platform/FileManager.h"
#include "platform/PropertyList.h"
#include "platform/UserDefaults.h"
#include "syntax/FunctionMenu.h"
#include "syntax/SyntaxManager.h"
#include "window/DocumentWindow.h"
#include "window/FunctionPopUp.h"
#include "window/FunctionPopUpDefinitions.h"
#include "window/WindowController.h"

#include <QAbstractItemView>
#include <QAction>
#include <QApplication>
#include <QFile>
#include <QMenu>
#include <QMenuBar>
#include <QTest>

#include <gtest/gtest.h>

namespace {

const QString kCSource = QStringLiteral("/* header\n"
                                        "   comment */\n"
                                        "#include <stdio.h>\n"
                                        "#define LIMIT 10\n"
                                        "static int helper(int value)\n"
                                        "{\n"
                                        "    return value; // done\n"
                                        "}\n"
                                        "int main(void)\n"
                                        "{\n"
                                        "    return helper(LIMIT);\n"
                                        "}\n");

void installDefinitions()
{
    if (!QFile::exists(FileManager::syntaxDefinitionDirectoryPathInPath("C.plist"))) {
        DocumentController::sharedDocumentController().awakeFromNib();
    }
    ASSERT_TRUE(QFile::exists(FileManager::syntaxDefinitionDirectoryPathInPath("Python.plist")));
}

/// The syntax colour laid over `location` in the view's colour store; invalid for none.
QColor colorAt(TextView* view, qsizetype location)
{
    const auto runs = view->layoutManager()->temporaryAttributes({location, 1});
    return runs.empty() ? QColor() : QColor::fromRgba(runs.front().color);
}

bool isColored(TextView* view)
{
    return !view->syntaxColoringController()->isColoringAll();
}

QColor keywords()
{
    // As the colour store keeps it: 8 bits a channel.
    return QColor::fromRgba(SyntaxManager::sharedSyntaxManager().keywordsColor().rgba());
}
QColor comments()
{
    return QColor::fromRgba(SyntaxManager::sharedSyntaxManager().commentsColor().rgba());
}

/// The titles of the pop-up's items once it has been opened (and closed again).
QStringList openedTitles(FunctionPopUp* popUp)
{
    popUp->showPopup();
    popUp->hidePopup();
    QStringList titles;
    for (int i = 0; i < popUp->count(); ++i) {
        titles.append(popUp->itemText(i));
    }
    return titles;
}

/// A file of `text` named `name`, open in a shown window and coloured.
struct OpenFile : OpenedFile {
    OpenFile(const QString& name, const QString& text)
        : OpenedFile(
              TestSupport::writeFile(TestSupport::makeTempDir() + u'/' + name, text.toUtf8()))
    {
        EXPECT_TRUE(QTest::qWaitForWindowExposed(controller->window()));
        EXPECT_TRUE(QTest::qWaitFor([this] { return isColored(view()); }));
    }
    QAction* syntaxItem(const QString& title) const
    {
        QMenu* menu = controller->window()->menuBar()->findChild<QMenu*>("syntaxMenu");
        Q_EMIT menu->aboutToShow();
        return itemTitled(menu, title);
    }
};

} // namespace

TEST(WindowSyntax, OpeningACFileColoursItAndChoosingFromTheMenuRecolours)
{
    installDefinitions();
    OpenFile file(QStringLiteral("main.c"), kCSource);
    TextView* view = file.view();
    const QString text = kCSource;

    // Chosen by the extension: keywords and both kinds of comment in the pane's store.
    EXPECT_EQ(view->syntaxDictionary().value("Name").toString(), "C");
    EXPECT_EQ(colorAt(view, text.indexOf("int helper")), keywords());
    EXPECT_EQ(colorAt(view, text.indexOf("comment */")), comments());
    EXPECT_EQ(colorAt(view, text.indexOf("// done") + 3), comments());
    EXPECT_EQ(file.controller->windowIdentifier(), "None:C");

    // Python from the menu: '#' opens a comment, '//' does not.
    QAction* python = file.syntaxItem("Python");
    ASSERT_NE(python, nullptr);
    python->trigger();
    EXPECT_TRUE(QTest::qWaitFor([&] { return isColored(view); }));
    EXPECT_EQ(colorAt(view, text.indexOf("include")), comments());
    EXPECT_NE(colorAt(view, text.indexOf("// done") + 3), comments());
    EXPECT_EQ(colorAt(view, text.indexOf("return")), keywords());
    EXPECT_EQ(file.controller->windowIdentifier(), "None:Python");

    // "None" hides the pop-up and takes every colour away.
    file.syntaxItem("None")->trigger();
    EXPECT_TRUE(view->syntaxDictionary().isEmpty());
    EXPECT_TRUE(view->layoutManager()->temporaryAttributes({0, text.size()}).empty());
    EXPECT_TRUE(file.controller->window()->functionPopUp()->isHidden());
    EXPECT_EQ(file.controller->windowIdentifier(), "None:None");

    // Back to the file type: C again, and the identifier records no syntax.
    file.syntaxItem("Default For File Type")->trigger();
    EXPECT_TRUE(QTest::qWaitFor([&] { return isColored(view); }));
    EXPECT_EQ(colorAt(view, text.indexOf("int helper")), keywords());
    EXPECT_EQ(file.controller->windowIdentifier(), "None:None");

    // Every colouring above was laid over the text by the pane: none of it is an edit.
    EXPECT_FALSE(file.document->canUndo());
    EXPECT_FALSE(file.document->isDocumentEdited());
}

TEST(WindowSyntax, ExtensionsAreComparedExactly)
{
    installDefinitions();
    TestRoot root;
    root.userDefaults().setBool(false, "SyntaxColouring");
    // "PY" is not "py": no definition, and without a named default no colouring.
    {
        OpenFile upper(QStringLiteral("tool.PY"), QStringLiteral("def f():\n"));
        EXPECT_TRUE(upper.view()->syntaxDictionary().isEmpty());
    }
    root.userDefaults().removeObjectForKey("SyntaxColouring");
    {
        // A definition listing the empty string takes the files without extension.
        const QVariantMap bare{{"Name", "Bare"},
                               {"Extensions", QVariantList{""}},
                               {"Keywords", QVariantList{"all"}},
                               {"CharacterSet", "abcdefghijklmnopqrstuvwxyz"}};
        ASSERT_TRUE(PropertyList::writeXml(
            bare, FileManager::syntaxDefinitionDirectoryPathInPath("Bare.plist")));
        OpenFile makefile(QStringLiteral("Makefile"), QStringLiteral("all: tool\n"));
        EXPECT_EQ(makefile.view()->syntaxDictionary().value("Name").toString(), "Bare");
        EXPECT_EQ(colorAt(makefile.view(), 0), keywords());
    }
}

TEST(WindowSyntax, RestorationAppliesTheSavedSyntax)
{
    installDefinitions();
    TestRoot root;
    // A Perl definition of the user's own.
    const QVariantMap perl{
        {"Name", "Perl"},
        {"Extensions", QVariantList{"pl"}},
        {"CharacterSet", "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_"},
        {"Keywords", QVariantList{"my", "sub"}},
        {"Comments",
         QVariantList{QVariantMap{{"regularExpression", true}, {"regexPattern", "#.*$"}}}},
    };
    ASSERT_TRUE(PropertyList::writeXml(
        perl, FileManager::syntaxDefinitionDirectoryPathInPath("Perl.plist")));

    TestWindow window(QStringLiteral("my $x = 1; # note\nsub f { }\n"), QStringLiteral("2:Perl"));
    TextView* view = window.view();
    EXPECT_TRUE(QTest::qWaitFor([&] { return isColored(view); }));
    EXPECT_EQ(colorAt(view, 0), keywords());

    // A settings change reads the definition and the colours again.
    QVariantMap edited = perl;
    edited["Keywords"] = QVariantList{"sub"};
    ASSERT_TRUE(PropertyList::writeXml(
        edited, FileManager::syntaxDefinitionDirectoryPathInPath("Perl.plist")));
    root.userDefaults().setObject(ColorArchive::archivedData(QColor(255, 0, 0)), "KeywordsColor");
    Application::instance()->postUpdatePreferences(nullptr);
    EXPECT_TRUE(QTest::qWaitFor([&] { return isColored(view); }));
    EXPECT_FALSE(colorAt(view, 0).isValid());
    EXPECT_EQ(colorAt(view, 18), QColor(255, 0, 0));
}

TEST(WindowSyntax, FunctionPopUpListsAndSelectsDefinitionsAndGivesTheKeysBack)
{
    installDefinitions();
    OpenFile file(QStringLiteral("list.c"), kCSource);
    auto* popUp = qobject_cast<FunctionPopUp*>(file.controller->window()->functionPopUp());
    ASSERT_NE(popUp, nullptr);
    EXPECT_EQ(popUp->count(), 1);

    // Built as it opens: the macro, then the two functions.
    EXPECT_EQ(openedTitles(popUp),
              QStringList({"No Symbol selected", "", "LIMIT", "helper", "main"}));
    const int helper = popUp->findText("helper");

    // Choosing selects the whole line and leaves the chosen item alone in the pop-up.
    popUp->setCurrentIndex(helper);
    Q_EMIT popUp->activated(helper);
    const QString line = QStringLiteral("static int helper(int value)\n");
    EXPECT_EQ(file.view()->selectedRange(), Range(kCSource.indexOf(line), line.size()));
    EXPECT_EQ(popUp->count(), 1);
    EXPECT_EQ(popUp->currentText(), "helper");

    // Reopening keeps it selected.
    EXPECT_TRUE(openedTitles(popUp).contains("main"));
    EXPECT_EQ(popUp->currentText(), "helper");

    // "No Symbol selected" takes the caret to the start of the selection.
    Q_EMIT popUp->activated(0);
    EXPECT_EQ(file.view()->selectedRange(), Range(kCSource.indexOf(line), 0));

    // Opened and chosen from with the keyboard, the pop-up gives the keys back to the text.
    file.controller->window()->activateWindow();
    popUp->setFocus(Qt::TabFocusReason);
    ASSERT_TRUE(QTest::qWaitFor([&] { return popUp->hasFocus(); }));
    QTest::keyClick(popUp, Qt::Key_Space);
    ASSERT_TRUE(QTest::qWaitFor([&] { return popUp->view()->isVisible(); }));
    QTest::keyClick(popUp->view(), Qt::Key_End);
    QTest::keyClick(popUp->view(), Qt::Key_Return);
    ASSERT_TRUE(QTest::qWaitFor([&] { return !popUp->view()->isVisible(); }));
    EXPECT_EQ(popUp->currentText(), "main");
    EXPECT_TRUE(QTest::qWaitFor([&] { return file.view()->hasFocus(); }));
    // The keys go to the text: the line chosen is selected, Left goes to its start.
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Left);
    QTest::keyClicks(QApplication::focusWidget(), QStringLiteral("//"));
    EXPECT_TRUE(file.document->string().contains(QStringLiteral("//int main(void)")));
}

TEST(WindowSyntax, FunctionPopUpOfALargeFileReadsOnlyWhatChanged)
{
    installDefinitions();
    QString text;
    for (int i = 0; i < 6000; ++i) {
        text += QStringLiteral("static int f%1(int v)\n{\n    return v;\n}\n").arg(i);
    }
    OpenFile file(QStringLiteral("large.c"), text);
    auto* popUp = qobject_cast<FunctionPopUp*>(file.controller->window()->functionPopUp());
    ASSERT_NE(popUp, nullptr);
    auto* definitions = popUp->findChild<FunctionPopUpDefinitions*>();
    ASSERT_NE(definitions, nullptr);
    // Opened before the worker has read the text, the list opens at once saying so, and
    // opens again with the definitions once they are in.
    ASSERT_FALSE(definitions->isReady());
    popUp->showPopup();
    EXPECT_TRUE(popUp->view()->isVisible());
    ASSERT_EQ(popUp->count(), 1);
    EXPECT_EQ(popUp->model()->flags(popUp->model()->index(0, 0)), Qt::NoItemFlags);
    ASSERT_TRUE(QTest::qWaitFor([&] { return popUp->count() == 6000 + 2; }, 20000));
    EXPECT_TRUE(popUp->view()->isVisible());
    popUp->hidePopup();
    // The whole text is read once, on a worker.
    ASSERT_TRUE(QTest::qWaitFor([&] { return definitions->isReady(); }, 20000));
    EXPECT_EQ(definitions->builds(), 1);
    EXPECT_EQ(definitions->scannedCharacters(), 0);

    const auto reference = [&] {
        const QString now = file.document->string();
        const FunctionMenu menu(
            SyntaxManager::sharedSyntaxManager().makeFunctionDefinitionWithString(
                now, file.view()->syntaxDictionary()),
            now);
        QStringList titles;
        for (const FunctionMenu::Item& item : menu.items()) {
            titles.append(item.isSeparator ? QString() : item.title);
        }
        return titles;
    };
    EXPECT_EQ(openedTitles(popUp), reference());

    // Keys in the middle, a line joined and one split: the list is the whole text's, read
    // from a few lines around the changes.
    file.view()->setSelectedRange({text.indexOf(QStringLiteral("f3000(")) + 5, 0});
    QTest::keyClicks(file.view(), QStringLiteral("xy"));
    file.view()->setSelectedRange({text.indexOf(QStringLiteral("f10(")) - 1, 0});
    QTest::keyClick(file.view(), Qt::Key_Delete);
    QTest::keyClick(file.view(), Qt::Key_Return);
    EXPECT_EQ(openedTitles(popUp), reference());
    EXPECT_NE(popUp->findText(QStringLiteral("f3000xy")), -1);
    EXPECT_EQ(definitions->builds(), 1);
    EXPECT_LT(definitions->scannedCharacters(), text.size() / 4);
}

TEST(WindowSyntax, ACompletionNotAcceptedIsNeverSaved)
{
    installDefinitions();
    TestRoot root;
    root.userDefaults().setObject(true, QStringLiteral("AutoComplete"));
    const QString text = QStringLiteral("int print, printf, Print;\n");
    OpenFile file(QStringLiteral("save.c"), text);
    TextView* view = file.view();
    view->setSelection(text.size(), text.size());
    QTest::keyClicks(view, QStringLiteral("pr"));
    CompletionManager& completion = CompletionManager::sharedCompletionManager();
    ASSERT_TRUE(QTest::qWaitFor([&] { return completion.panel()->isVisible(); }));
    ASSERT_FALSE(view->proposedCompletion().isEmpty());

    // Saved while the rest of a word is shown: the file holds what was typed, and stays
    // saved while the list follows.
    ASSERT_TRUE(DocumentController::sharedDocumentController().saveDocument(file.document));
    EXPECT_EQ(TestSupport::readFile(file.path), (text + QStringLiteral("pr")).toUtf8());
    QTest::qWait(1000);
    EXPECT_FALSE(file.document->isDocumentEdited());
    // What a recovery copy is made of is the typed text too.
    EXPECT_EQ(file.document->string(), text + QStringLiteral("pr"));
    // The status line counts the text, never the word proposed or a selection of it.
    EXPECT_EQ(file.controller->infoCharacters(), text.size() + 1);
}

TEST(WindowSyntax, AnUntitledDocumentTakesTheSyntaxOfTheNameItIsSavedAs)
{
    installDefinitions();
    TestRoot root;
    root.userDefaults().setBool(true, "DefaultForFileType");
    DocumentController& documents = DocumentController::sharedDocumentController();
    Document* untitled = documents.newDocument();
    untitled->setSavePanelChoice(untitled->documentEncoding(), untitled->documentLineBreaks());
    ASSERT_TRUE(untitled->writeSafelyToURL(TestSupport::makeTempDir() + QStringLiteral("/x.py"),
                                           untitled->fileType(), Document::SaveAs));
    WindowController* window = documents.windowControllerOf(untitled);
    EXPECT_EQ(window->textView()->syntaxDictionary().value(QStringLiteral("Name")), "Python");
    EXPECT_EQ(window->selectedSyntaxName(), "Python");
    window->window()->close();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}
