#include "editor/FindCount.h"

#include <algorithm>

namespace penwick {

FindCount::FindCount(TextFinder finder, Text text)
    : m_finder(std::move(finder))
    , m_text(std::move(text))
    , m_checkpoints(1)
{
}

bool FindCount::countStep()
{
    FindPlace from;
    {
        const std::scoped_lock lock(m_mutex);
        if (m_progress.isComplete || m_progress.isTooComplex)
            return false;
        from = m_checkpoints.back().place;
    }
    qint64 found = 0;
    const TextFinder::Step step =
        m_finder.step(m_text, from, [&](const FindMatch &, const QRegularExpressionMatch *) {
            ++found;
            return true;
        });
    const std::scoped_lock lock(m_mutex);
    m_progress.count += found;
    m_progress.isComplete = step.isAtEnd;
    m_progress.isTooComplex = step.isTooComplex;
    m_checkpoints.push_back({step.next, m_progress.count});
    return true;
}

FindCount::Progress FindCount::progress() const
{
    const std::scoped_lock lock(m_mutex);
    return m_progress;
}

FindCount::Checkpoint FindCount::checkpointBefore(qint64 offset) const
{
    const std::scoped_lock lock(m_mutex);
    const auto next = std::upper_bound(
        m_checkpoints.begin(), m_checkpoints.end(), offset, [](qint64 value, const Checkpoint &at) {
            return value < at.place.offset;
        });
    return next == m_checkpoints.begin() ? Checkpoint{} : *std::prev(next);
}

std::optional<qint64> FindCount::numberOf(const FindMatch &range) const
{
    {
        const std::scoped_lock lock(m_mutex);
        if (!m_progress.isComplete && range.start >= m_checkpoints.back().place.offset)
            return std::nullopt;
    }
    const Checkpoint checkpoint = checkpointBefore(range.start);
    qint64 number = checkpoint.count;
    bool isFound = false;
    TextFinder::Step step;
    step.next = checkpoint.place;
    while (!step.isAtEnd && !step.isStopped && !step.isTooComplex) {
        step = m_finder.step(
            m_text,
            step.next,
            [&](const FindMatch &match, const QRegularExpressionMatch *) {
                ++number;
                isFound = match == range;
                return match.start < range.start;
            },
            range.start + 1);
    }
    return isFound ? number : 0;
}

std::vector<FindMatch> FindCount::matchesIn(qint64 start, qint64 end, std::size_t limit) const
{
    std::vector<FindMatch> matches;
    // A match may begin some way before what it reaches into.
    const qint64 early = std::max<qint64>(0, start - TextFinder::kBehindUnits);
    Checkpoint checkpoint = checkpointBefore(early);
    if (early - checkpoint.place.offset > 2 * TextFinder::kStepUnits)
        checkpoint.place = {m_text.offsetAfterLineBreak(m_text.lineBreaksBefore(early)), false};
    if (early - checkpoint.place.offset > 2 * TextFinder::kStepUnits)
        checkpoint.place = {m_text.clusterBoundaryWithin(early, 64).value_or(early), false};
    TextFinder::Step step;
    step.next = checkpoint.place;
    while (!step.isAtEnd && !step.isStopped && !step.isTooComplex) {
        step = m_finder.step(
            m_text,
            step.next,
            [&](const FindMatch &match, const QRegularExpressionMatch *) {
                if (match.end >= start)
                    matches.push_back(match);
                return matches.size() < limit;
            },
            end + 1);
    }
    return matches;
}

} // namespace penwick
