#pragma once

#include <QFrame>
#include <QList>
#include <QString>

#include <functional>

class QAbstractButton;
class QHBoxLayout;
class QLabel;
class QPushButton;

/// A bar across the top of a document window that tells the user something about the
/// document (why it is read-only, what a save will change, that another program changed the
/// file) and offers what can be done about it: a message, buttons, and a button that closes
/// the bar. A bar closes when one of its buttons is used or when it is dismissed, and is then
/// deleted.
class InformationBar : public QFrame
{
    Q_OBJECT

public:
    enum class Kind { Information, Warning };

    InformationBar(Kind kind, const QString& message, QWidget* parent = nullptr);

    Kind kind() const { return _kind; }
    QString message() const;
    void setMessage(const QString& message);

    /// Adds a button, after those added before; `action` runs when it is clicked, and the bar
    /// closes first unless `closesBar` is false (a button that shows something and leaves the
    /// choice open).
    QPushButton* addButton(const QString& title, std::function<void()> action,
                           bool closesBar = true);
    QList<QPushButton*> buttons() const { return _buttons; }
    QAbstractButton* closeButton() const { return _closeButton; }

    /// Closes the bar (as its close button does) and deletes it.
    void dismiss();

Q_SIGNALS:
    /// The bar was closed (it is hidden, and deleted soon), by its close button, one of its
    /// buttons or dismiss().
    void dismissed();

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QColor tint() const;

    Kind _kind;
    QLabel* _messageLabel = nullptr;
    QHBoxLayout* _buttonRow = nullptr;
    QList<QPushButton*> _buttons;
    QAbstractButton* _closeButton = nullptr;
    bool _dismissed = false;
};
