#include "editor/FindIndicator.h"

#include "document/TextStore.h"
#include "editor/TextArea.h"

#include <QPainter>
#include <QPainterPath>
#include <QTimer>

#include <algorithm>

namespace {

constexpr int kShownMilliseconds = 500;
constexpr int kMargin = 3;

} // namespace

FindIndicator::FindIndicator(TextArea* view, Range range)
    : QWidget(view->viewport())
    , _view(view)
    , _range(range)
{
    setObjectName(QStringLiteral("findIndicator"));
    setAttribute(Qt::WA_TransparentForMouseEvents);
    // A range found a moment ago may reach past a text that has become shorter since.
    const TextSnapshot text = view->textStore() ? view->textStore()->text() : TextSnapshot();
    const qsizetype from = std::clamp<qsizetype>(range.location, 0, text.length());
    const qsizetype to = std::clamp<qsizetype>(range.max(), from, text.length());
    const QRect start = view->rectForPosition(from);
    _text = text.text({from, to - from});
    const QRect end = view->rectForPosition(to);
    if (end.top() != start.top()) {
        // Over several lines: the box spans them at the viewport's width, without text.
        _text.clear();
        setGeometry(
            QRect(0, start.top(), view->viewport()->width(), end.bottom() - start.top() + 1));
    } else {
        const int width = qMax(end.left() - start.left(), view->fontMetrics().averageCharWidth());
        setGeometry(QRect(start.left(), start.top(), width, start.height())
                        .adjusted(-kMargin, -kMargin, kMargin, kMargin));
    }
    QTimer::singleShot(kShownMilliseconds, this, &QObject::deleteLater);
}

FindIndicator* FindIndicator::showFindIndicatorForRange(TextArea* view, Range range)
{
    if (!view || range.isNotFound()) {
        return nullptr;
    }
    for (FindIndicator* shown : view->viewport()->findChildren<FindIndicator*>()) {
        shown->hide();
        shown->deleteLater();
    }
    auto* indicator = new FindIndicator(view, range);
    indicator->show();
    indicator->raise();
    return indicator;
}

void FindIndicator::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QPainterPath box;
    box.addRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 4, 4);
    painter.fillPath(box, _text.isEmpty() ? QColor(255, 230, 0, 110) : QColor(255, 226, 0));
    painter.setPen(QColor(180, 150, 0));
    painter.drawPath(box);
    painter.setPen(Qt::black);
    painter.setFont(_view->textFont());
    painter.drawText(rect().adjusted(kMargin, kMargin, -kMargin, -kMargin),
                     Qt::AlignLeft | Qt::AlignVCenter, _text);
}
