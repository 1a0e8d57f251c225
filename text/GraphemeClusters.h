#pragma once

#include <QtGlobal>

#include <string_view>

namespace penwick::clusters {

/// Number of extended grapheme clusters in a UTF-16 text that holds no lone surrogate. Equal to
/// what ICU's character iterator finds, but most text never reaches the iterator.
[[nodiscard]] qint64 count(std::u16string_view text);

/// True when a cluster certainly ends between the two code points, whatever stands around them.
/// False when it does not, or when that depends on more than the two.
[[nodiscard]] bool isCertainBoundary(char32_t before, char32_t after);

/// The first cluster boundary after `offset`, which must be less than the text's length, and the
/// last one before it, which must be more than 0. Offsets are UTF-16 code units, 0-based.
[[nodiscard]] qsizetype following(std::u16string_view text, qsizetype offset);
[[nodiscard]] qsizetype preceding(std::u16string_view text, qsizetype offset);
[[nodiscard]] bool isBoundary(std::u16string_view text, qsizetype offset);

} // namespace penwick::clusters
