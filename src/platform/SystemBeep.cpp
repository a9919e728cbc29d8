#include "platform/SystemBeep.h"

#include <atomic>

namespace {

std::atomic<int> beeps{0};
std::atomic<SystemBeep::Sound> sound{nullptr};

} // namespace

void SystemBeep::beep()
{
    ++beeps;
    if (const Sound play = sound) {
        play();
    }
}

int SystemBeep::count()
{
    return beeps;
}

void SystemBeep::setSound(Sound newSound)
{
    sound = newSound;
}
