#pragma once

#include <QString>

#include <functional>

namespace penwick {

/// Gives a new identifier on each call. Tests hand in their own.
using IdSource = std::function<QString()>;

/// A fresh random UUID: 36 characters, upper-case hexadecimal digits in groups of 8-4-4-4-12.
[[nodiscard]] QString newUuid();

/// `newUuid` as an identifier source.
[[nodiscard]] IdSource randomIds();

} // namespace penwick
