#pragma once

#include "text/Text.h"

#include <QString>
#include <QStringView>

#include <optional>
#include <variant>
#include <vector>

namespace penwick {

struct ScriptMember;

/// Several strings of a list in one piece: a list of a document's lines has too many elements to
/// handle each on its own.
struct ScriptTexts
{
    Text joined;                  ///< With U+000A between each two strings.
    std::vector<quint32> lengths; ///< Of the strings, in UTF-16 code units; at least one.

    bool operator==(const ScriptTexts &) const = default;
};

/// A value that a script returned, independent of the engine that made it: a tree of plain values.
///
/// Strings hold no lone surrogates. Values without a plain form (symbols, big integers, dates, a
/// reference back to an enclosing object) become `Other`, so that they are never mistaken for null,
/// for a number or for a missing value.
class ScriptValue final
{
public:
    /// Each element is a value or, in values that come from a script host, a `texts`, which stands
    /// for as many elements as it has strings.
    using List = std::vector<ScriptValue>;
    /// In the order in which the script's object lists its keys.
    using Map = std::vector<ScriptMember>;

    /// Constructs null.
    ScriptValue() noexcept = default;
    explicit ScriptValue(bool value);
    explicit ScriptValue(double value);
    explicit ScriptValue(QString value);
    /// A string as well, in the form that suits a long one. Equal to the other form.
    explicit ScriptValue(Text value);
    explicit ScriptValue(ScriptTexts value);
    explicit ScriptValue(List value);
    explicit ScriptValue(Map value);
    [[nodiscard]] static ScriptValue other();

    [[nodiscard]] bool isNull() const;
    [[nodiscard]] bool isOther() const;

    // Each returns null unless the value is of exactly that kind. The pointer is valid as long as
    // this.
    [[nodiscard]] const bool *boolean() const;
    [[nodiscard]] const double *number() const;
    [[nodiscard]] const QString *string() const;    ///< A string made from a `QString`.
    [[nodiscard]] const Text *text() const;         ///< A string made from a `Text`.
    [[nodiscard]] const ScriptTexts *texts() const; ///< Only elements of a list are of this kind.
    [[nodiscard]] const List *list() const;
    [[nodiscard]] const Map *map() const;

    /// The string, whatever it was made from.
    [[nodiscard]] std::optional<QString> anyString() const;
    [[nodiscard]] std::optional<Text> anyText() const;

    /// The number, if a signed 64-bit integer holds it exactly (3.0 does, 1.5 and true do not).
    [[nodiscard]] std::optional<qint64> integer() const;

    /// Returns the value of a map's key; null when this is not a map or lacks the key.
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

    std::variant<Null, bool, double, QString, Text, ScriptTexts, List, Map, OtherKind> m_value;
};

/// One key of a map and its value.
struct ScriptMember
{
    QString key;
    ScriptValue value;

    bool operator==(const ScriptMember &) const = default;
};

/// True when the text holds no lone surrogate. Faster than `QStringView::isValidUtf16`.
[[nodiscard]] bool isWellFormed(QStringView utf16);

/// Returns a copy with U+FFFD in place of each lone surrogate.
[[nodiscard]] QString wellFormed(QStringView utf16);

} // namespace penwick
