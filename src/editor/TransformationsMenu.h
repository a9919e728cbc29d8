#pragma once

#include <functional>

class QMenu;
class TextView;

/// The items of the "Transformations" menu, shared by the text view's context menu and the
/// menu bar. Each item acts on the text view that `target` names when it is chosen.
class TransformationsMenu
{
public:
    static void addItems(QMenu* menu, const std::function<TextView*()>& target);
};
