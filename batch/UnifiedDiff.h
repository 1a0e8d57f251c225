#pragma once

#include "platform/files/FileError.h"
#include "text/Text.h"

#include <QByteArray>

#include <tl/expected.hpp>

namespace penwick {

/// Returns the differences between two texts as a unified diff that names the file `a/NAME` and
/// `b/NAME`; empty if the texts are equal. The system's `diff` compares the bytes of the texts as
/// UTF-8. Names with special characters are quoted as git does.
/// \param name of the file; a leading slash is left out.
/// \return fails when `diff` cannot be run.
[[nodiscard]] tl::expected<QByteArray, FileError>
unifiedDiff(const QByteArray &name, const Text &before, const Text &after);

} // namespace penwick
