#pragma once

#include <QStringView>

namespace penwick::row_breaks {

/// Returns how many UTF-16 code units at the start of `units` fit into a row of `columns`, at least
/// one. A wide character counts two columns, a tab reaches to the next stop.
/// \param tabWidth the distance of tab stops in columns.
/// \param labelColumns what a character that is shown by a label counts.
/// \param isLabelled tells such characters.
[[nodiscard]] qsizetype unitsWithin(
    QStringView units, int columns, int tabWidth, int labelColumns, bool (*isLabelled)(char16_t));

/// True where Japanese rules forbid a row to begin, but the toolkit, which follows Unicode's line
/// breaking, lets one begin: before U+FF5E, which stands for the wave dash in most Japanese texts.
[[nodiscard]] bool isForbidden(QStringView units, qsizetype index);

/// Returns the last place up to `index` where a row of Japanese text may begin: not before a
/// closing bracket, a full stop or a small kana, and not after an opening bracket. `index` itself
/// where there is no Japanese text, or no such place in `units`.
[[nodiscard]] qsizetype lastBreak(QStringView units, qsizetype index);

} // namespace penwick::row_breaks
