#pragma once

#include <QTimeZone>

namespace penwick {

/// Returns the time zone of local times, as the C library takes it from `TZ` or the system: always
/// valid, and under a name of the time zone database, which a program with a copy of its own also
/// knows. `TZ` may also be a path or a rule such as `JST-9`, and the system's file a copy without a
/// name; they are then compared with the database: a copy by its content, a rule by its local
/// times. Only a rule that no zone follows gives a fixed offset, the present one, without such a
/// name.
///
/// Cheap for a named zone. Otherwise some milliseconds once for each value. Use it from the main
/// thread.
[[nodiscard]] QTimeZone systemTimeZone();

} // namespace penwick
