#include "window/InformationBar.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPainterPath>
#include <QPushButton>
#include <QStyle>
#include <QToolButton>

InformationBar::InformationBar(Kind kind, const QString& message, QWidget* parent)
    : QFrame(parent)
    , _kind(kind)
{
    setAttribute(Qt::WA_DeleteOnClose);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Maximum);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(10, 6, 6, 6);
    layout->setSpacing(8);

    const int iconSize = style()->pixelMetric(QStyle::PM_SmallIconSize, nullptr, this);
    auto* icon = new QLabel(this);
    icon->setPixmap(style()
                        ->standardIcon(kind == Kind::Warning ? QStyle::SP_MessageBoxWarning
                                                             : QStyle::SP_MessageBoxInformation,
                                       nullptr, this)
                        .pixmap(iconSize, iconSize));
    layout->addWidget(icon, 0, Qt::AlignTop);

    _messageLabel = new QLabel(message, this);
    _messageLabel->setObjectName(QStringLiteral("message"));
    _messageLabel->setWordWrap(true);
    _messageLabel->setTextFormat(Qt::PlainText);
    _messageLabel->setTextInteractionFlags(Qt::TextSelectableByMouse);
    layout->addWidget(_messageLabel, 1);

    _buttonRow = new QHBoxLayout;
    _buttonRow->setSpacing(6);
    layout->addLayout(_buttonRow);

    auto* close = new QToolButton(this);
    close->setObjectName(QStringLiteral("closeButton"));
    close->setAutoRaise(true);
    close->setIcon(style()->standardIcon(QStyle::SP_TitleBarCloseButton, nullptr, this));
    close->setToolTip(tr("Close"));
    close->setAccessibleName(tr("Close"));
    connect(close, &QToolButton::clicked, this, &InformationBar::dismiss);
    layout->addWidget(close, 0, Qt::AlignTop);
    _closeButton = close;
}

QString InformationBar::message() const
{
    return _messageLabel->text();
}

void InformationBar::setMessage(const QString& message)
{
    _messageLabel->setText(message);
}

QPushButton* InformationBar::addButton(const QString& title, std::function<void()> action,
                                       bool closesBar)
{
    auto* button = new QPushButton(title, this);
    connect(button, &QPushButton::clicked, this, [this, action = std::move(action), closesBar] {
        // Closed first: the action may well replace this bar with another.
        if (closesBar) {
            dismiss();
        }
        if (action) {
            action();
        }
    });
    _buttonRow->addWidget(button);
    _buttons.append(button);
    return button;
}

void InformationBar::dismiss()
{
    if (_dismissed) {
        return;
    }
    _dismissed = true;
    close();
    Q_EMIT dismissed();
}

QColor InformationBar::tint() const
{
    // The colours message bars commonly use: a calm blue for information, amber for a warning.
    return _kind == Kind::Warning ? QColor(0xF6, 0x74, 0x00) : QColor(0x3D, 0xAE, 0xE9);
}

void InformationBar::paintEvent(QPaintEvent* event)
{
    Q_UNUSED(event);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QColor base = palette().color(QPalette::Window);
    const QColor mark = tint();
    // A light wash of the bar's colour over the window's, so the text keeps its contrast in
    // light and dark themes alike.
    QColor fill;
    fill.setRgbF(base.redF() * 0.8f + mark.redF() * 0.2f,
                 base.greenF() * 0.8f + mark.greenF() * 0.2f,
                 base.blueF() * 0.8f + mark.blueF() * 0.2f);
    QPainterPath path;
    path.addRoundedRect(QRectF(rect()).adjusted(2.5, 2.5, -2.5, -2.5), 4, 4);
    painter.fillPath(path, fill);
    painter.setPen(QPen(mark, 1));
    painter.drawPath(path);
}
