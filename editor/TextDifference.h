#pragma once

#include "editor/TextStorage.h"
#include "text/Text.h"

namespace penwick {

/// The change that turns one text into another. The text outside `range` is common to both.
struct TextDifference
{
    TextRange range; ///< In the old text; never begins or ends inside a surrogate pair.
    Text replacement;

    [[nodiscard]] bool isEmpty() const { return range.length == 0 && replacement.isEmpty(); }
};

/// Returns the one stretch in which two texts differ, as short as possible. Takes time linear in
/// the length of both texts, and a bounded amount of memory. Safe to call from any thread.
[[nodiscard]] TextDifference differenceBetween(const Text &before, const Text &after);

} // namespace penwick
