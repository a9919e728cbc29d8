#include "search/MatchIndicator.h"

#include "editor/TextView.h"

#include <QPointer>
#include <QTimer>

namespace {

constexpr int kIndicatorProperty = QTextFormat::UserProperty + 0x4649; // 'FI'

bool isIndicator(const QTextEdit::ExtraSelection& selection)
{
    return selection.format.boolProperty(kIndicatorProperty);
}

void removeIndicators(TextView* textView)
{
    QList<QTextEdit::ExtraSelection> selections = textView->extraSelections();
    if (selections.removeIf(isIndicator) > 0) {
        textView->setExtraSelections(selections);
    }
}

} // namespace

void MatchIndicator::showFindIndicatorForRange(TextView* textView, Range range)
{
    if (!textView || range.isNotFound()) {
        return;
    }
    const int end = textView->document()->characterCount() - 1;
    QTextEdit::ExtraSelection indicator;
    indicator.cursor = QTextCursor(textView->document());
    indicator.cursor.setPosition(int(std::clamp<qsizetype>(range.location, 0, end)));
    indicator.cursor.setPosition(int(std::clamp<qsizetype>(range.max(), 0, end)),
                                 QTextCursor::KeepAnchor);
    indicator.format.setBackground(QColor(255, 230, 0));
    indicator.format.setForeground(Qt::black);
    indicator.format.setProperty(kIndicatorProperty, true);

    QList<QTextEdit::ExtraSelection> selections = textView->extraSelections();
    selections.removeIf(isIndicator);
    selections.append(indicator);
    textView->setExtraSelections(selections);

    const QPointer<TextView> view(textView);
    const QTextCursor shown = indicator.cursor;
    QTimer::singleShot(Duration, textView, [view, shown] {
        // A later indicator on the same view has its own timer.
        if (!view) {
            return;
        }
        const QList<QTextEdit::ExtraSelection> selections = view->extraSelections();
        for (const QTextEdit::ExtraSelection& selection : selections) {
            if (isIndicator(selection) && selection.cursor == shown) {
                removeIndicators(view);
                return;
            }
        }
    });
}

bool MatchIndicator::isShown(const TextView* textView)
{
    const QList<QTextEdit::ExtraSelection> selections = textView->extraSelections();
    return std::any_of(selections.begin(), selections.end(), isIndicator);
}
