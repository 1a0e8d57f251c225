#pragma once

#include "macro/library/Macro.h"

#include <QString>

#include <optional>

namespace penwick {

/// The values in the header of a macro's code, and the code without the header.
struct ParsedMeta
{
    std::optional<QString> name; ///< Nothing if the header does not set it; never empty.
    std::optional<QString> description;
    std::optional<QString> category;
    std::optional<QString> version;
    std::optional<QString> helpURL;
    QString strippedCode;

    bool operator==(const ParsedMeta &) const = default;
};

/// The comment block at the top of a macro file's code, where a user can read and edit the macro's
/// name and its other descriptive fields:
///
///     // penwick:macro
///     // name: 行末スペースを削除
///     // helpURL: https://example.com/help
class MacroMetaParser final
{
public:
    MacroMetaParser() = delete;

    /// Returns the macro's code after a header with its name and its other fields that are not
    /// empty. An empty line separates the two.
    [[nodiscard]] static QString buildHeader(const Macro &macro);

    /// Never fails: the header ends at the first line that is not part of it. Keys are compared in
    /// lower case; the last line with a key counts. Empty lines after the header are removed with
    /// it. Code that does not begin with the marker line has no header and is returned unchanged.
    [[nodiscard]] static ParsedMeta parse(const QString &code);
};

} // namespace penwick
