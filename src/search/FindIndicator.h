#pragma once

#include "platform/Range.h"

class TextView;

/// A short-lived highlight over a range that has just been found or gone to, so that the
/// eye finds it after a jump. It lies beside the pane's other extra selections and takes
/// only itself away.
class FindIndicator
{
public:
    /// How long the indicator stays, in milliseconds.
    static constexpr int Duration = 500;

    static void showFindIndicatorForRange(TextView* textView, Range range);
    /// Whether `textView` shows an indicator now.
    static bool isShown(const TextView* textView);
};
