#pragma once

#include "platform/files/FileSystem.h"

namespace penwick {

/// Passes everything from standard input to `take`, in order, and waits for its end. Fails with
/// `Cancelled` when `take` returns false.
[[nodiscard]] tl::expected<void, FileError> readStandardInput(const TakeBytes &take);

} // namespace penwick
