#pragma once

#include "editor/EditorServices.h"

#include <QObject>
#include <QPointer>
#include <QString>

class Document;
class GutterView;
class LayoutManager;
class TextStore;
struct EditorSettings;
class TextView;

/// Builds and configures an editor pane: a TextView (which is also the pane's scroll view)
/// with its own LayoutManager and GutterView, on a document that may be shared with the
/// window's other pane.
class EditorController : public QObject
{
    Q_OBJECT

public:
    /// The controller with its view: a TextView with `settings`, working with `services`,
    /// not yet showing any document.
    EditorController(const EditorServices& services, const EditorSettings& settings,
                     QObject* parent = nullptr);
    /// The pane lives as long as its controller.
    ~EditorController() override;

    /// The pane's scroll view, to be put into the window's split view.
    TextView* view() const;
    TextView* textView() const;
    LayoutManager* layoutManager() const;
    GutterView* gutterView() const;

    /// Shows the document's `textStorage` in this pane with a LayoutManager and a gutter of
    /// its own, and gives the new view the keyboard focus.
    void setupInitialTextViewSharedStateWithTextStorage(TextStore* textStorage);
    /// The same for the text of `document`.
    void setupInitialTextViewSharedStateWithDocument(Document* document);

    /// Has the pane take up changed settings: text view, then its layout manager and gutter.
    void updatePreferences(const EditorSettings& settings);

private:
    QPointer<TextView> _textView;
};
