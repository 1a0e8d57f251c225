#pragma once

#include <QString>

#include <functional>

namespace penwick {

/// Returns a new identifier on each call. Tests pass their own source.
using IdSource = std::function<QString()>;

/// Returns a random UUID: 36 characters, upper-case hexadecimal digits in groups of 8-4-4-4-12.
[[nodiscard]] QString newUuid();

/// `newUuid` as an identifier source.
[[nodiscard]] IdSource randomIds();

} // namespace penwick
