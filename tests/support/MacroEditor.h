#pragma once

#include "macro/script/ScriptHostPool.h"
#include "platform/settings/UserDefaults.h"
#include "support/HeldScript.h"
#include "support/Waits.h"
#include "view/TextView.h"
#include "window/EditorWindowController.h"
#include "window/MacroRunNotice.h"

#include <QTest>
#include <QTimer>

#include <atomic>
#include <functional>

namespace penwick::test {

/// An editor window with a text, an edit that can be undone, and a selection.
struct MacroEditor
{
    static constexpr const char *kBefore = "一行目\r\nsecond 😀\n";
    static constexpr const char *kAfter = "一行!\r\nsecond 😀\n";
    static constexpr TextRange kSelection{5, 3};

    explicit MacroEditor(const QString &settings)
        : defaults(settings)
        , controller(defaults,
                     systemClock(),
                     MacroRuntimeService([] { return ScriptHostPool::shared().start(); },
                                         [this](const QString &) { ++logged; }))
    {
        document.setContentString(Text(QString::fromUtf8(kBefore)));
        controller.setDocument(&document);
        controller.window()->show();
        view()->setSelectedRange({2, 1});
        QTest::keyClicks(view(), QStringLiteral("!"));
        view()->setSelectedRange(kSelection);
        QCoreApplication::processEvents();
    }

    void start(const QString &code, const QString &name = QStringLiteral("name"))
    {
        controller.runMacro(code, QStringLiteral("id"), name, std::nullopt);
    }

    /// Processes events until no macro runs. False at a timeout.
    [[nodiscard]] bool waitForEnd() const
    {
        return QTest::qWaitFor([this] { return !controller.isRunningMacro(); }, kLongWait);
    }

    [[nodiscard]] bool run(const QString &code, const QString &name = QStringLiteral("name"))
    {
        start(code, name);
        return waitForEnd();
    }

    /// As `run`, with a call of `meanwhile` in the event loop of the run, before the script begins.
    [[nodiscard]] bool runDuring(const QString &code, const std::function<void()> &meanwhile)
    {
        const HeldScript held;
        QTimer::singleShot(0, &controller, [&] {
            meanwhile();
            held.release();
        });
        return run(code);
    }

    [[nodiscard]] TextView *view() const { return controller.textView(); }

    /// The document's content, after all queued events.
    [[nodiscard]] QByteArray bytes() const
    {
        QCoreApplication::processEvents();
        return document.contentString().toUtf8();
    }

    [[nodiscard]] QString message() const
    {
        QCoreApplication::processEvents();
        return controller.documentState()->macroNotificationMessage().value_or(QString());
    }

    [[nodiscard]] MacroRunNotice *notice() const
    {
        return controller.window()->findChild<MacroRunNotice *>();
    }

    std::atomic<int> logged = 0; // Log lines of the scripts.
    UserDefaults defaults;
    TextDocument document;
    EditorWindowController controller;
};

/// Stops every run of a window as a user does: with Escape, once the notice is visible.
class RunStopper final
{
public:
    explicit RunStopper(const MacroEditor &editor)
    {
        QObject::connect(&m_timer, &QTimer::timeout, [&editor] {
            if (MacroRunNotice *notice = editor.notice())
                QTest::keyClick(notice, Qt::Key_Escape);
        });
        m_timer.start(20);
    }

private:
    QTimer m_timer;
};

} // namespace penwick::test
