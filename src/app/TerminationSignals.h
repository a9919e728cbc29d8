#pragma once

#include <QObject>

class QSocketNotifier;

/// Turns SIGTERM and SIGHUP (the session ending, a shutdown, `kill`) into a Qt signal on the
/// main thread. The handler only writes the signal's number into a pipe; the event loop
/// reads it, so nothing but that write runs inside the handler.
class TerminationSignals : public QObject
{
    Q_OBJECT

public:
    /// Installs the handlers; one instance per process.
    explicit TerminationSignals(QObject* parent = nullptr);
    /// Gives the signals their default action back.
    ~TerminationSignals() override;

Q_SIGNALS:
    /// SIGTERM or SIGHUP arrived.
    void received(int signal);

private:
    void readPipe();

    QSocketNotifier* _notifier = nullptr;
};
