#pragma once

#include <QPlainTextDocumentLayout>

class QTextBlock;

/// The plain-text layout of a document, able to lay out one block again when only its
/// looks changed (colours, a proposed word shown in it), repainting only its line.
///
/// Changing a block's formats or shown text tells the document that the whole block
/// changed; the plain-text layout reads any notice reaching the next block as a change of
/// many blocks and repaints every view whole. relayOutBlock() turns that notice back into
/// what it is.
class TextDocumentLayout : public QPlainTextDocumentLayout
{
    Q_OBJECT

public:
    explicit TextDocumentLayout(QTextDocument* document);

    /// Lays `block` out again now and repaints its line (the whole view only when its height
    /// changed). `block` holds the same text as before: only how it is shown changed.
    void relayOutBlock(const QTextBlock& block);

protected:
    void documentChanged(int from, int charsRemoved, int charsAdded) override;

private:
    int _relayingOut = -1;
};
