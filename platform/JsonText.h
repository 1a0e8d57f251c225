#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QList>
#include <QMap>
#include <QString>

#include <concepts>
#include <cstddef>
#include <optional>
#include <tl/expected.hpp>
#include <variant>

namespace penwick {

class JsonValue;

using JsonArray = QList<JsonValue>;
using JsonObject = QMap<QString, JsonValue>;

/// One JSON value and everything in it. A plain value, cheap to copy.
class JsonValue final
{
public:
    /// Null.
    JsonValue() = default;

    JsonValue(std::nullptr_t) {}

    // Constrained, for a pointer would turn into a truth value silently.
    JsonValue(std::same_as<bool> auto value)
        : m_data(value)
    {
    }

    JsonValue(qint64 value)
        : m_data(value)
    {
    }

    JsonValue(int value)
        : m_data(qint64{value})
    {
    }

    /// Stored as `qint64` where it fits.
    JsonValue(quint64 value);

    JsonValue(double value)
        : m_data(value)
    {
    }

    JsonValue(QString value)
        : m_data(std::move(value))
    {
    }

    JsonValue(JsonArray value)
        : m_data(std::move(value))
    {
    }

    JsonValue(JsonObject value)
        : m_data(std::move(value))
    {
    }

    [[nodiscard]] bool isNull() const { return std::holds_alternative<std::monostate>(m_data); }

    [[nodiscard]] bool isNumber() const;

    /// Each of these answers nothing (or null) when the value is of another type.
    [[nodiscard]] std::optional<bool> asBool() const;
    /// Any number whose value is a whole 64-bit one: 7, and also 7.0 and 7e0.
    [[nodiscard]] std::optional<qint64> asInteger() const;
    /// Any number; whole ones past 2^53 are rounded.
    [[nodiscard]] std::optional<double> asDouble() const;

    [[nodiscard]] const QString *asText() const { return std::get_if<QString>(&m_data); }

    [[nodiscard]] const JsonArray *asArray() const { return std::get_if<JsonArray>(&m_data); }

    [[nodiscard]] const JsonObject *asObject() const { return std::get_if<JsonObject>(&m_data); }

    bool operator==(const JsonValue &other) const { return m_data == other.m_data; }

private:
    friend class JsonWriter;

    // quint64 only for what qint64 cannot hold.
    std::variant<std::monostate, bool, qint64, quint64, double, QString, JsonArray, JsonObject>
        m_data;
};

/// Why a text is not JSON that penwick takes.
struct JsonError
{
    enum class Kind {
        Syntax,           ///< Not the grammar of RFC 8259, or an unpaired surrogate escape.
        InvalidUtf8,      ///< Not valid UTF-8.
        TooDeep,          ///< Arrays and objects nested deeper than `JsonText::kMaximumDepth`.
        NumberOutOfRange, ///< A number too large for a `double`.
    };

    Kind kind = Kind::Syntax;
    qint64 byteOffset = 0; ///< About where reading stopped, 0-based.

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
    /// trailing commas, no unpaired surrogate escapes. Whole numbers of 64 bits are kept exact, all
    /// others are doubles. Of members with the same name the last one counts. A byte-order mark at
    /// the start is skipped, as the RFC allows a reader.
    [[nodiscard]] static tl::expected<JsonValue, JsonError> read(QByteArrayView text);

    /// The pretty-printed form that penwick stores: two blanks of indentation, `"name" : value`,
    /// members in ascending order of their names' UTF-8 bytes, `/` written as `\/`, control
    /// characters escaped, everything else as it is. No line break at the end. A lone surrogate
    /// becomes U+FFFD, a number that is not finite becomes null.
    [[nodiscard]] static QByteArray write(const JsonValue &value);
};

} // namespace penwick
