#pragma once

#include <QObject>
#include <QPointer>

#include <memory>
#include <vector>

class QKeyEvent;
class QWidget;

namespace penwick {

/// Keys that were typed into a window before it was blocked, for delivery when it is free again. Qt
/// discards the keys for a blocked window that it has not yet delivered.
class HeldKeys final : public QObject
{
    Q_OBJECT

public:
    /// \param window held weakly.
    explicit HeldKeys(QWidget *window);
    ~HeldKeys() override;

    /// Processes all pending events. Keys for the window are held. Those of commands are refused
    /// with a sound, and clicks on the window are discarded.
    void collect();

    /// Posts the held keys to the widget of the window that has the focus, in the order of typing.
    void deliver();

private:
    void hold(const QKeyEvent &key);
    bool eventFilter(QObject *watched, QEvent *event) override;

    QPointer<QWidget> m_window;
    std::vector<std::unique_ptr<QKeyEvent>> m_keys;
};

} // namespace penwick
