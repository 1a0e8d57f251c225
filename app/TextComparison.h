#pragma once

#include "editor/DocumentError.h"

#include <QString>

#include <tl/expected.hpp>

class QWidget;

namespace penwick {

/// Compares a file with the text in a copy, by the system's `diff`. Takes time that grows with
/// both: call it on another thread. \param filePath absolute; an empty path and a missing file
/// count as an empty text. \param copyPath of a copy that `RecoveryCopy` wrote. \return the lines
/// that differ, in unified form; empty if none do. A long result is cut off.
[[nodiscard]] tl::expected<QString, DocumentError> compareWithFile(const QString &filePath,
                                                                   const QString &copyPath);

/// Shows the result in a window over `parent`. Returns at once.
void showComparison(QWidget *parent, const QString &name, const QString &comparison);

} // namespace penwick
