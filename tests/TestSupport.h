#pragma once

#include "app/AppRoot.h"
#include "document/Document.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

/// Shared helpers for the tests.
namespace TestSupport {

/// A fresh folder for one test, removed when the test program ends.
QString makeTempDir();
/// Writes `bytes` to `path`, creating its folder; returns the path.
QString writeFile(const QString& path, const QByteArray& bytes);
QByteArray readFile(const QString& path);

/// What a document is made with: the root's encoding manager, and the document settings
/// of its settings store (the shipped defaults unless a test changed them).
EncodingManager& encodings();
DocumentSettings documentSettings();

/// What an alert showed, as the user reads it.
struct Alert {
    QString title;
    QString text;
    QString informativeText;
    QStringList buttons;
};

/// Answers the next alerts to show, in turn, each with the button titled as in `buttons` (one
/// without such a button is dismissed), as a user would, and notes in `seen` what each showed.
void answerAlerts(const QStringList& buttons, QList<Alert>* seen = nullptr);

} // namespace TestSupport

/// An application root of a test's own, on a settings file of its own (the shipped defaults
/// until the test writes one): while it lives, the shared objects are its, and what the
/// test sets leaves the other tests alone.
class TestRoot : public AppRoot
{
public:
    TestRoot()
        : AppRoot(TestSupport::makeTempDir() + QStringLiteral("/Tessaran.conf"))
    {}
};

/// A document made as the application makes one (see TestSupport::documentSettings()).
class TestDocument : public Document
{
public:
    explicit TestDocument(QObject* parent = nullptr)
        : Document(TestSupport::encodings(), TestSupport::documentSettings(), parent)
    {}
};
