#include "code/JavaScriptLines.h"

#include <algorithm>
#include <utility>

namespace penwick {

JavaScriptLines::JavaScriptLines(LineText text)
    : m_text(std::move(text))
{
    reset();
}

void JavaScriptLines::reset()
{
    m_states = {JavaScriptState()};
    m_stateNumbers = {{JavaScriptState(), 0}};
    m_numbers.assign(1, 0);
    m_staleLines.clear();
}

void JavaScriptLines::linesChanged(qint64 first, qint64 oldCount, qint64 newCount)
{
    const auto start = static_cast<std::size_t>(first);
    const std::size_t oldEnd = start + static_cast<std::size_t>(oldCount);
    const std::size_t newEnd = start + static_cast<std::size_t>(newCount);
    if (start + 1 >= m_numbers.size())
        return; // The lines after `first` have not been read.
    if (oldEnd >= m_numbers.size()) {
        m_numbers.resize(start + 1);
        std::erase_if(m_staleLines, [start](std::size_t doubt) { return doubt >= start; });
        return;
    }
    const auto from = m_numbers.begin() + static_cast<std::ptrdiff_t>(start) + 1;
    if (newCount < oldCount)
        m_numbers.erase(from, from + (oldCount - newCount));
    else
        m_numbers.insert(from, static_cast<std::size_t>(newCount - oldCount), kUnknown);
    std::fill(m_numbers.begin() + static_cast<std::ptrdiff_t>(start) + 1,
              m_numbers.begin() + static_cast<std::ptrdiff_t>(newEnd),
              kUnknown);
    std::vector<std::size_t> doubts;
    for (const std::size_t doubt : std::as_const(m_staleLines))
        if (doubt < start || doubt >= oldEnd)
            doubts.push_back(doubt < start ? doubt : doubt + newEnd - oldEnd);
    doubts.insert(std::lower_bound(doubts.begin(), doubts.end(), start), start);
    m_staleLines = std::move(doubts);
}

int JavaScriptLines::numberOf(const JavaScriptState &state)
{
    const auto next = static_cast<int>(m_states.size());
    const int number = m_stateNumbers.value(state, next);
    if (number == next) {
        m_states.append(state);
        m_stateNumbers.insert(state, number);
    }
    return number;
}

/// Reads `line`, whose own state is known, and stores the state of the next line.
void JavaScriptLines::advance(std::size_t line)
{
    JavaScriptState state = m_states.at(m_numbers[line]);
    static_cast<void>(tokenizeJavaScript(m_text(static_cast<qint64>(line)), state));
    ++m_linesRead;
    const int number = numberOf(state);
    if (line + 1 == m_numbers.size()) {
        m_numbers.push_back(number);
        return;
    }
    // `line` is the first one in `m_staleLines`.
    m_staleLines.erase(m_staleLines.begin());
    if (std::exchange(m_numbers[line + 1], number) == number || line + 2 == m_numbers.size())
        return;
    if (m_staleLines.empty() || m_staleLines.front() != line + 1)
        m_staleLines.insert(m_staleLines.begin(), line + 1);
}

int JavaScriptLines::stateNumberAt(qint64 line)
{
    const auto wanted = static_cast<std::size_t>(line);
    while (!m_staleLines.empty() && m_staleLines.front() < wanted)
        advance(m_staleLines.front());
    while (m_numbers.size() <= wanted)
        advance(m_numbers.size() - 1);
    return m_numbers[wanted];
}

JavaScriptState JavaScriptLines::stateAt(qint64 line)
{
    return m_states.at(stateNumberAt(line));
}

} // namespace penwick
