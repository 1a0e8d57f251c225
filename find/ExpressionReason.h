#pragma once

#include <QString>

namespace penwick {

/// Returns what is wrong with a regular expression in the active wording, by the message of the
/// library. The library has no other name for it than this English text; one that is not known
/// here, such as that of a later version, is returned as it is.
[[nodiscard]] QString textOfExpressionReason(const QString &reason);

} // namespace penwick
