#include "recovery/ChangeCollector.h"

#include <algorithm>
#include <utility>

namespace penwick {

namespace {

/// More separate changes than a user makes between two writes.
constexpr std::size_t kMostChanges = 1000;

/// True when the change touches or overlaps what `last` inserted.
bool meets(const TextDifference &last, qint64 offset, qint64 removed)
{
    return offset <= last.range.location + last.replacement.size() &&
           offset + removed >= last.range.location;
}

/// Makes `last` the single change that equals it and the one after it.
void extend(TextDifference &last, const Text &text, qint64 offset, qint64 removed, qint64 inserted)
{
    const qint64 end = last.range.location + last.replacement.size();
    const qint64 start = std::min(last.range.location, offset);
    const qint64 removedBefore = last.range.location - start;
    const qint64 removedAfter = std::max<qint64>(0, offset + removed - end);
    const qint64 length = std::max(end, offset + removed) - start - removed + inserted;
    last = {{start, removedBefore + last.range.length + removedAfter}, text.mid(start, length)};
}

} // namespace

void ChangeCollector::add(const Text &text, qint64 offset, qint64 removed, qint64 inserted)
{
    if (m_requiresWhole)
        return;
    if (!m_changes.empty() && meets(m_changes.back(), offset, removed))
        extend(m_changes.back(), text, offset, removed, inserted);
    else if (m_changes.size() < kMostChanges)
        m_changes.push_back({{offset, removed}, text.mid(offset, inserted)});
    else
        requireWhole();
}

void ChangeCollector::requireWhole()
{
    m_requiresWhole = true;
    m_changes.clear();
}

std::optional<std::vector<TextDifference>> ChangeCollector::take()
{
    if (std::exchange(m_requiresWhole, false))
        return std::nullopt;
    return std::exchange(m_changes, {});
}

} // namespace penwick
