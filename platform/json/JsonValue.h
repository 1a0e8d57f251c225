#pragma once

#include <QList>
#include <QMap>
#include <QString>

#include <concepts>
#include <cstddef>
#include <optional>
#include <utility>
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

    // Constrained to bool, since a pointer would convert to bool silently.
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

    /// Each of these returns std::nullopt (or null) when the value has another type.
    [[nodiscard]] std::optional<bool> asBool() const;
    /// Any number whose value is a 64-bit integer: 7, and also 7.0 and 7e0.
    [[nodiscard]] std::optional<qint64> asInteger() const;

    [[nodiscard]] const QString *asText() const { return std::get_if<QString>(&m_data); }

    [[nodiscard]] const JsonArray *asArray() const { return std::get_if<JsonArray>(&m_data); }

    [[nodiscard]] const JsonObject *asObject() const { return std::get_if<JsonObject>(&m_data); }

    bool operator==(const JsonValue &other) const { return m_data == other.m_data; }

    /// The stored value; `quint64` only if it does not fit into `qint64`.
    using Data =
        std::variant<std::monostate, bool, qint64, quint64, double, QString, JsonArray, JsonObject>;

    [[nodiscard]] const Data &data() const { return m_data; }

private:
    Data m_data;
};

} // namespace penwick
