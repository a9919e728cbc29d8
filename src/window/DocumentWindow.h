#pragma once

#include <QList>
#include <QMainWindow>
#include <QPointer>

#include <functional>

class InformationBar;
class QComboBox;
class QLabel;
class QProgressBar;
class QSplitter;

/// The top-level window of one document: the function pop-up and the information bars above
/// the editor panes, the panes in a split view, and the status line with the progress
/// indicator below.
class DocumentWindow : public QMainWindow
{
    Q_OBJECT

public:
    explicit DocumentWindow(QWidget* parent = nullptr);

    QSplitter* splitView() const { return _splitView; }
    QLabel* infoField() const { return _infoField; }
    QProgressBar* indicator() const { return _indicator; }
    QComboBox* functionPopUp() const { return _functionPopUp; }

    /// Shows `bar` above the panes, below the bars already shown; the window owns it. A bar
    /// goes away with InformationBar::dismiss().
    void addInformationBar(InformationBar* bar);
    /// The bars shown now, top first.
    QList<InformationBar*> informationBars() const;

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
    QWidget* _barArea = nullptr;
    QList<QPointer<InformationBar>> _bars;
    std::function<bool()> _closeHandler;
};
