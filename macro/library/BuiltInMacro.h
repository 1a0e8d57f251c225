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

/// All of them, in the order in which they are installed.
[[nodiscard]] const QList<BuiltInMacro> &allBuiltInMacros();

/// The text that stands for the macro in ids, wording keys and file names: `trimTrailingSpaces`.
[[nodiscard]] QString rawValue(BuiltInMacro macro);

/// The macro with this raw value; nothing for any other text. Compared exactly.
[[nodiscard]] std::optional<BuiltInMacro> builtInMacro(const QString &rawValue);

} // namespace penwick
