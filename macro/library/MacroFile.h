#pragma once

#include "macro/library/Macro.h"
#include "platform/json/JsonRecord.h"

#include <QByteArray>
#include <QByteArrayView>

#include <tl/expected.hpp>

namespace penwick {

/// The file format for exporting one macro. Fields that a user may want to read or edit are
/// repeated in a header of its code.
class MacroFile final
{
public:
    MacroFile() = delete;

    /// Returns the text of the file: the macro as in the store, with the header before its code.
    [[nodiscard]] static QByteArray write(const Macro &macro);

    /// Parses such a file. Where the header and a member differ, the header wins. The returned code
    /// does not contain the header.
    [[nodiscard]] static tl::expected<Macro, JsonRecordError> read(QByteArrayView text);
};

} // namespace penwick
