#pragma once

#include "macro/library/Macro.h"
#include "platform/JsonRecord.h"
#include "platform/JsonValue.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QList>

#include <tl/expected.hpp>

namespace penwick {

/// Macros as JSON. A macro is an object with exactly the names of its fields.
class MacroJson final
{
public:
    MacroJson() = delete;

    [[nodiscard]] static JsonValue encode(const Macro &macro);

    /// All twelve members must be there with their types: texts, a truth value for `isEnabled`, a
    /// whole number for `sortOrder`. Other members are ignored.
    [[nodiscard]] static tl::expected<Macro, JsonRecordError> decode(const JsonValue &value);

    /// The text of a macro file: an array of macros, in the order given.
    [[nodiscard]] static QByteArray write(const QList<Macro> &macros);

    /// Reads what `write` writes, in file order. One unreadable macro makes all unreadable.
    [[nodiscard]] static tl::expected<QList<Macro>, JsonRecordError> read(QByteArrayView text);
};

} // namespace penwick
