#pragma once

#include "platform/FileSystem.h"

namespace penwick {

/// Hands all that standard input holds to `take`, in order, and waits for its end. Fails with
/// `Cancelled` when `take` stopped it.
[[nodiscard]] tl::expected<void, FileError> readStandardInput(const TakeBytes &take);

} // namespace penwick
