#include "editor/GutterView.h"

#include "editor/TextView.h"

#include <QPaintEvent>
#include <QPainter>
#include <QTextBlock>
#include <QTextDocument>

GutterView::GutterView(TextView* clientView)
    : QWidget(clientView)
{
    updatePreferences(clientView->editorSettings());
    setClientView(clientView);
}

GutterView::~GutterView() = default;

void GutterView::updatePreferences(const EditorSettings& settings)
{
    _look.updatePreferences(settings);
    update();
}

void GutterView::setClientView(TextView* clientView)
{
    if (_clientView == clientView) {
        return;
    }
    disconnect(_updateConnection);
    _clientView = clientView;
    if (clientView) {
        // The text view asks for a repaint of its viewport after every edit and scroll.
        _updateConnection =
            connect(clientView, &QPlainTextEdit::updateRequest, this, &GutterView::updateGutter);
    }
    update();
}

void GutterView::updateGutter(const QRect& rect, int dy)
{
    if (dy != 0) {
        scroll(0, dy);
        return;
    }
    const int shift = _clientView ? _clientView->viewport()->y() - y() : 0;
    update(0, rect.y() + shift, width(), rect.height());
}

QSize GutterView::sizeHint() const
{
    return {int(requiredThickness()), 0};
}

qint64 GutterView::lineNumberForCharacterIndex(qint64 index, const QTextDocument* inText)
{
    if (!inText) {
        return 0;
    }
    const QTextBlock block = inText->findBlock(int(std::clamp<qint64>(index, 0, INT_MAX)));
    return block.isValid() ? block.blockNumber() : inText->blockCount() - 1;
}

QList<GutterView::Label> GutterView::labelsInRect(const QRectF& rect) const
{
    QList<Label> labels;
    if (!_clientView) {
        return labels;
    }
    // The viewport sits below the gutter's top by the text container's origin.
    const qreal shift = _clientView->viewport()->y() - y();
    const qreal width = this->width();
    const QList<TextView::ShownBlock> shown =
        _clientView->shownBlocks(rect.top() - shift, rect.bottom() - shift);
    for (const TextView::ShownBlock& block : shown) {
        const QTextLayout* layout = block.block.layout();
        if (layout->lineCount() == 0) {
            continue;
        }
        const QTextLine firstRow = layout->lineAt(0);
        labels.append(_look.label(block.block.blockNumber() + 1,
                                  block.offset.y() + firstRow.y() + shift, firstRow.height(),
                                  width));
    }
    return labels;
}

void GutterView::paintEvent(QPaintEvent* event)
{
    QPainter painter(this);
    drawHashMarksAndLabelsInRect(painter, event->rect());
}

void GutterView::drawHashMarksAndLabelsInRect(QPainter& painter, const QRect& rect) const
{
    _look.paint(painter, rect, width(), labelsInRect(rect));
}
