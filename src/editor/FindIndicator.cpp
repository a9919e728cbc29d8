#include "editor/FindIndicator.h"

#include "editor/TextView.h"

#include <QPainter>
#include <QTextBlock>
#include <QTimer>

namespace {

constexpr int ShownMilliseconds = 500;

} // namespace

FindIndicator* FindIndicator::showFindIndicatorForRange(TextView* textView, Range range)
{
    if (!textView) {
        return nullptr;
    }
    auto* indicator = new FindIndicator(textView, range);
    indicator->show();
    QTimer::singleShot(ShownMilliseconds, indicator, &QObject::deleteLater);
    return indicator;
}

FindIndicator::FindIndicator(TextView* textView, Range range)
    : QWidget(textView->viewport())
    , _textView(textView)
    , _range(range)
{
    setObjectName(QStringLiteral("findIndicator"));
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setGeometry(textView->viewport()->rect());
}

void FindIndicator::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QList<TextView::ShownBlock> shown = _textView->shownBlocks(0, height());
    QRectF area;
    for (const TextView::ShownBlock& block : shown) {
        const qsizetype start = block.block.position();
        const qsizetype end = start + block.block.length();
        if (end > _range.location && start < std::max(_range.max(), _range.location + 1)) {
            area = area.united(block.rect);
        }
    }
    if (area.isEmpty()) {
        return;
    }
    QColor fill(255, 230, 0, 110);
    painter.setPen(QPen(QColor(230, 180, 0), 1.5));
    painter.setBrush(fill);
    painter.drawRoundedRect(area.adjusted(1, 0, -1, 0), 4, 4);
}
