#include "platform/json/JsonValue.h"

#include <cmath>
#include <limits>

namespace penwick {

JsonValue::JsonValue(quint64 value)
{
    if (value <= static_cast<quint64>(std::numeric_limits<qint64>::max()))
        m_data = static_cast<qint64>(value);
    else
        m_data = value;
}

std::optional<bool> JsonValue::asBool() const
{
    const bool *value = std::get_if<bool>(&m_data);
    return value != nullptr ? std::optional(*value) : std::nullopt;
}

std::optional<qint64> JsonValue::asInteger() const
{
    if (const qint64 *whole = std::get_if<qint64>(&m_data))
        return *whole;
    // Other tools may write 7 as 7.0. Beyond 2^53 a double no longer identifies one integer.
    constexpr double kLargestExact = 9007199254740992.0;
    const double *value = std::get_if<double>(&m_data);
    if (value != nullptr && std::abs(*value) <= kLargestExact && std::trunc(*value) == *value)
        return static_cast<qint64>(*value);
    return std::nullopt;
}

} // namespace penwick
