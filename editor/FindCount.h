#pragma once

#include "editor/TextFinder.h"
#include "text/Text.h"

#include <mutex>
#include <optional>
#include <vector>

namespace penwick {

/// Counts the matches of a pattern in a text, step by step, on one thread, while another asks how
/// far it has come. It keeps a checkpoint per step instead of the matches, so that memory does not
/// depend on their number, and a match's number is found from the checkpoint before it.
class FindCount final
{
public:
    FindCount(TextFinder finder, Text text);

    struct Progress
    {
        qint64 count = 0;          ///< Matches found so far.
        bool isComplete = false;   ///< Nothing is left to count.
        bool isTooComplex = false; ///< The count was given up.
    };

    /// Counts one bounded stretch. False when there was nothing left to do. One thread only.
    bool countStep();

    [[nodiscard]] Progress progress() const;

    /// The number of the match that covers exactly `range`, counted from 1 at the text's start; 0
    /// where the pattern has no such match. Nothing as long as the count has not come so far.
    /// Costs about one step.
    [[nodiscard]] std::optional<qint64> numberOf(const FindMatch &range,
                                                 const FindIsCancelled &isCancelled = {}) const;

    /// The matches that overlap or touch [start, end), ascending, at most `limit` of them. Costs
    /// about the steps over that range.
    [[nodiscard]] std::vector<FindMatch> matchesIn(qint64 start,
                                                   qint64 end,
                                                   std::size_t limit,
                                                   const FindIsCancelled &isCancelled = {}) const;

    [[nodiscard]] const Text &text() const { return m_text; }

    [[nodiscard]] const TextFinder &finder() const { return m_finder; }

private:
    struct Checkpoint
    {
        FindPlace place;
        qint64 count = 0; // Matches before it.
    };

    [[nodiscard]] Checkpoint checkpointBefore(qint64 offset) const;
    /// Where to begin so that the matches around `offset` are met as from the text's start, as far
    /// as the count has come; else somewhere near.
    [[nodiscard]] FindPlace placeBefore(qint64 offset) const;

    const TextFinder m_finder;
    const Text m_text;
    mutable std::mutex m_mutex; // For everything below.
    std::vector<Checkpoint> m_checkpoints;
    Progress m_progress;
    FindEffort m_effort; // Of the counting thread alone.
};

} // namespace penwick
