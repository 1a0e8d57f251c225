#pragma once

#include "macro/engine/MacroRuntimeService.h"
#include "macro/script/StoppableWaiter.h"

#include <QElapsedTimer>
#include <QObject>
#include <QPointer>
#include <QSemaphore>

#include <optional>
#include <thread>

class QEventLoop;
class QWidget;

namespace penwick {

class MacroRunNotice;

/// One run of a macro on a window, from its start until it has ended or was stopped. The script's
/// process is waited for on a thread of the run's own. Use it from the main thread.
///
/// It deletes itself some time after `ended`; destroyed before, it stops the script.
class MacroRun final : public QObject
{
    Q_OBJECT

public:
    /// Starts the evaluation.
    /// \param window takes no drops until the run has ended; held weakly.
    MacroRun(QWidget *window,
             QString macroName,
             MacroRuntimeService::Evaluation evaluation,
             QObject *parent);
    ~MacroRun() override;

    /// Returns as soon as the run has ended, after a second at the latest. A short run happens
    /// between two events, like any other command. In a longer one the window is painted and can be
    /// moved, while keys and clicks wait for what comes next: the end, or a `MacroRunNotice`.
    void waitAWhile();

    /// Puts the notice over the window now, or brings it to the front.
    void showNotice();

    /// Ends the run at once; `ended` says `Stopped`, whatever the script has come to meanwhile.
    void stop();

Q_SIGNALS:
    /// Once, from within `waitAWhile` and `stop` or in a turn of the event loop.
    void ended(const penwick::ScriptOutcome &outcome);

private:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void start(MacroRuntimeService::Evaluation evaluation);
    void finish();
    void end(const ScriptOutcome &outcome);

    QPointer<QWidget> m_window;
    QString m_macroName;
    QElapsedTimer m_since;
    QPointer<MacroRunNotice> m_notice;
    QEventLoop *m_loop = nullptr; // While it runs.
    bool m_hasEnded = false;
    StoppableWaiter m_waiter;
    std::optional<ScriptOutcome> m_outcome; // The thread's, until it says that it is done.
    QSemaphore m_done;
    std::thread m_thread;
};

} // namespace penwick
