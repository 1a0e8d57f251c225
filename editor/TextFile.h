#pragma once

#include "editor/DocumentError.h"
#include "platform/files/FileVersion.h"
#include "text/Text.h"

#include <QString>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <tl/expected.hpp>

namespace penwick {

/// The progress of a load or a save, and its cancellation. Shared by the worker and the watching
/// thread: every member may be called from both, unless it says otherwise.
class TransferProgress final
{
public:
    /// \param longestPause a load pauses for so long at most when it has the start of the text.
    explicit TransferProgress(std::chrono::milliseconds longestPause = {})
        : m_longestPause(longestPause)
    {
    }

    /// Bytes transferred so far.
    [[nodiscard]] qint64 done() const { return m_done.load(std::memory_order_relaxed); }

    /// Bytes to transfer, as far as the number is known.
    [[nodiscard]] qint64 total() const { return m_total.load(std::memory_order_relaxed); }

    void setTotal(qint64 bytes) { m_total.store(bytes, std::memory_order_relaxed); }

    void advance(qint64 bytes) { m_done.fetch_add(bytes, std::memory_order_relaxed); }

    /// Makes the work stop at its next block. It may have completed by then.
    void cancel()
    {
        m_isCancelled.store(true, std::memory_order_relaxed);
        resume();
    }

    [[nodiscard]] bool isCancelled() const { return m_isCancelled.load(std::memory_order_relaxed); }

    /// The start of the text that is read, as far as it is decoded; empty at first.
    [[nodiscard]] Text readSoFar() const
    {
        const std::lock_guard lock(m_mutex);
        return m_readSoFar;
    }

    void setReadSoFar(const Text &text)
    {
        const std::lock_guard lock(m_mutex);
        m_readSoFar = text;
    }

    /// Ends the pause of a load, or prevents it.
    void resume()
    {
        const std::lock_guard lock(m_mutex);
        m_longestPause = {};
        m_resumed.notify_all();
    }

    /// Waits until `resume` or `cancel` has been called, but no longer than the longest pause in
    /// all. For the worker.
    void pause()
    {
        std::unique_lock lock(m_mutex);
        m_resumed.wait_for(lock, m_longestPause, [this] { return m_longestPause.count() == 0; });
        m_longestPause = {};
    }

private:
    std::atomic<qint64> m_done{0};
    std::atomic<qint64> m_total{0};
    std::atomic<bool> m_isCancelled{false};
    mutable std::mutex m_mutex; // Protects the following.
    Text m_readSoFar;
    std::chrono::milliseconds m_longestPause;
    std::condition_variable m_resumed;
};

/// A text and the state of the file that holds it.
struct StoredText
{
    Text text;
    std::optional<FileVersion> version;
};

/// The outcome of reading or writing a file.
using TransferOutcome = tl::expected<StoredText, DocumentError>;

/// Reads the file once, block by block, as strict UTF-8. Fails with `kUnsupportedContent` for other
/// content. Decodes on several threads. Needs memory for the text and a few blocks. Safe to call
/// from any thread.
[[nodiscard]] TransferOutcome readTextFile(const QString &path, TransferProgress &progress);

/// False when the first block of the file shows that `readTextFile` would fail with
/// `kUnsupportedContent`. True also for a file that cannot be read.
[[nodiscard]] bool startsAsText(const QString &path);

/// Which state of a file may be replaced without asking: any state, or the known one only.
struct Replaceable
{
    bool anyState = true;
    std::optional<FileVersion> state; ///< Used only when `anyState` is false.
    bool missing = true;              ///< Whether a file that does not exist may be created.

    /// True when the file now at `path` may be replaced.
    [[nodiscard]] bool fits(const QString &path) const;
};

/// Replaces the file's content by the text and waits until it is safely on the disk, as
/// `replaceFile` does. After a cancellation or a failure other than `FileError::Kind::Damaged` the
/// old file is untouched. Fails with `FileError::Kind::Changed` when `replaceable` does not allow
/// replacing the file, which is checked once more at the last moment. Needs memory for one block.
/// Safe to call from any thread.
[[nodiscard]] TransferOutcome writeTextFile(const QString &path,
                                            const Text &text,
                                            TransferProgress &progress,
                                            const Replaceable &replaceable = {});

} // namespace penwick
