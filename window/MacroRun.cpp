#include "window/MacroRun.h"

#include "window/MacroRunNotice.h"

#include <QApplication>
#include <QEvent>
#include <QEventLoop>
#include <QTimer>
#include <QWidget>

#include <algorithm>
#include <chrono>
#include <new>
#include <utility>

namespace penwick {

namespace {

constexpr std::chrono::milliseconds kBlockingWait{100}; // Too short for the user to notice.
constexpr int kNoticeDelay = 1000;                      // Milliseconds after the start of the run.

ScriptOutcome scriptFailure(ScriptError::Code code)
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
        return scriptFailure(ScriptError::Code::OutOfMemory);
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
    , m_keys(window)
    , m_worker(
          [this, evaluation = std::move(evaluation)] { return outcomeOf(evaluation, &m_waiter); },
          [] { return scriptFailure(ScriptError::Code::HostUnavailable); },
          [this] { finish(); })
{
    m_since.start();
    qApp->installEventFilter(this);
}

MacroRun::~MacroRun()
{
    m_waiter.stop();
    delete m_notice;
}

// The loop ends within the second, whatever its events do. A run on another window that one of them
// starts therefore delays this one by at most a second, and no run stays on the stack.
void MacroRun::waitUntilNotice()
{
    if (m_worker.waitFor(kBlockingWait))
        return finish();
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
    if (!m_hasEnded && m_notice == nullptr)
        m_keys.collect();
    if (!self.isNull())
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
    end(scriptFailure(ScriptError::Code::Stopped));
}

// Called when the outcome is available.
void MacroRun::finish()
{
    end(m_worker.take());
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
    m_keys.deliver();
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
