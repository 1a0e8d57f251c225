#pragma once

#include "editor/TextFile.h"
#include "encoding/Encoding.h"
#include "platform/files/FileError.h"
#include "platform/files/FileVersion.h"

#include <QString>

#include <optional>
#include <tl/expected.hpp>

namespace penwick {

/// What a file that is not UTF-8 probably is, judged by a part of it.
struct FileSurvey
{
    qint64 invalidByte = 0; ///< 0-based position of the first byte that is not valid UTF-8.
    std::optional<FileVersion> version;
    bool isBinary = false; ///< It has NUL or many control characters, and is not in UTF-16.
    /// The most probable encoding of the part; null for a binary file, and if none decodes it.
    const Encoding *probable = nullptr;
    /// An encoding that fails, but looks far more probable than all that decode the part; and the
    /// 0-based position of the byte that fails. Null when there is none.
    const Encoding *closest = nullptr;
    qint64 closestEnd = 0;
};

/// Reads the file up to some kilobytes behind the first byte that is not valid UTF-8, and judges
/// that part. Fails with `FileError::Kind::Changed` when all of the file is valid. May be called
/// from any thread, and throws only when memory runs out.
[[nodiscard]] tl::expected<FileSurvey, FileError> surveyFile(const QString &path,
                                                             TransferProgress &progress);

} // namespace penwick
