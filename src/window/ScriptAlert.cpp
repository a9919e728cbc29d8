#include "window/ScriptAlert.h"

#include <QApplication>
#include <QMessageBox>

namespace {

ScriptAlert::Handler& handler()
{
    static ScriptAlert::Handler current;
    return current;
}

} // namespace

void ScriptAlert::setHandler(Handler newHandler)
{
    handler() = std::move(newHandler);
}

void ScriptAlert::show(const QString& title, const QString& text, bool caution,
                       bool applicationModal, QWidget* window)
{
    QWidget* parent = applicationModal ? nullptr : (window ? window : QApplication::activeWindow());
    if (handler()) {
        handler()(Alert{title, text, caution, parent == nullptr});
        return;
    }
    const QMessageBox::Icon icon = caution ? QMessageBox::Warning : QMessageBox::Information;
    // The title is the alert's headline, shown in its body: a title bar cuts long ones off.
    if (parent) {
        auto* box = new QMessageBox(icon, QString(), title, QMessageBox::Ok, parent);
        box->setInformativeText(text);
        box->setAttribute(Qt::WA_DeleteOnClose);
        box->setWindowModality(Qt::WindowModal);
        box->open();
        return;
    }
    QMessageBox box(icon, QString(), title, QMessageBox::Ok);
    box.setInformativeText(text);
    box.setWindowModality(Qt::ApplicationModal);
    box.exec();
}
