#pragma once

#include "platform/Range.h"

#include <QWidget>

class TextView;

/// A short-lived highlight over a range of a text view (about half a second), to show
/// where the view has just taken the user.
class FindIndicator : public QWidget
{
    Q_OBJECT

public:
    /// Flashes the lines of `range` in `textView`.
    static FindIndicator* showFindIndicatorForRange(TextView* textView, Range range);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    FindIndicator(TextView* textView, Range range);

    TextView* _textView;
    Range _range;
};
