#include "platform/SystemBeep.h"

#include <QApplication>

#include <atomic>

namespace {

std::atomic<int> beeps{0};

} // namespace

void SystemBeep::beep()
{
    ++beeps;
    QApplication::beep();
}

int SystemBeep::count()
{
    return beeps;
}
