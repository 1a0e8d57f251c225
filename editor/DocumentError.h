#pragma once

#include "platform/files/FileError.h"

namespace penwick {

/// Why a document could not be read or written.
struct DocumentError
{
    enum class Domain {
        NSOSStatusErrorDomain, ///< The content cannot be read or written.
        NSPOSIXErrorDomain,    ///< The file system failed; `code` is an errno value, or 0.
    };

    Domain domain = Domain::NSOSStatusErrorDomain;
    int code = 0;
    /// The kind of failure; only meaningful in the domain of the file system.
    FileError::Kind fileErrorKind = FileError::Kind::Other;

    /// True when the transfer was cancelled: there is nothing to report.
    [[nodiscard]] bool isCancellation() const
    {
        return domain == Domain::NSPOSIXErrorDomain && fileErrorKind == FileError::Kind::Cancelled;
    }

    bool operator==(const DocumentError &) const = default;
};

/// The failure of a file operation on a document.
[[nodiscard]] inline DocumentError documentError(const FileError &error)
{
    return {DocumentError::Domain::NSPOSIXErrorDomain, error.errnoValue, error.kind};
}

/// The error for bytes that are not UTF-8 and for a text that cannot be encoded as UTF-8. Its code
/// is the generic status of an operation that is not implemented.
inline constexpr DocumentError kUnsupportedContent{DocumentError::Domain::NSOSStatusErrorDomain,
                                                   -4};

} // namespace penwick
