#pragma once

#include "editor/TextFile.h"
#include "encoding/Encoding.h"
#include "platform/files/FileError.h"
#include "platform/files/FileVersion.h"

#include <QString>
#include <QStringList>

#include <optional>
#include <tl/expected.hpp>
#include <vector>

namespace penwick {

/// Why a file cannot be converted: bytes that fail (`StrictDecoder`), or else the file system.
struct ConversionError
{
    std::optional<qint64> byteOffset; ///< 0-based.
    FileError fileError;              ///< Only meaningful without `byteOffset`.
};

/// An encoding in which a whole file can be decoded.
struct Candidate
{
    const Encoding *encoding = nullptr;
    QStringList preview; ///< See `Preview`.
    int score = 0;       ///< See `TextScore`, `kScoreOfMark`.
};

/// Reads the whole file once for each encoding and returns those that decode it, the most probable
/// first. Fails with `FileError::Kind::Changed` unless the file still has the state `version`.
/// These functions may be called from any thread, and throw only when memory runs out.
/// \param progress counts the bytes of all encodings.
[[nodiscard]] tl::expected<std::vector<Candidate>, FileError> findCandidates(
    const QString &path, const std::optional<FileVersion> &version, TransferProgress &progress);

/// Returns the decoded text of the file, without a byte-order mark. Line ends stay as they are.
/// Fails as above if the file has changed.
[[nodiscard]] tl::expected<Text, ConversionError>
convertFile(const QString &path,
            const Encoding &encoding,
            const std::optional<FileVersion> &version,
            TransferProgress &progress);

} // namespace penwick
