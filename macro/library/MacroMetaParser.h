#pragma once

#include "macro/library/Macro.h"

#include <QString>

#include <optional>

namespace penwick {

/// What the header of a macro's code says, and the code without it.
struct ParsedMeta
{
    std::optional<QString> name; ///< Nothing where the header does not set it; never empty.
    std::optional<QString> description;
    std::optional<QString> category;
    std::optional<QString> version;
    std::optional<QString> helpURL;
    QString strippedCode;

    bool operator==(const ParsedMeta &) const = default;
};

/// The comment block at the top of a macro file's code, in which a person can read and edit what
/// the macro is called and what it is for:
///
///     // penwick:macro
///     // name: 行末スペースを削除
///     // helpURL: https://example.com/help
class MacroMetaParser final
{
public:
    MacroMetaParser() = delete;

    /// The macro's code behind a header that holds its name and whatever else is not empty, with an
    /// empty line between the two.
    [[nodiscard]] static QString buildHeader(const Macro &macro);

    /// Never fails: what is not understood ends the header. Keys are compared in lower case, and of
    /// lines with the same key the last one counts. Empty lines behind the header go with it. Code
    /// that does not begin with the marker line has no header and is returned as it is.
    [[nodiscard]] static ParsedMeta parse(const QString &code);
};

} // namespace penwick
