#include "encoding/FileConversion.h"

#include "encoding/Preview.h"
#include "encoding/StrictDecoder.h"
#include "encoding/TextScore.h"
#include "platform/files/FileSystem.h"
#include "text/TextBuilder.h"

#include <algorithm>
#include <functional>

namespace penwick {

namespace {

using TakeUnits = std::function<void(std::u16string_view)>;

/// Passes the decoded file to `take`. True when it started with a byte-order mark.
tl::expected<bool, ConversionError> decodeFile(const QString &path,
                                               const Encoding &encoding,
                                               TransferProgress &progress,
                                               const TakeUnits &take)
{
    StrictDecoder decoder(encoding);
    const auto read = readFileInBlocks(path, [&](QByteArrayView block) {
        progress.advance(block.size());
        if (progress.isCancelled() || !decoder.append(block))
            return false;
        take(decoder.units());
        return true;
    });
    if (!read && (!decoder.errorOffset() || progress.isCancelled()))
        return tl::unexpected(ConversionError{std::nullopt, read.error()});
    if (!decoder.finish())
        return tl::unexpected(ConversionError{decoder.errorOffset(), {}});
    take(decoder.units());
    return decoder.hasMark();
}

tl::expected<void, FileError> checkVersion(const QString &path,
                                           const std::optional<FileVersion> &version)
{
    const auto present = FileVersion::of(path);
    if (!present)
        return tl::unexpected(FileError{FileError::Kind::NotFound, 0});
    if (present != version)
        return tl::unexpected(FileError{FileError::Kind::Changed, 0});
    return {};
}

} // namespace

tl::expected<std::vector<Candidate>, FileError> findCandidates(
    const QString &path, const std::optional<FileVersion> &version, TransferProgress &progress)
{
    std::vector<Candidate> candidates;
    const qint64 size = version ? version->size : 0;
    progress.setTotal(size * static_cast<qint64>(encodings().size()));
    qint64 done = 0;
    for (const Encoding &encoding : encodings()) {
        TextScore score(encoding.script);
        Preview preview;
        const auto decoded = decodeFile(path, encoding, progress, [&](std::u16string_view units) {
            score.add(units);
            preview.add(units);
        });
        if (decoded)
            candidates.push_back(
                {&encoding, preview.lines(), *decoded ? kScoreOfMark : score.value()});
        else if (!decoded.error().byteOffset)
            return tl::unexpected(decoded.error().fileError);
        done += size;
        progress.advance(done - progress.done());
    }
    // Checked last: nothing has changed during all the reads.
    if (const auto unchanged = checkVersion(path, version); !unchanged)
        return tl::unexpected(unchanged.error());
    std::stable_sort(candidates.begin(), candidates.end(), [](const auto &a, const auto &b) {
        return a.score > b.score;
    });
    return candidates;
}

tl::expected<Text, ConversionError> convertFile(const QString &path,
                                                const Encoding &encoding,
                                                const std::optional<FileVersion> &version,
                                                TransferProgress &progress)
{
    progress.setTotal(version ? version->size : 0);
    if (const auto unchanged = checkVersion(path, version); !unchanged)
        return tl::unexpected(ConversionError{std::nullopt, unchanged.error()});
    TextBuilder builder;
    const auto decoded = decodeFile(
        path, encoding, progress, [&](std::u16string_view units) { builder.appendUtf16(units); });
    if (!decoded)
        return tl::unexpected(decoded.error());
    if (const auto unchanged = checkVersion(path, version); !unchanged)
        return tl::unexpected(ConversionError{std::nullopt, unchanged.error()});
    return builder.finish();
}

} // namespace penwick
