#include "find/FindCount.h"

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
        m_finder.step(m_text, from, [&](const TextRange &, const QRegularExpressionMatch *) {
            ++found;
            return true;
        });
    const std::scoped_lock lock(m_mutex);
    m_effort.add(from, step);
    m_progress.count += found;
    m_progress.isComplete = step.isAtEnd;
    m_progress.isTooComplex = step.isTooComplex || (!step.isAtEnd && m_effort.isTooMuch());
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

std::optional<qint64> FindCount::numberOf(const TextRange &range,
                                          const FindIsCancelled &isCancelled) const
{
    {
        const std::scoped_lock lock(m_mutex);
        if (!m_progress.isComplete && range.location >= m_checkpoints.back().place.offset)
            return std::nullopt;
    }
    const Checkpoint checkpoint = checkpointBefore(range.location);
    qint64 number = checkpoint.count;
    bool isFound = false;
    const auto visit = [&](const TextRange &match, const QRegularExpressionMatch *) {
        ++number;
        isFound = match == range;
        return match.location < range.location;
    };
    m_finder.search(m_text, checkpoint.place, visit, range.location + 1, isCancelled);
    return isFound ? number : 0;
}

FindPlace FindCount::placeBefore(qint64 offset) const
{
    const Checkpoint checkpoint = checkpointBefore(offset);
    {
        // The count has passed `offset`: use the checkpoint, even if a long match puts it far back.
        const std::scoped_lock lock(m_mutex);
        if (m_progress.isComplete || m_checkpoints.back().place.offset > offset)
            return checkpoint.place;
    }
    constexpr qint64 kNear = 2 * TextFinder::kStepUnits;
    if (offset - checkpoint.place.offset <= kNear)
        return checkpoint.place;
    const qint64 line = m_text.offsetAfterLineBreak(m_text.lineBreaksBefore(offset));
    if (offset - line <= kNear)
        return {line, false};
    return {m_text.clusterBoundaryWithin(offset, 64).value_or(offset), false};
}

std::vector<TextRange> FindCount::matchesIn(qint64 start,
                                            qint64 end,
                                            std::size_t limit,
                                            const FindIsCancelled &isCancelled) const
{
    // How far before the range a match that reaches into it may begin.
    constexpr qint64 kReach = 1'024;
    std::vector<TextRange> matches;
    const auto visit = [&](const TextRange &match, const QRegularExpressionMatch *) {
        if (match.end() >= start)
            matches.push_back(match);
        return matches.size() < limit;
    };
    const FindPlace from = placeBefore(std::max<qint64>(0, start - kReach));
    m_finder.search(m_text, from, visit, end + 1, isCancelled);
    return matches;
}

} // namespace penwick
