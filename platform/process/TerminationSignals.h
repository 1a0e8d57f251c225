#pragma once

#include <QObject>

namespace penwick {

/// Emits a Qt signal in the main thread for each SIGTERM, SIGHUP and SIGINT. Only one object may
/// exist at a time. After its destruction the three end the process again.
class TerminationSignals final : public QObject
{
    Q_OBJECT

public:
    explicit TerminationSignals(QObject *parent = nullptr);
    ~TerminationSignals() override;

Q_SIGNALS:
    /// Emitted in its own pass of the event loop, also while a modal dialog is open.
    void received(int signalNumber);

private:
    void takeNext();
};

} // namespace penwick
