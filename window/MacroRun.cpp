#include "window/MacroRun.h"

#include "window/MacroRunNotice.h"

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

constexpr int kBlockingWait = 100; // Milliseconds; too short for the user to notice.
constexpr int kNoticeDelay = 1000; // Milliseconds after the start of the run.

ScriptOutcome failure(ScriptError::Code code)
{
    return tl::unexpected(ScriptError{code, {}});
}

// Evaluates a script. Fails with `OutOfMemory` when its value does not fit into the memory that is
// left here: this process has no memory limit of its own.
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
        evaluation = nullptr; // Also frees the process and the script source.
        m_outcome = std::move(outcome);
        m_done.release();
        QMetaObject::invokeMethod(this, &MacroRun::finish, Qt::QueuedConnection);
    };
    try {
        m_thread = std::thread(std::move(work));
    } catch (const std::system_error &) { // The thread could not be started.
        m_outcome = failure(ScriptError::Code::HostUnavailable);
        m_done.release();
        QMetaObject::invokeMethod(this, &MacroRun::finish, Qt::QueuedConnection);
    }
}

// The loop ends within the second, whatever its events do. A run on another window that one of them
// starts therefore delays this one by at most a second, and no run stays on the stack.
void MacroRun::waitUntilNotice()
{
    if (m_done.tryAcquire(1, kBlockingWait)) {
        m_done.release(); // `finish` acquires it again.
        return finish();
    }
    const QPointer<MacroRun> self(this);
    QEventLoop loop;
    m_loop = &loop;
    // A negative interval never fires, so clamp it: the process may have been suspended meanwhile.
    const auto rest = std::max<qint64>(0, kNoticeDelay - m_since.elapsed());
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
        m_notice->open(); // Modal for its window only.
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

// Called once the thread is done. `waitUntilNotice` may have called it before; the second call does
// nothing.
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
        m_notice->deleteLater(); // The call may come from a signal of the notice.
    }
    if (m_loop != nullptr)
        m_loop->quit();
    Q_EMIT ended(outcome);
}

// Filters drops for the window: neither the event loop nor a modal dialog blocks them.
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
