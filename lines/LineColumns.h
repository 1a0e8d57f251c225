#pragma once

#include "text/Text.h"
#include "text/TextRange.h"

#include <limits>

namespace penwick {

/// A cluster boundary of a line. Columns count from the line's start: a tab reaches to the next tab
/// stop, any other cluster takes one column, or two if it is wide as in a terminal.
struct ColumnStop
{
    qint64 offset = 0; ///< From the line's start, UTF-16 code units.
    qint64 column = 0; ///< 0-based.

    bool operator==(const ColumnStop &) const = default;
};

/// Columns of a `Text` are counted up to this many code units from a line's start, so that the cost
/// does not depend on the length of a huge line.
constexpr qint64 kColumnReach = qint64(1) << 14;

/// The last boundary of a line for which neither offset nor column is more than that of `limit`.
/// \param units the line, or its start up to a cluster boundary.
[[nodiscard]] ColumnStop lastStop(QStringView units, ColumnStop limit, int tabWidth);

/// The same within the reach of columns.
/// \param line without its line break.
[[nodiscard]] ColumnStop lastStop(const Text &text, TextRange line, ColumnStop limit, int tabWidth);

/// No limit for one of the two.
constexpr qint64 kNoColumnLimit = std::numeric_limits<qint64>::max();

/// The column after `units`, which start at a tab stop.
[[nodiscard]] inline qint64 columnAfter(QStringView units, int tabWidth)
{
    return lastStop(units, {kNoColumnLimit, kNoColumnLimit}, tabWidth).column;
}

} // namespace penwick
