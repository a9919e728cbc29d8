#include "app/TerminationSignals.h"

#include <QSocketNotifier>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace {

int pipeEnds[2] = {-1, -1};
constexpr int kSignals[] = {SIGTERM, SIGHUP};

void handleSignal(int signal)
{
    const int saved = errno;
    const unsigned char number = static_cast<unsigned char>(signal);
    // A full pipe already holds a signal waiting to be read; one more adds nothing.
    [[maybe_unused]] const ssize_t written = ::write(pipeEnds[1], &number, 1);
    errno = saved;
}

} // namespace

TerminationSignals::TerminationSignals(QObject* parent)
    : QObject(parent)
{
    if (pipeEnds[0] >= 0 || ::pipe2(pipeEnds, O_CLOEXEC | O_NONBLOCK) != 0) {
        return;
    }
    _notifier = new QSocketNotifier(pipeEnds[0], QSocketNotifier::Read, this);
    connect(_notifier, &QSocketNotifier::activated, this, &TerminationSignals::readPipe);
    struct sigaction action {
    };
    action.sa_handler = handleSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    for (const int signal : kSignals) {
        ::sigaction(signal, &action, nullptr);
    }
}

TerminationSignals::~TerminationSignals()
{
    if (!_notifier) {
        return;
    }
    for (const int signal : kSignals) {
        std::signal(signal, SIG_DFL);
    }
    delete _notifier;
    ::close(pipeEnds[0]);
    ::close(pipeEnds[1]);
    pipeEnds[0] = pipeEnds[1] = -1;
}

void TerminationSignals::readPipe()
{
    unsigned char number = 0;
    while (::read(pipeEnds[0], &number, 1) == 1) {
        Q_EMIT received(number);
    }
}
