#pragma once

#include <QtGlobal>

#include <string_view>

namespace penwick::clusters {

/// Returns the number of extended grapheme clusters in a UTF-16 text without lone surrogates. The
/// result equals that of ICU's character iterator, but most text is counted without the iterator.
[[nodiscard]] qint64 count(std::u16string_view text);

/// True when a cluster ends between the two code points, whatever text surrounds them. False when
/// none ends there, or when that depends on more than these two.
[[nodiscard]] bool isCertainBoundary(char32_t before, char32_t after);

/// The same before `units[index]`, which must have a unit before it. False inside a surrogate pair,
/// and where a pair next to the index is cut off by an end of `units`: its code point is unknown.
[[nodiscard]] bool isCertainBoundaryAt(std::u16string_view units, std::size_t index);

/// Returns the first cluster boundary after `offset`, which must be less than the text's length.
/// Offsets here and below are UTF-16 code units, 0-based.
[[nodiscard]] qsizetype following(std::u16string_view text, qsizetype offset);
/// Returns the last cluster boundary before `offset`, which must be more than 0.
[[nodiscard]] qsizetype preceding(std::u16string_view text, qsizetype offset);
/// True when `offset` is a cluster boundary, as the start and the end of the text are.
[[nodiscard]] bool isBoundary(std::u16string_view text, qsizetype offset);

} // namespace penwick::clusters
