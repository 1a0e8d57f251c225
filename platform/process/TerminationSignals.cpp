#include "platform/process/TerminationSignals.h"

#include <QSocketNotifier>

#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace penwick {

namespace {

constexpr std::array kSignals{SIGTERM, SIGHUP, SIGINT};

/// The signal handler, which may do hardly anything else, writes one byte for each signal to it.
std::array<int, 2> signalPipe{-1, -1};

void pass(int signalNumber)
{
    const int problem = errno;
    const char byte = static_cast<char>(signalNumber);
    // A full pipe already holds enough signals to handle.
    [[maybe_unused]] const auto written = ::write(signalPipe[1], &byte, 1);
    errno = problem;
}

void setHandlers(void (*handler)(int))
{
    for (const int number : kSignals) {
        struct sigaction action = {};
        ::sigaction(number, nullptr, &action);
        // nohup and shells without job control start the process with signals ignored; they stay
        // ignored.
        if (action.sa_handler == SIG_IGN)
            continue;
        action = {};
        action.sa_handler = handler;
        action.sa_flags = SA_RESTART;
        ::sigaction(number, &action, nullptr);
    }
}

} // namespace

TerminationSignals::TerminationSignals(QObject *parent)
    : QObject(parent)
{
    Q_ASSERT(signalPipe[0] < 0);
    if (::pipe2(signalPipe.data(), O_CLOEXEC | O_NONBLOCK) != 0)
        return; // The signals then end the process as by default.
    auto *notifier = new QSocketNotifier(signalPipe[0], QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, &TerminationSignals::takeNext);
    setHandlers(pass);
}

TerminationSignals::~TerminationSignals()
{
    if (signalPipe[0] < 0)
        return;
    setHandlers(SIG_DFL);
    ::close(signalPipe[0]);
    ::close(signalPipe[1]);
    signalPipe = {-1, -1};
}

void TerminationSignals::takeNext()
{
    char byte = 0;
    while (::read(signalPipe[0], &byte, 1) == 1) {
        // Queued, since a slot may open a modal dialog and stay in its event loop until the user
        // answers.
        QMetaObject::invokeMethod(
            this, [this, byte] { Q_EMIT received(byte); }, Qt::QueuedConnection);
    }
}

} // namespace penwick
