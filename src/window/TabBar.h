#pragma once

#include <QPointer>
#include <QTabBar>

class QLabel;

/// The tab bar of a tab window. Tabs are reordered by dragging them along the bar; a tab
/// dragged well away from the bar is torn off, follows the pointer as a picture, and is
/// handed to the window where it is let go. A middle click asks to close a tab.
class TabBar : public QTabBar
{
    Q_OBJECT

public:
    explicit TabBar(QWidget* parent = nullptr);
    ~TabBar() override;

    /// Whether a tab is torn off the bar now.
    bool isTearingOff() const { return _tearingOff; }

Q_SIGNALS:
    /// The tab at `index` was torn off and let go at `globalPosition`.
    void tabDroppedOutside(int index, const QPoint& globalPosition);

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    bool isFarFromBar(const QPoint& position) const;
    void startTearingOff(QMouseEvent* event);
    void stopTearingOff();

    QPoint _pressPosition;
    bool _tearingOff = false;
    QPointer<QLabel> _picture;
};
