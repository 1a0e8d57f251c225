#pragma once

#include <QObject>

namespace penwick {

/// Turns SIGTERM, SIGHUP and SIGINT into events of the main thread. At most one at a time; where it
/// is gone they end the process again.
class TerminationSignals final : public QObject
{
    Q_OBJECT

public:
    explicit TerminationSignals(QObject *parent = nullptr);
    ~TerminationSignals() override;

Q_SIGNALS:
    /// Emitted in a turn of the event loop of its own, also in that of a modal dialog.
    void received(int signalNumber);

private:
    void takeNext();
};

} // namespace penwick
