#pragma once

#include <QString>

namespace penwick::wording {

/// Returns the label of a macro's or a profile's source, such as `builtin`, in the active wording;
/// empty for an unknown one.
[[nodiscard]] QString sourceLabel(const QString &source);

} // namespace penwick::wording
