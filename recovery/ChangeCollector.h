#pragma once

#include "editor/TextDifference.h"
#include "text/Text.h"

#include <optional>
#include <vector>

namespace penwick {

/// Collects the changes of a text between two writes of its copy. Changes that meet become one, so
/// typing in one place costs no more than its result. Each operation costs O(log n) of the text's
/// size.
class ChangeCollector final
{
public:
    /// \param text the text after the change.
    /// \param offset, removed, inserted the change, in UTF-16 code units.
    void add(const Text &text, qint64 offset, qint64 removed, qint64 inserted);

    /// Forgets the changes: the next write has to be whole.
    void requireWhole();

    /// Returns the changes since the last call, in order, or nothing if the text must be written as
    /// a whole: on the first call, after `requireWhole`, and after so many separate changes that
    /// the whole text costs less.
    [[nodiscard]] std::optional<std::vector<TextDifference>> take();

private:
    std::vector<TextDifference> m_changes;
    bool m_requiresWhole = true;
};

} // namespace penwick
