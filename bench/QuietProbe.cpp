// A library that LD_PRELOAD loads into a program to measure how long the program takes until its
// window is quiet: a widget has been painted, and the main thread has then used no processor time
// for `kRest`. The measurement starts at PENWICK_STARTED (nanoseconds of the monotonic clock) and
// ends when the main thread last worked. The probe writes one line of JSON to standard output and
// ends the program.
//
// The processor time of the thread shows whether it works. This needs no knowledge of the event
// loop.

#include <QApplication>
#include <QEvent>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <pthread.h>
#include <thread>
#include <unistd.h>

namespace {

constexpr std::int64_t kMillisecond = 1'000'000;
constexpr std::int64_t kRest = 200 * kMillisecond; // Shorter than the blink interval of a caret.
constexpr std::int64_t kStep = kMillisecond / 4;   // Time between two samples.
constexpr std::int64_t kNoise = kMillisecond / 50; // Processor time that sampling itself may cost.

std::atomic<bool> isPainted = false;

std::int64_t now(clockid_t clock)
{
    timespec time{};
    clock_gettime(clock, &time);
    return std::int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

class PaintFilter final : public QObject
{
public:
    using QObject::QObject;

    bool eventFilter(QObject * /*watched*/, QEvent *event) override
    {
        if (event->type() == QEvent::Paint)
            isPainted = true;
        return false;
    }
};

[[noreturn]] void watch(clockid_t mainThread, std::int64_t started)
{
    std::int64_t worked = now(mainThread);
    std::int64_t lastWork = now(CLOCK_MONOTONIC);
    for (;;) {
        const timespec pause{0, kStep};
        nanosleep(&pause, nullptr);
        const std::int64_t time = now(CLOCK_MONOTONIC);
        const std::int64_t work = now(mainThread);
        if (work - worked > kNoise) {
            worked = work;
            lastWork = time;
        } else if (isPainted && time - lastWork > kRest) {
            std::printf("{\"start\": %.3f, \"work\": %.3f}\n",
                        static_cast<double>(lastWork - started) / kMillisecond,
                        static_cast<double>(work) / kMillisecond);
            std::fflush(stdout);
            _exit(0);
        }
    }
}

void beginWatching()
{
    const char *started = std::getenv("PENWICK_STARTED");
    clockid_t mainThread{};
    if (started == nullptr || pthread_getcpuclockid(pthread_self(), &mainThread) != 0)
        return;
    QCoreApplication::instance()->installEventFilter(new PaintFilter(QCoreApplication::instance()));
    std::thread(watch, mainThread, std::strtoll(started, nullptr, 10)).detach();
}

} // namespace

Q_COREAPP_STARTUP_FUNCTION(beginWatching)
