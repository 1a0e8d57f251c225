#pragma once

#include "platform/json/JsonValue.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <tl/expected.hpp>

namespace penwick {

/// Why a text was not read as JSON.
struct JsonError
{
    enum class Kind {
        Syntax,      ///< Not the grammar of RFC 8259, or an unpaired surrogate escape.
        InvalidUtf8, ///< Not valid UTF-8.
        TooDeep,     ///< Arrays and objects nested deeper than `JsonText::kMaximumDepth`.
    };

    Kind kind = Kind::Syntax;
    qint64 byteOffset = 0; ///< Approximately where reading stopped, 0-based.

    /// A description in English, for logs.
    [[nodiscard]] QString description() const;

    bool operator==(const JsonError &) const = default;
};

/// The text form of JSON.
class JsonText final
{
public:
    static constexpr int kMaximumDepth = 512;

    JsonText() = delete;

    /// Reads one value and nothing after it, strictly by RFC 8259: valid UTF-8, no comments, no
    /// trailing commas, no unpaired surrogate escapes. Integers of 64 bits are exact, all other
    /// numbers are doubles. A number out of the range of a double becomes null instead of an error,
    /// since it may be in a member that is never read. Of several members with the same name the
    /// last one is used. A leading byte-order mark is skipped, as the RFC allows.
    [[nodiscard]] static tl::expected<JsonValue, JsonError> read(QByteArrayView text);

    /// Returns the pretty-printed form that penwick stores: two blanks of indentation,
    /// `"name" : value`, members in ascending order of their names' UTF-8 bytes, `/` written as
    /// `\/`, control characters escaped, everything else as it is. There is no line break at the
    /// end. A lone surrogate becomes U+FFFD, a number that is not finite becomes null.
    [[nodiscard]] static QByteArray write(const JsonValue &value);

    /// Returns the same on one line, without a line break at the end, and with `/` as it is: for
    /// output that other programs read line by line.
    [[nodiscard]] static QByteArray writeLine(const JsonValue &value);
};

} // namespace penwick
