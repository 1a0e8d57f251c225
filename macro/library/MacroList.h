#pragma once

#include "macro/library/Macro.h"

#include <QList>
#include <QString>

#include <optional>
#include <tl/expected.hpp>

namespace penwick {

/// Returns the path of the file that holds the macros of a data folder.
[[nodiscard]] QString macrosFilePath(const QString &supportFolder);

/// Reads a file of macros. Sorts them by `sortOrder`, ascending; equal ones stay in file order.
/// Needs no lock: the file is only ever replaced as a whole.
/// \return nothing if there is no file; on failure a description for the log.
[[nodiscard]] tl::expected<std::optional<QList<Macro>>, QString>
readMacroList(const QString &filePath);

/// Returns the built-in macros whose ids are not in `present`, in the order in which they are
/// installed, named in the active wording. Their times are empty and their `sortOrder` is 0.
[[nodiscard]] QList<Macro> missingBuiltInMacros(const QList<Macro> &present);

} // namespace penwick
