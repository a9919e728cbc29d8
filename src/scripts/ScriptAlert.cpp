#include "scripts/ScriptAlert.h"

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
    if (parent) {
        auto* box = new QMessageBox(icon, title, text, QMessageBox::Ok, parent);
        box->setAttribute(Qt::WA_DeleteOnClose);
        box->setWindowModality(Qt::WindowModal);
        box->open();
        return;
    }
    QMessageBox box(icon, title, text, QMessageBox::Ok);
    box.setWindowModality(Qt::ApplicationModal);
    box.exec();
}
