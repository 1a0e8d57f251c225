#pragma once

#include "find/TextFinder.h"
#include "text/Text.h"

#include <mutex>
#include <optional>
#include <vector>

namespace penwick {

/// Counts the matches of a pattern in a text, step by step, on one thread; other threads may query
/// the progress meanwhile. It stores one checkpoint per step instead of the matches, so its memory
/// use does not depend on their number. A match's number is computed from the checkpoint before it.
class FindCount final
{
public:
    FindCount(TextFinder finder, Text text);

    struct Progress
    {
        qint64 count = 0;          ///< Matches found so far.
        bool isComplete = false;   ///< The whole text was counted.
        bool isTooComplex = false; ///< The count was abandoned.
    };

    /// Counts one bounded stretch. Returns false when nothing was left to do. Call it from one
    /// thread only.
    bool countStep();

    [[nodiscard]] Progress progress() const;

    /// Returns the number of the match that covers exactly `range`, 1-based from the text's start;
    /// 0 when the pattern has no such match. Returns nothing while the count has not reached
    /// `range`. Costs about one step.
    [[nodiscard]] std::optional<qint64> numberOf(const TextRange &range,
                                                 const FindIsCancelled &isCancelled = {}) const;

    /// Returns the matches that overlap or touch [start, end), ascending, at most `limit` of them.
    /// Costs about as much as the steps over that range.
    [[nodiscard]] std::vector<TextRange> matchesIn(qint64 start,
                                                   qint64 end,
                                                   std::size_t limit,
                                                   const FindIsCancelled &isCancelled = {}) const;

private:
    struct Checkpoint
    {
        FindPlace place;
        qint64 count = 0; // Matches before `place`.
    };

    [[nodiscard]] Checkpoint checkpointBefore(qint64 offset) const;
    /// Returns a place before `offset` from which a search meets the same matches as one from the
    /// text's start. Beyond the counted part, returns some place near `offset`.
    [[nodiscard]] FindPlace placeBefore(qint64 offset) const;

    const TextFinder m_finder;
    const Text m_text;
    mutable std::mutex m_mutex; // Guards the members below.
    std::vector<Checkpoint> m_checkpoints;
    Progress m_progress;
    FindEffort m_effort; // Used by the counting thread only.
};

} // namespace penwick
