#pragma once

#include <QString>
#include <QStringView>

#include <optional>
#include <variant>
#include <vector>

namespace penwick {

struct ScriptMember;

/// A value that came out of a script, free of the engine that made it: a tree of plain values.
///
/// Strings hold no lone surrogates. Values without a plain form (symbols, big integers, dates, a
/// reference back to an object that holds it) are kept as `Other`, so that they are never mistaken
/// for null, for a number or for a missing value.
class ScriptValue final
{
public:
    using List = std::vector<ScriptValue>;
    /// In the order that the script's object lists its keys.
    using Map = std::vector<ScriptMember>;

    /// Null.
    ScriptValue() noexcept = default;
    explicit ScriptValue(bool value);
    explicit ScriptValue(double value);
    explicit ScriptValue(QString value);
    explicit ScriptValue(List value);
    explicit ScriptValue(Map value);
    [[nodiscard]] static ScriptValue other();

    [[nodiscard]] bool isNull() const;
    [[nodiscard]] bool isOther() const;

    // Each is null unless the value is of exactly that kind; the pointer lives as long as this.
    [[nodiscard]] const bool *boolean() const;
    [[nodiscard]] const double *number() const;
    [[nodiscard]] const QString *string() const;
    [[nodiscard]] const List *list() const;
    [[nodiscard]] const Map *map() const;

    /// The number, where it is one that a signed 64-bit integer holds exactly (3.0 does, 1.5 and
    /// true do not).
    [[nodiscard]] std::optional<qint64> integer() const;

    /// The value of a map's key, or null when this is no map or lacks the key.
    [[nodiscard]] const ScriptValue *member(QStringView key) const;

    bool operator==(const ScriptValue &other) const;

private:
    struct Null
    {
        bool operator==(const Null &) const = default;
    };

    struct OtherKind
    {
        bool operator==(const OtherKind &) const = default;
    };

    std::variant<Null, bool, double, QString, List, Map, OtherKind> m_value;
};

/// One key of a map and its value.
struct ScriptMember
{
    QString key;
    ScriptValue value;

    bool operator==(const ScriptMember &) const = default;
};

/// A copy in which each lone surrogate is U+FFFD.
[[nodiscard]] QString wellFormed(QStringView utf16);

} // namespace penwick
