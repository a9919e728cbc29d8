#include "editor/GutterView.h"

#include "editor/TextView.h"

#include <QFontDatabase>
#include <QFontMetricsF>
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
    _gutterTextColor = settings.gutterTextColor;
    _gutterBorderColor = settings.gutterBorderColor;
    _gutterBackgroundColor = settings.gutterBackgroundColor;
    QFont font = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
    font.setPixelSize(9); // points are device-independent pixels
    _textAttributes = QTextCharFormat();
    _textAttributes.setFont(font);
    _textAttributes.setForeground(_gutterTextColor);
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
    const QFontMetricsF metrics(_textAttributes.font());
    const qreal labelHeight = metrics.height();
    const QList<TextView::ShownBlock> shown =
        _clientView->shownBlocks(rect.top() - shift, rect.bottom() - shift);
    for (const TextView::ShownBlock& block : shown) {
        const QTextLayout* layout = block.block.layout();
        if (layout->lineCount() == 0) {
            continue;
        }
        const QTextLine firstRow = layout->lineAt(0);
        const qreal rowTop = block.offset.y() + firstRow.y() + shift;
        const qreal rowHeight = firstRow.height();
        Label label;
        label.number = block.block.blockNumber() + 1;
        label.text = QString::number(label.number);
        const qreal labelWidth = metrics.horizontalAdvance(label.text);
        label.rect = QRectF(width - labelWidth - 5, rowTop + (rowHeight - labelHeight) / 5,
                            width - 10, rowHeight);
        labels.append(label);
    }
    return labels;
}

void GutterView::paintEvent(QPaintEvent* event)
{
    QPainter painter(this);
    drawHashMarksAndLabelsInRect(painter, event->rect());
}

void GutterView::drawHashMarksAndLabelsInRect(QPainter& painter, const QRect& rect)
{
    painter.fillRect(rect, _gutterBackgroundColor);
    // The border runs along the edge next to the text.
    painter.fillRect(QRect(width() - 1, rect.top(), 1, rect.height()), _gutterBorderColor);
    painter.setFont(_textAttributes.font());
    painter.setPen(_gutterTextColor);
    for (const Label& label : labelsInRect(rect)) {
        painter.drawText(label.rect, Qt::AlignLeft | Qt::AlignTop | Qt::TextDontClip, label.text);
    }
}
