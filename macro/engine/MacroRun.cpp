#include "macro/engine/MacroRun.h"

#include "macro/engine/MacroRunNotice.h"

#include <QApplication>
#include <QEvent>
#include <QEventLoop>
#include <QTimer>
#include <QWidget>

#include <algorithm>
#include <new>
#include <system_error>
#include <utility>

namespace penwick {

namespace {

constexpr int kQuiet = 100;   // Milliseconds that nobody notices.
constexpr int kNotice = 1000; // Milliseconds after which people want to know.

ScriptOutcome failure(ScriptError::Code code)
{
    return tl::unexpected(ScriptError{code, {}});
}

// What a script gave may be larger than what is left here, where no limit holds.
ScriptOutcome outcomeOf(const MacroRuntimeService::Evaluation &evaluation, ScriptWaiter *waiter)
{
    try {
        return evaluation(waiter);
    } catch (const std::bad_alloc &) {
        return failure(ScriptError::Code::OutOfMemory);
    }
}

} // namespace

MacroRun::MacroRun(QWidget *window,
                   QString macroName,
                   MacroRuntimeService::Evaluation evaluation,
                   QObject *parent)
    : QObject(parent)
    , m_window(window)
    , m_macroName(std::move(macroName))
{
    m_since.start();
    qApp->installEventFilter(this);
    start(std::move(evaluation));
}

MacroRun::~MacroRun()
{
    m_waiter.stop();
    if (m_thread.joinable())
        m_thread.join();
    delete m_notice;
}

void MacroRun::start(MacroRuntimeService::Evaluation evaluation)
{
    auto work = [this, evaluation = std::move(evaluation)]() mutable {
        ScriptOutcome outcome = outcomeOf(evaluation, &m_waiter);
        evaluation = nullptr; // And with it the process, and what it was handed.
        m_outcome = std::move(outcome);
        m_done.release();
        QMetaObject::invokeMethod(this, &MacroRun::finish, Qt::QueuedConnection);
    };
    try {
        m_thread = std::thread(std::move(work));
    } catch (const std::system_error &) { // There are too many threads.
        m_outcome = failure(ScriptError::Code::HostUnavailable);
        m_done.release();
        QMetaObject::invokeMethod(this, &MacroRun::finish, Qt::QueuedConnection);
    }
}

// The loop ends within the second, whatever events do meanwhile. So another run that one of them
// starts, on another window, keeps this one waiting for a second at most, and none keeps the stack.
void MacroRun::waitAWhile()
{
    if (m_done.tryAcquire(1, kQuiet)) {
        m_done.release(); // For `finish`.
        return finish();
    }
    const QPointer<MacroRun> self(this);
    QEventLoop loop;
    m_loop = &loop;
    // Never negative, which would be never: the machine may have stood still meanwhile.
    const auto rest = std::max<qint64>(0, kNotice - m_since.elapsed());
    QTimer::singleShot(static_cast<int>(rest), &loop, [&loop] { loop.quit(); });
    loop.exec(QEventLoop::ExcludeUserInputEvents);
    if (self.isNull())
        return;
    m_loop = nullptr;
    if (!m_hasEnded)
        showNotice();
}

void MacroRun::showNotice()
{
    if (m_hasEnded || m_window == nullptr)
        return;
    if (m_notice == nullptr) {
        m_notice = new MacroRunNotice(m_macroName, m_since, m_window);
        connect(m_notice, &QDialog::rejected, this, &MacroRun::stop);
        m_notice->open(); // Modal for its window alone.
    }
    m_notice->raise();
    m_notice->activateWindow();
    if (m_loop != nullptr)
        m_loop->quit(); // The notice needs keys and clicks.
}

void MacroRun::stop()
{
    m_waiter.stop();
    end(failure(ScriptError::Code::Stopped));
}

// The last thing that the thread asks for, and perhaps called already by who waited for it.
void MacroRun::finish()
{
    if (!m_done.tryAcquire())
        return;
    if (m_thread.joinable())
        m_thread.join();
    end(*std::exchange(m_outcome, std::nullopt));
    deleteLater();
}

void MacroRun::end(const ScriptOutcome &outcome)
{
    if (std::exchange(m_hasEnded, true))
        return;
    qApp->removeEventFilter(this);
    if (m_notice != nullptr) {
        m_notice->hide();
        m_notice->deleteLater(); // It may be what called.
    }
    if (m_loop != nullptr)
        m_loop->quit();
    Q_EMIT ended(outcome);
}

// A drop is no input that the event loop holds back, or that a modal window keeps away.
bool MacroRun::eventFilter(QObject *watched, QEvent *event)
{
    switch (event->type()) {
    case QEvent::DragEnter:
    case QEvent::DragMove:
    case QEvent::Drop:
        break;
    default:
        return false;
    }
    const auto *widget = qobject_cast<const QWidget *>(watched);
    if (widget == nullptr || m_window == nullptr || widget->window() != m_window)
        return false;
    event->ignore();
    return true;
}

} // namespace penwick
