#pragma once

#include <QList>
#include <QString>

#include <optional>

namespace penwick {

/// The macros that every user has from the first launch.
enum class BuiltInMacro {
    TrimTrailingSpaces,
    RemoveEmptyLines,
    AddLinePrefix,
    AddLineSuffix,
    InsertDateTime,
    ExtractUrls,
    StripHtmlTags,
};

/// Returns all of them, in the order in which they are installed.
[[nodiscard]] const QList<BuiltInMacro> &allBuiltInMacros();

/// Returns the text for the macro in ids, wording keys and file names, such as
/// `trimTrailingSpaces`.
[[nodiscard]] QString rawValue(BuiltInMacro macro);

/// Returns the macro with exactly this raw value; nothing for any other text.
[[nodiscard]] std::optional<BuiltInMacro> builtInMacro(const QString &rawValue);

} // namespace penwick
