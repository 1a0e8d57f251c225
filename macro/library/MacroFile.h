#pragma once

#include "macro/library/Macro.h"
#include "platform/JsonRecord.h"

#include <QByteArray>
#include <QByteArrayView>

#include <tl/expected.hpp>

namespace penwick {

/// One macro as a file to hand on. What a person may want to read or change in it stands a second
/// time in the header of its code.
class MacroFile final
{
public:
    MacroFile() = delete;

    /// The file's text: the macro as the store would write it, its code behind the header.
    [[nodiscard]] static QByteArray write(const Macro &macro);

    /// Reads such a file. Where the header and a member say different things the header counts; the
    /// code comes back without it.
    [[nodiscard]] static tl::expected<Macro, JsonRecordError> read(QByteArrayView text);
};

} // namespace penwick
