#pragma once

#include "platform/Range.h"

#include <QWidget>

class TextArea;

/// A short-lived highlight over a range of a text view: a bright rounded box showing the
/// characters, standing over the viewport for about half a second.
class FindIndicator : public QWidget
{
    Q_OBJECT

public:
    /// Shows the indicator for `range` of `view`'s text, replacing one already shown there:
    /// an occurrence found, a line gone to, a matching brace, a function chosen. None for
    /// no view or no range.
    static FindIndicator* showFindIndicatorForRange(TextArea* view, Range range);
    Range range() const { return _range; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    FindIndicator(TextArea* view, Range range);

    TextArea* _view;
    Range _range;
    QString _text;
};
