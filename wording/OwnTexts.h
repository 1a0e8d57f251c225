#pragma once

#include <QHash>
#include <QString>

namespace penwick::wording {

/// Returns the Japanese texts by key for the keys that the built-in Japanese table lacks. The table
/// is built on first use and never changes. `tools/check-wording-keys.py --update` writes it to
/// docs/wording-keys.md.
[[nodiscard]] const QHash<QString, QString> &ownTexts();

/// Returns the texts for the same keys that hold under a profile with this locale. For `en` and
/// what begins with `en-` they are those of `englishProfile`, except for a few that the built-in
/// English profile leaves Japanese by design; for any other locale they are `ownTexts()`.
[[nodiscard]] const QHash<QString, QString> &ownTexts(const QString &locale);

} // namespace penwick::wording
