#pragma once

#include "macro/library/JavaScriptTokens.h"

#include <QHash>
#include <QString>

#include <functional>
#include <vector>

namespace penwick {

/// The states at the line starts of a JavaScript text that is being edited. Lines are read when
/// they are asked about, and after an edit only from the changed line until a state is the one that
/// it was before: what a keystroke costs does not depend on the length of the text.
///
/// Lines are 0-based.
class JavaScriptLines final
{
public:
    /// A line of the text as it is now, with its line break.
    using LineText = std::function<QString(qint64 line)>;

    explicit JavaScriptLines(LineText text);

    /// The whole text is another one.
    void reset();
    /// `newCount` lines from `first` on stand in place of `oldCount` lines; each count is at least
    /// 1, because a part of a line changes the line.
    void linesChanged(qint64 first, qint64 oldCount, qint64 newCount);

    /// The state at the start of a line, which the text must have.
    [[nodiscard]] JavaScriptState stateAt(qint64 line);
    /// A number that is the same for the same state, from one `reset` to the next.
    [[nodiscard]] int stateNumberAt(qint64 line);

    /// How many lines have been read since the start, for tests of what an edit costs.
    [[nodiscard]] qint64 linesRead() const { return m_linesRead; }

private:
    static constexpr int kUnknown = -1;

    [[nodiscard]] int numberOf(const JavaScriptState &state);
    void advance(std::size_t line);

    LineText m_text;
    QList<JavaScriptState> m_states; // By number; few, because most lines begin alike.
    QHash<JavaScriptState, int> m_stateNumbers;
    std::vector<int> m_numbers; // By line, as far as the text was read.
    // Lines whose next line may begin with another state than what `m_numbers` says, ascending.
    // All others lead from their state to the next one.
    std::vector<std::size_t> m_doubts;
    qint64 m_linesRead = 0;
};

} // namespace penwick
