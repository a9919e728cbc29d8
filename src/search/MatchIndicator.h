#pragma once

#include "platform/Range.h"

class TextView;

/// The search's find indicator: a short-lived highlight over a range that has just been
/// found or gone to, so that the eye finds it after a jump. It lies beside the pane's other
/// extra selections and takes only itself away. (The editor's own FindIndicator, for
/// brackets and the function pop-up, is a box standing over the text instead.)
class MatchIndicator
{
public:
    /// How long the indicator stays, in milliseconds.
    static constexpr int Duration = 500;

    static void showFindIndicatorForRange(TextView* textView, Range range);
    /// Whether `textView` shows an indicator now.
    static bool isShown(const TextView* textView);
};
