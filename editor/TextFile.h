#pragma once

#include "editor/DocumentError.h"
#include "platform/FileVersion.h"
#include "text/Text.h"

#include <QString>

#include <atomic>
#include <optional>
#include <tl/expected.hpp>

namespace penwick {

/// How far a load or a save has come, and the wish to end it early. The one thing that the working
/// and the watching thread share: every operation may be called from both.
class TransferProgress final
{
public:
    /// Bytes moved so far, and bytes to move as far as it is known.
    [[nodiscard]] qint64 done() const { return m_done.load(std::memory_order_relaxed); }

    [[nodiscard]] qint64 total() const { return m_total.load(std::memory_order_relaxed); }

    void setTotal(qint64 bytes) { m_total.store(bytes, std::memory_order_relaxed); }

    void advance(qint64 bytes) { m_done.fetch_add(bytes, std::memory_order_relaxed); }

    /// The work ends at the next block. It may have been done by then.
    void cancel() { m_isCancelled.store(true, std::memory_order_relaxed); }

    [[nodiscard]] bool isCancelled() const { return m_isCancelled.load(std::memory_order_relaxed); }

private:
    std::atomic<qint64> m_done{0};
    std::atomic<qint64> m_total{0};
    std::atomic<bool> m_isCancelled{false};
};

/// A text and the state of the file that holds it.
struct StoredText
{
    Text text;
    std::optional<FileVersion> version;
};

/// What reading or writing a file came to.
using TransferOutcome = tl::expected<StoredText, DocumentError>;

/// Reads the file once, block by block, as strict UTF-8. Fails with `kUnsupportedContent` for other
/// content. Needs memory for the text and one block. Safe to call from any thread.
[[nodiscard]] TransferOutcome readTextFile(const QString &path, TransferProgress &progress);

/// What may be replaced without a word: a file in any state, or in the one that is known. Where
/// there is no file, nothing is lost.
struct Replaceable
{
    bool anyState = true;
    std::optional<FileVersion> state; ///< Of meaning where not any will do.

    /// True when that can be said of what stands at `path` now.
    [[nodiscard]] bool fits(const QString &path) const;
};

/// Replaces the file by the text and waits until it is safe on the disk, as `replaceFile` does.
/// After a failure, or when it was called off, the old file is untouched; so it is where the file
/// was not `replaceable` at the last moment, which fails with `FileError::Kind::Changed`. Needs
/// memory for one block. Safe to call from any thread.
[[nodiscard]] TransferOutcome writeTextFile(const QString &path,
                                            const Text &text,
                                            TransferProgress &progress,
                                            const Replaceable &replaceable = {});

} // namespace penwick
