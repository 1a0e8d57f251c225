#pragma once

#include "macro/library/BuiltInMacro.h"

#include <QList>
#include <QString>

#include <optional>

namespace penwick {

/// The initial values of a built-in macro.
struct BuiltInMacroDefinition
{
    QString id;
    BuiltInMacro macro = BuiltInMacro::TrimTrailingSpaces;
    QString description;                 ///< Japanese in every wording.
    std::optional<QString> defaultInput; ///< A suggestion; only for macros that take an input.
};

/// The built-in macros: their definitions, names and scripts.
class BuiltInMacroProvider final
{
public:
    BuiltInMacroProvider() = delete;

    /// Returns one definition per macro, in the order of `allBuiltInMacros`.
    [[nodiscard]] static const QList<BuiltInMacroDefinition> &definitions();

    /// Returns the wording key of the macro's name.
    [[nodiscard]] static QString nameKey(BuiltInMacro macro);

    /// True for the id of a macro that needs an input. A copy under another id gets none.
    [[nodiscard]] static bool asksForInput(const QString &macroId);

    /// Returns the macro's JavaScript.
    [[nodiscard]] static QString script(BuiltInMacro macro);
};

} // namespace penwick
