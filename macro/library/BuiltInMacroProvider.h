#pragma once

#include "macro/library/BuiltInMacro.h"

#include <QList>
#include <QString>

#include <optional>

namespace penwick {

/// What a built-in macro starts out with.
struct BuiltInMacroDefinition
{
    QString id;
    BuiltInMacro macro = BuiltInMacro::TrimTrailingSpaces;
    QString description;                 ///< Japanese, whatever the active wording.
    std::optional<QString> defaultInput; ///< A suggestion; only for macros that take an input.
};

/// The built-in macros: their definitions, names and scripts.
class BuiltInMacroProvider final
{
public:
    BuiltInMacroProvider() = delete;

    /// One per macro, in the order of `allBuiltInMacros`.
    [[nodiscard]] static const QList<BuiltInMacroDefinition> &definitions();

    /// The wording key of the macro's name.
    [[nodiscard]] static QString nameKey(BuiltInMacro macro);

    /// The macro's JavaScript.
    [[nodiscard]] static QString script(BuiltInMacro macro);
};

} // namespace penwick
