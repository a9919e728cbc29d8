#pragma once

#include "window/InformationBar.h"

#include <QObject>
#include <QPointer>

class Document;
class DocumentWindow;

/// The bars of a document window that say what reading the file found out: that it does not
/// look like text, so it is open read-only until the user chooses "Edit Anyway", and that it
/// mixes line breaks of different kinds, which a save writes in one style. They are shown
/// again after every new reading of the file, and follow the document's line-break style.
class ReadingNotices : public QObject
{
    Q_OBJECT

public:
    ReadingNotices(Document* document, DocumentWindow* window, QObject* parent = nullptr);

    /// The bars shown now; null when not shown.
    InformationBar* nonTextBar() const { return _nonTextBar; }
    InformationBar* lineBreaksBar() const { return _lineBreaksBar; }

private:
    void show();
    void updateLineBreaksBar();

    Document* _document;
    QPointer<DocumentWindow> _window;
    QPointer<InformationBar> _nonTextBar;
    QPointer<InformationBar> _lineBreaksBar;
};
