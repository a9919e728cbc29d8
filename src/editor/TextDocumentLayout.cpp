#include "editor/TextDocumentLayout.h"

#include <QTextBlock>
#include <QTextDocument>

TextDocumentLayout::TextDocumentLayout(QTextDocument* document)
    : QPlainTextDocumentLayout(document)
{}

void TextDocumentLayout::relayOutBlock(const QTextBlock& block)
{
    // The notice also takes what changing the block's formats left pending in the document,
    // which would otherwise be merged into the next edit's.
    _relayingOut = block.position();
    document()->markContentsDirty(block.position(), block.length());
    _relayingOut = -1;
}

void TextDocumentLayout::documentChanged(int from, int charsRemoved, int charsAdded)
{
    if (_relayingOut >= 0 && from == _relayingOut && charsRemoved == charsAdded) {
        const QTextBlock block = document()->findBlock(from);
        if (block.isValid() && charsRemoved <= block.length()) {
            // One unit added at the block's start is what the layout reads as a change of
            // this block alone.
            QPlainTextDocumentLayout::documentChanged(from, 0, 1);
            return;
        }
    }
    QPlainTextDocumentLayout::documentChanged(from, charsRemoved, charsAdded);
}
