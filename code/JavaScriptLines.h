#pragma once

#include "code/JavaScriptTokens.h"

#include <QHash>
#include <QString>

#include <functional>
#include <vector>

namespace penwick {

/// The lexer states at the line starts of a JavaScript text that is being edited. Lines are read on
/// demand. After an edit only the lines from the changed one to the first line with an unchanged
/// state are read again: the cost of a keystroke does not depend on the length of the text.
///
/// Lines are 0-based.
class JavaScriptLines final
{
public:
    /// Returns a line of the current text, with its line break.
    using LineText = std::function<QString(qint64 line)>;

    explicit JavaScriptLines(LineText text);

    /// Forgets all states. Call it when the whole text was replaced.
    void reset();
    /// Call after `newCount` lines from `first` on have replaced `oldCount` lines. Each count is at
    /// least 1, because an edit within a line changes that line.
    void linesChanged(qint64 first, qint64 oldCount, qint64 newCount);

    /// Returns the state at the start of a line, which the text must have.
    [[nodiscard]] JavaScriptState stateAt(qint64 line);
    /// Returns a number for the state at the start of a line; equal states have equal numbers until
    /// the next `reset`.
    [[nodiscard]] int stateNumberAt(qint64 line);

    /// The number of lines read since construction, for tests of the cost of an edit.
    [[nodiscard]] qint64 linesRead() const { return m_linesRead; }

private:
    static constexpr int kUnknown = -1;

    [[nodiscard]] int numberOf(const JavaScriptState &state);
    void advance(std::size_t line);

    LineText m_text;
    QList<JavaScriptState> m_states; // By number; few, because most lines begin in one state.
    QHash<JavaScriptState, int> m_stateNumbers;
    std::vector<int> m_numbers; // By line, for the part of the text that was read.
    // Ascending. For each of these lines the number of the next line may be out of date; each other
    // line leads from its own number to the next one.
    std::vector<std::size_t> m_staleLines;
    qint64 m_linesRead = 0;
};

} // namespace penwick
