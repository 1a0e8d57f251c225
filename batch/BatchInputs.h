#pragma once

#include "batch/BatchOptions.h"
#include "platform/files/FileError.h"

#include <QByteArray>
#include <QList>

#include <tl/expected.hpp>
#include <variant>

namespace penwick {

/// One text to run macros on.
struct BatchInput
{
    QByteArray name; ///< As given; for messages and, unless it is standard input, for opening it.
    bool isStandardInput = false;

    bool operator==(const BatchInput &) const = default;
};

/// Why a list of names could not be read.
struct NameListError
{
    QByteArray path;
    FileError error;
};

using InputFault = std::variant<UsageFault, NameListError>;

/// Returns the inputs that the options name, in their order. Reads the lists of names. A file that
/// is named more than once, also by several links to it, is returned once. Does not open the
/// inputs.
[[nodiscard]] tl::expected<QList<BatchInput>, InputFault>
collectInputs(const BatchOptions &options);

/// Reads a file of any kind to its end, also a pipe.
[[nodiscard]] tl::expected<QByteArray, FileError> readAnyFile(const QByteArray &path);

} // namespace penwick
