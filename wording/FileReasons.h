#pragma once

#include "platform/files/FileError.h"

#include <QString>

namespace penwick::wording {

/// Returns why a file operation failed, in words for the user.
[[nodiscard]] QString reasonText(FileError::Kind kind);

} // namespace penwick::wording
