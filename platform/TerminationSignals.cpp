#include "platform/TerminationSignals.h"

#include <QSocketNotifier>

#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace penwick {

namespace {

constexpr std::array kSignals{SIGTERM, SIGHUP, SIGINT};

/// Written to by the handler, which may do hardly anything else: one byte for each signal.
std::array<int, 2> signalPipe{-1, -1};

void pass(int signalNumber)
{
    const int problem = errno;
    const char byte = static_cast<char>(signalNumber);
    // Where the pipe is full, there is enough to tell already.
    [[maybe_unused]] const auto written = ::write(signalPipe[1], &byte, 1);
    errno = problem;
}

void setHandlers(void (*handler)(int))
{
    for (const int number : kSignals) {
        struct sigaction action = {};
        ::sigaction(number, nullptr, &action);
        // nohup and shells without job control have them ignored, and mean it.
        if (action.sa_handler == SIG_IGN) {
            continue;
        }
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
    if (::pipe2(signalPipe.data(), O_CLOEXEC | O_NONBLOCK) != 0) {
        return; // Then they end the process at once, as everywhere.
    }
    auto *notifier = new QSocketNotifier(signalPipe[0], QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, &TerminationSignals::takeNext);
    setHandlers(pass);
}

TerminationSignals::~TerminationSignals()
{
    if (signalPipe[0] < 0) {
        return;
    }
    setHandlers(SIG_DFL);
    ::close(signalPipe[0]);
    ::close(signalPipe[1]);
    signalPipe = {-1, -1};
}

void TerminationSignals::takeNext()
{
    char byte = 0;
    while (::read(signalPipe[0], &byte, 1) == 1) {
        // Later, for whoever hears of it may ask, and stay in an event loop until that is answered.
        QMetaObject::invokeMethod(
            this, [this, byte] { Q_EMIT received(byte); }, Qt::QueuedConnection);
    }
}

} // namespace penwick
