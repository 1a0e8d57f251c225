#pragma once

#include <QString>

#include <vector>

namespace penwick {

/// The texts that an encoding is used for; `Any` for the encodings of all of Unicode that use no
/// bytes of a script's own.
enum class Script { Japanese, SimplifiedChinese, TraditionalChinese, Korean, Western, Any };

/// An encoding that a copy of a file can be converted from. Files are never written in it.
struct Encoding
{
    QString name;          ///< As shown to the user.
    const char *converter; ///< ICU's name of the converter.
    Script script;
    /// True when each text has exactly one form in bytes, which encoding it again must give.
    bool isReversible;
};

/// All of them, in the order in which equally probable ones are listed. The table lives as long as
/// the process.
[[nodiscard]] const std::vector<Encoding> &encodings();

} // namespace penwick
