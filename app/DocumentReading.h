#pragma once

#include "app/DocumentSaver.h"
#include "editor/TextDocument.h"

#include <memory>
#include <tl/expected.hpp>

namespace penwick {

/// How to treat a file that does not exist.
enum class MissingFile {
    IsAnError,
    IsAnEmptyDocument, ///< The document is saved there.
};

/// Makes a document from a file. A large file is read on another thread, and the document may be
/// returned while it is still being read (`isReading`). Errors that are known at once are returned.
/// \param path absolute.
[[nodiscard]] tl::expected<std::unique_ptr<TextDocument>, DocumentError>
readDocument(const QString &path, MissingFile missingFile, const TransferLimits &limits);

} // namespace penwick
