#pragma once

#include <QHash>
#include <QString>

namespace penwick::wording {

/// Returns the Japanese texts by key for the keys that the built-in Japanese table lacks. The table
/// is built on first use and never changes. `tools/check-wording-keys.py --update` writes it to
/// docs/wording-keys.md.
[[nodiscard]] const QHash<QString, QString> &ownTexts();

} // namespace penwick::wording
