#pragma once

#include "macro/library/Macro.h"
#include "platform/json/JsonRecord.h"
#include "platform/json/JsonValue.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QList>

#include <tl/expected.hpp>

namespace penwick {

/// Macros as JSON. A macro is an object whose members have the names of its fields.
class MacroJson final
{
public:
    MacroJson() = delete;

    [[nodiscard]] static JsonValue encode(const Macro &macro);

    /// All twelve members must be present with their types: strings, a boolean for `isEnabled`, an
    /// integer for `sortOrder`. Other members are ignored.
    [[nodiscard]] static tl::expected<Macro, JsonRecordError> decode(const JsonValue &value);

    /// Returns the text of a macro file: an array of macros, in the given order.
    [[nodiscard]] static QByteArray write(const QList<Macro> &macros);

    /// Parses what `write` writes, in file order. Fails if any macro cannot be decoded.
    [[nodiscard]] static tl::expected<QList<Macro>, JsonRecordError> read(QByteArrayView text);
};

} // namespace penwick
