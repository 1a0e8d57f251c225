#pragma once

#include "text/Text.h"

#include <QStringView>

#include <optional>

namespace penwick {

/// A place as the status bar counts: lines end with a separator, so CR LF ends two. Columns count
/// characters (grapheme clusters). Both are 1-based.
struct LinePlace
{
    qint64 line = 1;
    qint64 column = 1;

    bool operator==(const LinePlace &) const = default;
};

/// Reads `12` or `12:5`, also in full-width characters and with blanks around. A number less than 1
/// means 1. No value for anything else.
[[nodiscard]] std::optional<LinePlace> parseLinePlace(const QString &typed);

/// Where a `LinePlace` is in a text.
struct FoundPlace
{
    qint64 offset = 0;     ///< UTF-16 code units.
    bool hasLine = true;   ///< False: the text has fewer lines, and this is its end.
    bool hasColumn = true; ///< False: the line is shorter, and this is its end.
};

/// Never returns an offset within CR LF; such a place is after it. O(log^2 n).
[[nodiscard]] FoundPlace findPlace(const LinePlace &place, const Text &text);

} // namespace penwick
