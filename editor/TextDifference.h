#pragma once

#include "editor/TextStorage.h"
#include "text/Text.h"

namespace penwick {

/// What makes one text out of another: everything outside `range` stands in both.
struct TextDifference
{
    TextRange range; ///< Of the old text; never begins or ends inside a surrogate pair.
    Text replacement;

    [[nodiscard]] bool isEmpty() const { return range.length == 0 && replacement.isEmpty(); }
};

/// The one stretch in which two texts differ, as short as it can be. Costs time for the length of
/// both texts, and no memory to speak of. Safe to call from any thread.
[[nodiscard]] TextDifference differenceBetween(const Text &before, const Text &after);

} // namespace penwick
