#include "macro/script/ScriptValue.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace penwick {

ScriptValue::ScriptValue(bool value)
    : m_value(value)
{
}

ScriptValue::ScriptValue(double value)
    : m_value(value)
{
}

ScriptValue::ScriptValue(QString value)
    : m_value(std::move(value))
{
}

ScriptValue::ScriptValue(Text value)
    : m_value(std::move(value))
{
}

ScriptValue::ScriptValue(ScriptTexts value)
    : m_value(std::move(value))
{
}

ScriptValue::ScriptValue(List value)
    : m_value(std::move(value))
{
}

ScriptValue::ScriptValue(Map value)
    : m_value(std::move(value))
{
}

ScriptValue ScriptValue::other()
{
    ScriptValue value;
    value.m_value = OtherKind();
    return value;
}

bool ScriptValue::isNull() const
{
    return std::holds_alternative<Null>(m_value);
}

bool ScriptValue::isOther() const
{
    return std::holds_alternative<OtherKind>(m_value);
}

const bool *ScriptValue::boolean() const
{
    return std::get_if<bool>(&m_value);
}

const double *ScriptValue::number() const
{
    return std::get_if<double>(&m_value);
}

const QString *ScriptValue::string() const
{
    return std::get_if<QString>(&m_value);
}

const Text *ScriptValue::text() const
{
    return std::get_if<Text>(&m_value);
}

const ScriptTexts *ScriptValue::texts() const
{
    return std::get_if<ScriptTexts>(&m_value);
}

const ScriptValue::List *ScriptValue::list() const
{
    return std::get_if<List>(&m_value);
}

const ScriptValue::Map *ScriptValue::map() const
{
    return std::get_if<Map>(&m_value);
}

std::optional<QString> ScriptValue::anyString() const
{
    if (text() != nullptr)
        return text()->toString();
    return string() != nullptr ? std::optional(*string()) : std::nullopt;
}

std::optional<Text> ScriptValue::anyText() const
{
    if (string() != nullptr)
        return Text(*string());
    return text() != nullptr ? std::optional(*text()) : std::nullopt;
}

std::optional<qint64> ScriptValue::integer() const
{
    constexpr double kTwoToThe63 = 9223372036854775808.0;
    const double *value = number();
    if (value == nullptr || std::trunc(*value) != *value) // NaN differs from itself.
        return std::nullopt;
    if (*value < -kTwoToThe63 || *value >= kTwoToThe63)
        return std::nullopt;
    return static_cast<qint64>(*value);
}

const ScriptValue *ScriptValue::member(QStringView key) const
{
    const Map *members = map();
    if (members == nullptr)
        return nullptr;
    const auto found = std::find_if(members->begin(),
                                    members->end(),
                                    [key](const ScriptMember &entry) { return entry.key == key; });
    return found == members->end() ? nullptr : &found->value;
}

bool ScriptValue::operator==(const ScriptValue &other) const
{
    if (text() != nullptr || other.text() != nullptr)
        return anyText() == other.anyText();
    return m_value == other.m_value;
}

bool isWellFormed(QStringView utf16)
{
    constexpr qsizetype kBlock = 256;
    const char16_t *units = utf16.utf16();
    qsizetype start = 0;
    while (start < utf16.size()) {
        qsizetype end = std::min(start + kBlock, utf16.size());
        char16_t surrogates = 0; // A number and no early exit, so that the compiler can vectorize.
        for (qsizetype i = start; i < end; ++i)
            surrogates |= static_cast<char16_t>((units[i] & 0xF800) == 0xD800);
        if (surrogates != 0) {
            if (end < utf16.size() && utf16[end - 1].isHighSurrogate())
                ++end; // Do not divide a pair.
            if (!utf16.sliced(start, end - start).isValidUtf16())
                return false;
        }
        start = end;
    }
    return true;
}

QString wellFormed(QStringView utf16)
{
    QString result(utf16.data(), utf16.size());
    if (isWellFormed(utf16))
        return result;
    QChar *units = result.data();
    const qsizetype size = result.size();
    for (qsizetype i = 0; i < size; ++i) {
        if (!units[i].isSurrogate())
            continue;
        if (units[i].isHighSurrogate() && i + 1 < size && units[i + 1].isLowSurrogate())
            ++i;
        else
            units[i] = QChar::ReplacementCharacter;
    }
    return result;
}

} // namespace penwick
