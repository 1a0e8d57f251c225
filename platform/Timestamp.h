#pragma once

#include <QDateTime>
#include <QString>

#include <functional>

namespace penwick {

/// Tells the current instant. Tests hand in their own.
using Clock = std::function<QDateTime()>;

/// The machine's clock.
[[nodiscard]] Clock systemClock();

/// The clock's instant as ISO 8601 text in UTC with whole seconds, 2025-03-01T09:15:00Z: the form
/// of every stored time, so that comparing texts compares times. Fractions are cut off.
[[nodiscard]] QString nowTimestamp(const Clock &clock = systemClock());

} // namespace penwick
