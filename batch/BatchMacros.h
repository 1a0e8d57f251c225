#pragma once

#include "batch/BatchOptions.h"
#include "macro/library/Macro.h"

#include <QList>
#include <QString>

#include <tl/expected.hpp>

namespace penwick {

/// A macro to run.
struct BatchMacro
{
    QString id; ///< Empty for code that is not a stored macro.
    QString name;
    QString code;

    bool operator==(const BatchMacro &) const = default;
};

/// Returns the stored macros in the order of the editor's list, followed by the built-in ones that
/// are missing, which the editor adds when it starts. Only reads.
/// \return on failure a message for the user, in the active wording.
[[nodiscard]] tl::expected<QList<Macro>, QString> storedMacros();

/// Returns the macros that the options name. Reads the store only if one is named by `-m`. Fails
/// for a macro that needs an input if there is none.
/// \return on failure a message for the user, in the active wording.
[[nodiscard]] tl::expected<QList<BatchMacro>, QString> chosenMacros(const BatchOptions &options);

} // namespace penwick
