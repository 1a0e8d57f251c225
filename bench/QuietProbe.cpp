// A library that LD_PRELOAD loads into a program to measure how long the program takes until its
// window is quiet: a widget has been painted, and the main thread has then used no processor time
// for `kRest`. The measurement starts at PENWICK_STARTED (nanoseconds of the monotonic clock) and
// ends when the main thread last worked. The probe writes one line of JSON to standard output and
// ends the program.
//
// The processor time of the thread shows whether it works. This needs no knowledge of the event
// loop.
//
// With PENWICK_PAGE in the environment, it measures how long penwick takes until it has painted the
// first page of a file that is larger than the window, and until it has painted the text in which
// the user can edit.

#include <QAbstractScrollArea>
#include <QApplication>
#include <QEvent>
#include <QScrollBar>

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

bool isInside(const QObject *object, const char *className)
{
    while (object != nullptr && !object->inherits(className))
        object = object->parent();
    return object != nullptr;
}

class PageFilter final : public QObject
{
public:
    PageFilter(std::int64_t started, QObject *parent)
        : QObject(parent)
        , m_started(started)
    {
    }

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        const auto *area = qobject_cast<QAbstractScrollArea *>(watched->parent());
        const bool isPage = event->type() == QEvent::Paint && area != nullptr &&
                            area->inherits("penwick::TextView") &&
                            area->verticalScrollBar()->maximum() > 0;
        if (isPage) // Reported in a later turn of the event loop, when it has been painted.
            QMetaObject::invokeMethod(
                this,
                [this, isWhole = isInside(area, "penwick::MainEditorView")] { report(isWhole); },
                Qt::QueuedConnection);
        return false;
    }

private:
    void report(bool isWhole)
    {
        const double time = static_cast<double>(now(CLOCK_MONOTONIC) - m_started) / kMillisecond;
        if (m_page < 0)
            m_page = time;
        if (!isWhole)
            return;
        std::printf("{\"page\": %.3f, \"text\": %.3f}\n", m_page, time);
        std::fflush(stdout);
        _exit(0);
    }

    std::int64_t m_started;
    double m_page = -1;
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
    QCoreApplication *application = QCoreApplication::instance();
    const std::int64_t startTime = std::strtoll(started, nullptr, 10);
    if (std::getenv("PENWICK_PAGE") != nullptr) {
        application->installEventFilter(new PageFilter(startTime, application));
        return;
    }
    application->installEventFilter(new PaintFilter(application));
    std::thread(watch, mainThread, startTime).detach();
}

} // namespace

Q_COREAPP_STARTUP_FUNCTION(beginWatching)
