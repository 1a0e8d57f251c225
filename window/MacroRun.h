#pragma once

#include "editor/Worker.h"
#include "macro/engine/MacroRuntimeService.h"
#include "macro/script/StoppableWaiter.h"
#include "window/HeldKeys.h"

#include <QElapsedTimer>
#include <QObject>
#include <QPointer>

class QEventLoop;
class QWidget;

namespace penwick {

class MacroRunNotice;

/// One run of a macro on a window, from its start until it ends or is stopped. A thread of the
/// run's own waits for the script host. Use it from the main thread.
///
/// Deletes itself some time after `ended`. Destroying it earlier stops the script.
class MacroRun final : public QObject
{
    Q_OBJECT

public:
    /// Starts the evaluation.
    /// \param window rejects drops until the run has ended; held weakly.
    MacroRun(QWidget *window,
             QString macroName,
             MacroRuntimeService::Evaluation evaluation,
             QObject *parent);
    ~MacroRun() override;

    /// Waits until the run has ended, at most until one second after its start; shows a
    /// `MacroRunNotice` if the run has not ended by then. Blocks the main thread at first, so that
    /// no event is processed during a short run. Then runs an event loop in which the window is
    /// repainted and can be moved, while keys and clicks are delayed until this has returned. If
    /// the notice appears, keys are delayed until the run has ended.
    void waitUntilNotice();

    /// Shows the notice over the window now, or brings it to the front.
    void showNotice();

    /// Ends the run at once. `ended` reports `Stopped`, even if the script has ended meanwhile.
    void stop();

Q_SIGNALS:
    /// Emitted once, from within `waitUntilNotice` or `stop`, or in a later turn of the event loop.
    void ended(const penwick::ScriptOutcome &outcome);

private:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void finish();
    void end(const ScriptOutcome &outcome);

    QPointer<QWidget> m_window;
    QString m_macroName;
    QElapsedTimer m_since;
    QPointer<MacroRunNotice> m_notice;
    QEventLoop *m_loop = nullptr; // While it runs.
    HeldKeys m_keys;
    bool m_hasEnded = false;
    StoppableWaiter m_waiter;
    Worker<ScriptOutcome> m_worker; // Last, so that it is destroyed first.
};

} // namespace penwick
