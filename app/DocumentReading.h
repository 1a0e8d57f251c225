#pragma once

#include "app/DocumentSaver.h"
#include "editor/TextDocument.h"

#include <memory>
#include <tl/expected.hpp>

namespace penwick {

/// What becomes of a file that does not exist.
enum class MissingFile {
    IsAnError,
    IsAnEmptyDocument, ///< To be saved there.
};

/// Makes a document of a file. A large one is read on another thread, and may come while that goes
/// on (`isReading`). What is known at once to be impossible fails at once.
/// \param path absolute.
[[nodiscard]] tl::expected<std::unique_ptr<TextDocument>, DocumentError>
readDocument(const QString &path, MissingFile missingFile, const TransferPatience &patience);

} // namespace penwick
