#pragma once

#include <QDateTime>
#include <QString>

#include <functional>

namespace penwick {

/// Returns the current time. Tests pass their own clock.
using Clock = std::function<QDateTime()>;

/// The system clock.
[[nodiscard]] Clock systemClock();

/// The clock's time as ISO 8601 text in UTC with whole seconds, 2025-03-01T09:15:00Z: the form of
/// every stored time, so that comparing texts compares times. Fractions of a second are cut off.
[[nodiscard]] QString nowTimestamp(const Clock &clock = systemClock());

} // namespace penwick
