#pragma once

#include <QMainWindow>

#include <functional>

class QComboBox;
class QIcon;
class QLabel;
class QProgressBar;
class QSplitter;

/// The top-level window of one document: the function pop-up above the editor panes,
/// the panes in a split view, and the status line with the progress indicator below.
class DocumentWindow : public QMainWindow
{
    Q_OBJECT

public:
    explicit DocumentWindow(QWidget* parent = nullptr);

    QSplitter* splitView() const { return _splitView; }
    QLabel* infoField() const { return _infoField; }
    QProgressBar* indicator() const { return _indicator; }
    QComboBox* functionPopUp() const { return _functionPopUp; }

    /// The style's mark of a partly checked box, for a menu item in the mixed state.
    QIcon mixedStateIcon() const;

    /// Asked before the window closes; returning false keeps it open.
    void setCloseHandler(std::function<bool()> handler) { _closeHandler = std::move(handler); }

Q_SIGNALS:
    void becameActive();

protected:
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    QSplitter* _splitView = nullptr;
    QLabel* _infoField = nullptr;
    QProgressBar* _indicator = nullptr;
    QComboBox* _functionPopUp = nullptr;
    std::function<bool()> _closeHandler;
};
