#pragma once

#include <QHash>
#include <QString>

namespace penwick::wording {

/// Returns the built-in Japanese texts by key. The table is built on first use and never changes.
[[nodiscard]] const QHash<QString, QString> &fallbackTable();

/// Returns the texts of the built-in English profile by key. It has only a few; all others stay
/// Japanese.
[[nodiscard]] QHash<QString, QString> englishValues();

} // namespace penwick::wording
