#pragma once

#include <QHash>
#include <QString>

namespace penwick::wording {

/// The built-in Japanese texts by key. Built on first use, never changed afterwards.
[[nodiscard]] const QHash<QString, QString> &fallbackTable();

/// The texts of the built-in English profile by key: a handful, the rest stays Japanese.
[[nodiscard]] QHash<QString, QString> englishValues();

} // namespace penwick::wording
