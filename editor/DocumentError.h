#pragma once

#include "platform/FileError.h"

namespace penwick {

/// Why a document could not be read or written.
struct DocumentError
{
    enum class Domain {
        NSOSStatusErrorDomain, ///< The content is at fault.
        NSPOSIXErrorDomain,    ///< The file system is; `code` is an errno value, or 0.
    };

    Domain domain = Domain::NSOSStatusErrorDomain;
    int code = 0;
    /// What kind of failure it was; of meaning in the domain of the file system only.
    FileError::Kind fileErrorKind = FileError::Kind::Other;

    /// The person called it off: nothing to report.
    [[nodiscard]] bool isCancellation() const
    {
        return domain == Domain::NSPOSIXErrorDomain && fileErrorKind == FileError::Kind::Cancelled;
    }

    bool operator==(const DocumentError &) const = default;
};

/// Bytes that are not UTF-8 cannot be read, and a text without a UTF-8 form cannot be written: the
/// generic status of an operation that is not implemented.
inline constexpr DocumentError kUnsupportedContent{DocumentError::Domain::NSOSStatusErrorDomain,
                                                   -4};

} // namespace penwick
