#pragma once

#include <QHash>
#include <QString>

#include <optional>

/// The texts that penwick shows, by dotted key. Use it from the main thread. Look a text up each
/// time it is shown: the active values change when the user applies a profile.
namespace penwick::wording {

/// The active values' text of the key, else the built-in Japanese one, else the key itself.
/// Keys are compared exactly; an empty text of the active values is a text.
[[nodiscard]] QString text(const QString &forKey);

/// As above, but `defaultText` where neither knows the key.
[[nodiscard]] QString text(const QString &forKey, const QString &defaultText);

/// Replaces the active values as a whole; nothing stands for the built-in Japanese texts alone.
/// Only the profile manager and tests call this.
void setActiveValues(std::optional<QHash<QString, QString>> values);

} // namespace penwick::wording
