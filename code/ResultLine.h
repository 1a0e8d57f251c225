#pragma once

#include <QStringView>

namespace penwick {

/// Returns the line of the `return` that a macro's result most likely came from, 1-based: the last
/// one outside of functions and brackets, otherwise the last one outside of functions. Returns 0
/// without such a statement. Lines end with line feeds.
/// \param code the body of a function; need not be well-formed.
[[nodiscard]] int resultLine(QStringView code);

} // namespace penwick
