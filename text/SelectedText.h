#pragma once

#include "text/Text.h"
#include "text/TextRange.h"

namespace penwick {

/// A text with a selection, which reaches from `anchor` to `caret`; either may come first. Both are
/// in UTF-16 code units, 0-based, within the text, and never inside a surrogate pair.
struct SelectedText
{
    Text text;
    qint64 anchor = 0;
    qint64 caret = 0;

    [[nodiscard]] TextRange selection() const;

    /// Selects from one offset to the other. Offsets are clamped to the text and set to the start
    /// of a surrogate pair that they are inside of.
    void select(qint64 newAnchor, qint64 newCaret);

    /// Replaces `range` and moves the selection by the rule of `selectionAfterReplacement`.
    void replace(TextRange range, const Text &replacement);
};

/// Returns where a selection is after `range` was replaced by `newLength` units: a selection inside
/// `range` becomes a caret behind the replacement; otherwise each end before `range` stays, each
/// end after it moves along, and one inside it goes behind the replacement.
[[nodiscard]] TextRange
selectionAfterReplacement(TextRange selection, TextRange range, qint64 newLength);

/// Returns the offset in `to` that has the line and column of `offset` in `from`, or the nearest
/// one.
[[nodiscard]] qint64 sameLineAndColumn(const Text &from, qint64 offset, const Text &to);

} // namespace penwick
